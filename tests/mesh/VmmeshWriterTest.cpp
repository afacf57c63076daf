#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"
#include "tests/support/VmmeshBytes.h"
#include "utils/FileUtils.h"

#include <gtest/gtest.h>
#include <random>
#include <zstd.h>

namespace VmmeshWriterTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

std::string written(const Mesh& mesh, bool use_compression) {
    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    writeToFile(toVelmarString(path), mesh, use_compression);
    return readFileBytes(path);
}

TEST(VmmeshWriter, WritesAnEmptyMeshAsHeaderAndZeroWords) {
    EXPECT_EQ(written(Mesh(), false), VmmeshBytes().header(4).zeros(9).bytes);
}

TEST(VmmeshWriter, WritesThePlainBodyInTheOrderOfTheFormat) {
    Mesh mesh;
    mesh.raiseNumUVMappings(1);
    mesh.addMaterialUsed("wood");
    mesh.addMaterialUsed("");
    mesh.addVertexWithNormal({1, 2, 3}, {0, 0, 5});
    mesh.uv_layout = 1;
    const Vec2f pair[] = {{0.25f, 0.5f}};
    mesh.addUVs(pair);
    mesh.triangles.push_back({{1, 2, 3}, {4, 5, 6}, 7});
    mesh.quads.push_back({{10, 20, 30, 40}, {50, 60, 70, 80}, 90});

    VmmeshBytes expected;
    expected.header(4).u32(1).u32(2).text("wood").text("").u32(0);
    expected.u32(1).f32(1).f32(2).f32(3);
    expected.u32(1).f32(0).f32(0).f32(1);
    expected.u32(1);
    expected.u32(1).f32(0.25f).f32(0.5f);
    expected.u32(1).u32(1).u32(2).u32(3).u32(4).u32(5).u32(6).u32(7);
    expected.u32(1).u32(10).u32(20).u32(30).u32(40).u32(50).u32(60).u32(70).u32(80).u32(90);
    EXPECT_EQ(written(mesh, false), expected.bytes);
}

TEST(VmmeshWriter, CompressesTheBodyWithFacesAsDifferences) {
    Mesh mesh;
    mesh.addVertex({1, 2, 3});
    mesh.triangles.push_back({{10, 11, 9}, {5, 5, 7}, 2});
    mesh.triangles.push_back({{4, 10, 3}, {6, 0, 6}, 3});
    mesh.quads.push_back({{100, 101, 102, 99}, {1, 2, 3, 4}, 0});
    mesh.quads.push_back({{98, 98, 0, 99}, {1, 1, 0, 2}, 8});
    const std::string file = written(mesh, true);

    const std::string preamble = VmmeshBytes().header(4, 1).zeros(3).bytes;
    ASSERT_EQ(file.substr(0, preamble.size()), preamble);
    const std::string frame = file.substr(preamble.size() + 8);
    EXPECT_EQ(file.substr(preamble.size(), 8), VmmeshBytes().u64(frame.size()).bytes);

    constexpr auto minus = [](std::uint32_t n) { return 0 - n; };
    VmmeshBytes inner;
    inner.u32(1).f32(1).f32(2).f32(3);
    inner.u32(0).u32(0).u32(0);
    inner.u32(2);
    inner.u32(10).u32(1).u32(minus(1)).u32(5).u32(0).u32(2).u32(2);
    inner.u32(minus(6)).u32(6).u32(minus(1)).u32(1).u32(minus(6)).u32(0).u32(3);
    inner.u32(2);
    inner.u32(100).u32(1).u32(2).u32(minus(1)).u32(1).u32(1).u32(2).u32(3).u32(0);
    inner.u32(minus(2)).u32(0).u32(minus(98)).u32(1).u32(0).u32(0).u32(minus(1)).u32(1).u32(8);
    EXPECT_EQ(decompressed(frame), inner.bytes);
    EXPECT_EQ(frame, compressed(inner.bytes)) << "one default frame of level 1";
}

TEST(VmmeshWriter, WritesAnEmptyMeshCompressed) {
    const std::string frame = compressed(VmmeshBytes().zeros(6).bytes);
    EXPECT_EQ(written(Mesh(), true), VmmeshBytes().header(4, 1).zeros(3).u64(frame.size()).append(frame).bytes);
}

TEST(VmmeshWriter, LeavesWhatAnIndependentReaderUnderstands) {
    Mesh mesh;
    fillSample(mesh);
    std::mt19937 random(7);
    const auto any = [&] { return static_cast<std::uint32_t>(random()); };
    for (int i = 0; i < 2000; ++i) {
        mesh.triangles.push_back({{any(), any(), any()}, {any(), any(), any()}, any()});
        mesh.quads.push_back({{any(), any(), any(), any()}, {any(), any(), any(), any()}, any()});
    }
    for (const bool use_compression : {false, true}) {
        Mesh read;
        readIndependently(written(mesh, use_compression), read);
        expectSameContent(read, mesh);
    }
}

TEST(VmmeshWriter, TakesNamesOf1024BytesAndNoLongerOnes) {
    Mesh mesh;
    mesh.addMaterialUsed(String(1024, 'x'));
    EXPECT_EQ(written(mesh, false), VmmeshBytes().header(4).u32(0).u32(1).text(std::string(1024, 'x')).zeros(7).bytes);
    mesh.addMaterialUsed(String(1025, 'x'));
    for (const bool use_compression : {false, true})
        EXPECT_EQ(messageOf<VelmarException>([&] { written(mesh, use_compression); }), "String too long.");
}

TEST(VmmeshWriter, RefusesAnInconsistentMeshBeforeItOpensTheFile) {
    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    Mesh normals_missing;
    normals_missing.addVertexWithNormal({0, 0, 0}, {1, 0, 0});
    normals_missing.addVertex({0, 0, 0});
    EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(toVelmarString(path), normals_missing, true); }),
              "Must be zero normals, or normals.size() must equal verts.size()");
    Mesh uv_missing;
    uv_missing.raiseNumUVMappings(2);
    uv_missing.uv_pairs.push_back({0, 0});
    EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(toVelmarString(path), uv_missing, false); }),
              "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 1, num_uv_mappings: 2");
    EXPECT_FALSE(FileUtils::fileExists(path));
}

TEST(VmmeshWriter, WritesAMeshThatWasNeverBuilt) {
    Mesh mesh;
    const std::uint32_t unchecked_face[] = {0, 100, 200, 300, 0, 0, 0, 0};
    mesh.addFaces(1, unchecked_face);
    Mesh read;
    readIndependently(written(mesh, true), read);
    EXPECT_EQ(bytesOf(read.triangles), bytesOf(mesh.triangles));
}

TEST(VmmeshWriter, NamesAFileThatCantBeOpened) {
    const TempDir dir;
    const std::string path = dir.file("no folder\\mesh.vmmesh");
    EXPECT_EQ(messageOf<VelmarException>([&] { writeToFile(toVelmarString(path), Mesh(), false); }),
              "Failed to open file '" + path + "' for writing.");
}

TEST(VmmeshWriter, ReplacesTheFileThatIsThere) {
    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    writeFileBytes(path, std::string(1000, '!'));
    writeToFile(toVelmarString(path), Mesh(), false);
    EXPECT_EQ(readFileBytes(path), VmmeshBytes().header(4).zeros(9).bytes);
}

TEST(VmmeshWriter, WritesToPathsOfAnyScriptAndLength) {
    const TempDir dir;
    std::string folder = dir.path();
    for (int i = 0; i < 3; ++i) {
        folder = FileUtils::join(folder, std::string(100, 'd') + " # \xC3\xA9\xE6\xBC\xA2");
        FileUtils::createDir(folder);
    }
    const std::string path = FileUtils::join(folder, "m\xC3\xA4sh.vmmesh");
    ASSERT_GT(path.size(), 260u);
    writeToFile(toVelmarString(path), Mesh(), false);
    EXPECT_EQ(readFileBytes(path), VmmeshBytes().header(4).zeros(9).bytes);
}

TEST(VmmeshWriter, KeepsLineFeedsAsTheyAre) {
    Mesh mesh;
    mesh.addMaterialUsed("a\nb\r\n\x1A");
    EXPECT_EQ(written(mesh, false), VmmeshBytes().header(4).u32(0).u32(1).text("a\nb\r\n\x1A").zeros(7).bytes);
}

} // namespace

} // namespace VmmeshWriterTests
