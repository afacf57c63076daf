#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"
#include "tests/support/VmmeshBytes.h"
#include "utils/FileUtils.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <set>

namespace VmmeshReaderTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

void readBytes(std::string_view bytes, Mesh& mesh) {
    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    writeFileBytes(path, bytes);
    readFromFile(toVelmarString(path), mesh);
}

std::string velmarMessage(const VmmeshBytes& file) {
    Mesh mesh;
    return messageOf<VelmarException>([&] { readBytes(file.bytes, mesh); });
}

std::string streamMessage(const VmmeshBytes& file) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { readBytes(file.bytes, mesh); });
}

/// A compressed file without UVs and materials.
VmmeshBytes fileAround(const VmmeshBytes& inner) {
    const std::string frame = compressed(inner.bytes);
    VmmeshBytes file;
    file.header(4, 1).zeros(3).u64(frame.size()).append(frame);
    return file;
}

class VmmeshRoundTrip : public testing::TestWithParam<bool> {};

TEST_P(VmmeshRoundTrip, GivesTheSameContentAndBuildsIt) {
    const TempDir dir;
    const String path = toVelmarString(dir.file("m\xC3\xA4sh.vmmesh"));
    Mesh mesh;
    fillSample(mesh);
    mesh.uv_layout = 1;
    mesh.verts[0].x = std::numeric_limits<float>::quiet_NaN();
    mesh.addMaterialUsed(String(1024, 'x'));
    writeToFile(path, mesh, GetParam());

    Mesh read;
    readFromFile(path, read);
    expectSameContent(read, mesh);
    EXPECT_EQ(read.checksum(), mesh.checksum());
    EXPECT_EQ(read.num_materials_referenced, 5u);
    EXPECT_EQ(read.aabb_min.z, -2.25f);
    EXPECT_EQ(read.aabb_max.y, 1.0f);
}

TEST_P(VmmeshRoundTrip, GivesTheSameEmptyMesh) {
    const TempDir dir;
    const String path = toVelmarString(dir.file("mesh.vmmesh"));
    writeToFile(path, Mesh(), GetParam());
    Mesh read;
    readFromFile(path, read);
    expectSameContent(read, Mesh());
    EXPECT_EQ(read.num_materials_referenced, 1u);
}

TEST_P(VmmeshRoundTrip, ReplacesWhatTheMeshHeld) {
    const TempDir dir;
    const String path = toVelmarString(dir.file("mesh.vmmesh"));
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.addTriangle({0, 1, 2}, {0, 0, 0}, 0);
    writeToFile(path, mesh, GetParam());
    Mesh read;
    fillSample(read);
    readFromFile(path, read);
    expectSameContent(read, mesh);
}

INSTANTIATE_TEST_SUITE_P(PlainAndCompressed, VmmeshRoundTrip, testing::Bool());

TEST(VmmeshReader, ReadsVersion1WithoutUVLayoutAndQuads) {
    VmmeshBytes file;
    file.header(1).u32(1).u32(1).text("m").u32(0);
    file.u32(1).f32(1).f32(2).f32(3).u32(0);
    file.u32(1).f32(0.5f).f32(0.75f);
    file.u32(1).u32(0).u32(0).u32(0).u32(0).u32(0).u32(0).u32(6);
    Mesh mesh;
    mesh.uv_layout = 1;
    readBytes(file.bytes, mesh);
    EXPECT_EQ(mesh.num_uv_mappings, 1u);
    EXPECT_EQ(namesOf(mesh.used_materials), std::vector<std::string>{"m"});
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{1, 2, 3}}));
    EXPECT_EQ(mesh.uv_layout, 0u);
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{0.5f, 0.75f}}));
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_TRUE(mesh.quads.empty());
    EXPECT_EQ(mesh.num_materials_referenced, 7u);
}

TEST(VmmeshReader, ReadsVersion2WithQuadsAndWithoutUVLayout) {
    VmmeshBytes file;
    file.header(2).zeros(3).zeros(4).u32(1).u32(1).u32(2).u32(3).u32(4).u32(5).u32(6).u32(7).u32(8).u32(9);
    Mesh mesh;
    readBytes(file.bytes, mesh);
    EXPECT_EQ(bytesOf(mesh.quads), bytesOf(std::vector<MeshQuad>{{{1, 2, 3, 4}, {5, 6, 7, 8}, 9}}));
}

TEST(VmmeshReader, ReadsVersion3WithUVLayoutAndTakesTheThirdWordAsUVSets) {
    VmmeshBytes file;
    file.header(3).u32(1).zeros(2).zeros(2).u32(1).zeros(3);
    Mesh mesh;
    readBytes(file.bytes, mesh);
    EXPECT_EQ(mesh.num_uv_mappings, 1u);
    EXPECT_EQ(mesh.uv_layout, 1u);
}

TEST(VmmeshReader, IgnoresTheReservedWord) {
    VmmeshBytes file;
    file.append("oCS").append(std::string_view("\0", 1)).u32(4).u32(0).u32(0).zeros(9);
    Mesh mesh;
    readBytes(file.bytes, mesh);
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(VmmeshReader, TakesAnyCompressionFlagButZeroAsCompressed) {
    const std::string frame = compressed(VmmeshBytes().zeros(6).bytes);
    Mesh mesh;
    readBytes(VmmeshBytes().header(4, 7).zeros(3).u64(frame.size()).append(frame).bytes, mesh);
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(VmmeshReader, SkipsExtraEntries) {
    VmmeshBytes file;
    file.header(4).zeros(2).u32(2).text("first").u32(17).text("").u32(18).u32(1).f32(1).f32(2).f32(3).zeros(5);
    Mesh mesh;
    readBytes(file.bytes, mesh);
    EXPECT_TRUE(mesh.used_materials.empty());
    EXPECT_EQ(mesh.verts.size(), 1u);
}

TEST(VmmeshReader, IgnoresTrailingBytes) {
    Mesh mesh;
    readBytes(VmmeshBytes().header(4).zeros(9).append("and more").bytes, mesh);
    readBytes(fileAround(VmmeshBytes().zeros(6).append("and more")).append("and more").bytes, mesh);
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(VmmeshReader, DoesNotCheckFaceIndices) {
    VmmeshBytes file;
    file.header(4).zeros(3).zeros(4).u32(1).u32(100).u32(200).u32(300).zeros(4).u32(0);
    Mesh mesh;
    readBytes(file.bytes, mesh);
    EXPECT_EQ(mesh.triangles[0].vertex_indices[2], 300u);
}

TEST(VmmeshReader, RefusesAnotherMagicNumber) {
    EXPECT_EQ(velmarMessage(VmmeshBytes().append("oCS!").u32(4)), "Invalid magic number.");
    EXPECT_EQ(velmarMessage(VmmeshBytes().append("oCS!")), "Invalid magic number.");
}

TEST(VmmeshReader, RefusesUnknownVersionsAndNamesThem) {
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(0)), "Unsupported format version 0.");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(5)), "Unsupported format version 5.");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(0xFFFFFFFF)), "Unsupported format version 4294967295.");
}

TEST(VmmeshReader, RefusesAnEmptyFile) {
    EXPECT_EQ(velmarMessage(VmmeshBytes()), "Read failed.");
}

TEST(VmmeshReader, PassesTheMappingsFailureOn) {
    const TempDir dir;
    Mesh mesh;
    const std::string path = dir.file("missing.vmmesh");
    const std::string message = messageOf<Velmar::Exception>([&] { readFromFile(toVelmarString(path), mesh); });
    EXPECT_EQ(message.substr(0, path.size() + 25),
              "Failed to open file '" + path + "': " + message.substr(path.size() + 24, 1));
}

TEST(VmmeshReader, RefusesListsAndBlocksThatAreTooLong) {
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).u32(0).u32(0x80000000)), "Vector too long.") << "materials";
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).zeros(2).u32(0x80000000)), "Vector too long.") << "extra entries";
    for (const int words_before : {0, 1, 3, 4, 5}) {
        EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).zeros(3).zeros(words_before).u32(0xFFFFFFFF)),
                  "Vector too long.");
        EXPECT_EQ(velmarMessage(fileAround(VmmeshBytes().zeros(words_before).u32(0x80000000))), "Vector too long.");
    }
}

TEST(VmmeshReader, RefusesLongStrings) {
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).u32(0).u32(1).text(std::string(1025, 'x')).zeros(7)),
              "String too long.");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).zeros(2).u32(1).text(std::string(1025, 'x')).zeros(7)),
              "String too long.");
}

TEST(VmmeshReader, RefusesOtherUVLayouts) {
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).zeros(3).zeros(2).u32(2).zeros(3)), "Invalid uv_layout value 2");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(3).zeros(3).zeros(2).u32(0xFFFFFFFF).zeros(3)),
              "Invalid uv_layout value 4294967295");
    EXPECT_EQ(velmarMessage(fileAround(VmmeshBytes().zeros(2).u32(2).zeros(3))), "Invalid uv_layout value 2");
}

TEST(VmmeshReader, BuildsAndRefusesAnInconsistentMesh) {
    VmmeshBytes file;
    file.header(4).zeros(3).u32(1).f32(0).f32(0).f32(0).u32(2).zeros(6).zeros(4);
    EXPECT_EQ(velmarMessage(file), "Must be zero normals, or normals.size() must equal verts.size()");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4).u32(2).zeros(2).zeros(3).u32(1).zeros(2).zeros(2)),
              "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 1, num_uv_mappings: 2");
}

TEST(VmmeshReader, RefusesABlockThatIsLongerThanTheFileAndLeavesNothingUnwrittenBehind) {
    Mesh mesh;
    EXPECT_EQ(messageOf<VelmarException>(
                  [&] { readBytes(VmmeshBytes().header(4).zeros(3).u32(1000000).zeros(30).bytes, mesh); }),
              "Read failed.");
    EXPECT_TRUE(mesh.verts.empty());
    EXPECT_EQ(mesh.verts.capacity(), 0u);
}

TEST(VmmeshReader, SurvivesBlocksThatClaimMoreThanAnyMemory) {
    for (const int words_before : {0, 1, 3, 4, 5}) {
        const std::string message =
            velmarMessage(VmmeshBytes().header(4).zeros(3).zeros(words_before).u32(0x7FFFFFFF).zeros(2));
        EXPECT_TRUE(message == "Read failed." || message == "Bad allocation while reading from file.") << message;
    }
}

TEST(VmmeshReader, ReportsAFrameThatClaimsMoreThanAnyMemory) {
    // Magic number of a frame, content size in eight bytes, and no window.
    VmmeshBytes file;
    file.header(4, 1).zeros(3).u64(100).u32(0xFD2FB528).append("\xE0").u64(std::uint64_t{1} << 62).zeros(20);
    EXPECT_EQ(velmarMessage(file), "Bad allocation while reading from file.");
}

TEST(VmmeshReader, TellsOverrunsInVerticesFromOverrunsInFaces) {
    EXPECT_EQ(streamMessage(fileAround(VmmeshBytes().u32(2).zeros(5))), "Read past end of buffer.");
    EXPECT_EQ(streamMessage(fileAround(VmmeshBytes().u32(0).u32(2).zeros(5))), "Read past end of buffer.");
    EXPECT_EQ(streamMessage(fileAround(VmmeshBytes().zeros(3).u32(2).zeros(3))), "Read past end of buffer.");
    EXPECT_EQ(velmarMessage(fileAround(VmmeshBytes().zeros(4).u32(1).zeros(6))), "Read past end of file.");
    EXPECT_EQ(velmarMessage(fileAround(VmmeshBytes().zeros(5).u32(1).zeros(8))), "Read past end of file.");
}

TEST(VmmeshReader, LeavesNothingUnwrittenBehindInACompressedFileEither) {
    Mesh mesh;
    EXPECT_EQ(messageOf<VelmarException>(
                  [&] { readBytes(fileAround(VmmeshBytes().zeros(4).u32(1000).zeros(6)).bytes, mesh); }),
              "Read past end of file.");
    EXPECT_TRUE(mesh.triangles.empty());
    EXPECT_EQ(
        messageOf<Velmar::Exception>([&] { readBytes(fileAround(VmmeshBytes().u32(1000).zeros(6)).bytes, mesh); }),
        "Read past end of buffer.");
    EXPECT_TRUE(mesh.verts.empty());
}

TEST(VmmeshReader, FindsNothingInAFrameWithoutASize) {
    EXPECT_EQ(streamMessage(VmmeshBytes().header(4, 1).zeros(3).u64(20).append("this is no zstd frame")),
              "Read past end of buffer.");
    EXPECT_EQ(streamMessage(VmmeshBytes().header(4, 1).zeros(3).u64(0)), "Read past end of buffer.");
    EXPECT_EQ(velmarMessage(VmmeshBytes().header(4, 1).zeros(3).u32(0)), "Read failed.");
}

TEST(VmmeshReader, DoesNotBelieveTheFramesLength) {
    VmmeshBytes inner;
    inner.u32(1).f32(1).f32(2).f32(3).zeros(5);
    const std::string frame = compressed(inner.bytes);
    for (const std::uint64_t size : {std::uint64_t{frame.size() + 1}, std::uint64_t{1} << 40, ~std::uint64_t{0}}) {
        Mesh mesh;
        readBytes(VmmeshBytes().header(4, 1).zeros(3).u64(size).append(frame).bytes, mesh);
        EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{1, 2, 3}}));
    }
}

TEST(VmmeshReader, ReadsWhatADamagedFrameDoesNotGiveAsZeros) {
    // The frame's length is given as 0, so that nothing is decompressed: six zero words make an empty mesh.
    const std::string frame = compressed(VmmeshBytes().u32(1).f32(1).f32(2).f32(3).zeros(5).bytes);
    Mesh mesh;
    addUnitSquare(mesh);
    readBytes(VmmeshBytes().header(4, 1).zeros(3).u64(5).append(frame).bytes, mesh);
    expectSameContent(mesh, Mesh());
}

/// Loads or throws one of the documented exceptions; anything else fails the test, as does a sanitizer.
void expectDocumentedOutcome(const std::string& path, const std::string& bytes, const std::string& what) {
    static const std::set<std::string> messages = {
        "Read failed.",
        "Invalid magic number.",
        "Vector too long.",
        "String too long.",
        "Read past end of file.",
        "Read past end of buffer.",
        "Bad allocation while reading from file.",
        "Must be zero normals, or normals.size() must equal verts.size()",
    };
    const auto documented = [](const std::string& message) {
        return messages.contains(message) || message.starts_with("Unsupported format version ") ||
               message.starts_with("Invalid uv_layout value ") ||
               message.starts_with("Mesh uv_pairs.size() must be a multiple of num_uv_mappings.");
    };
    writeFileBytes(path, bytes);
    Mesh mesh;
    try {
        readFromFile(toVelmarString(path), mesh);
    } catch (const VelmarException& e) {
        EXPECT_TRUE(documented(toStdString(e.getMessage()))) << what << ": " << toStdString(e.getMessage());
    } catch (const Velmar::Exception& e) {
        EXPECT_EQ(e.getMessage(), "Read past end of buffer.") << what;
    }
    // Every byte that the mesh shows is one that was written.
    mesh.checksum();
}

class HostileVmmesh : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        Mesh mesh;
        mesh.addMaterialUsed("m");
        mesh.raiseNumUVMappings(1);
        addUnitSquare(mesh);
        const Vec2f pair[] = {{0.5f, 0.25f}};
        mesh.addUVs(pair);
        mesh.addTriangle({2, 1, 0}, {0, 0, 0}, 0);
        mesh.addQuad({0, 1, 2, 3}, {0, 0, 0, 0}, 0);
        writeToFile(toVelmarString(path), mesh, GetParam());
        valid = readFileBytes(path);
    }

    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    std::string valid;
};

TEST_P(HostileVmmesh, CutAtEveryLengthLoadsOrThrows) {
    for (std::size_t length = 0; length < valid.size(); ++length)
        expectDocumentedOutcome(path, valid.substr(0, length), "cut at " + std::to_string(length));
}

TEST_P(HostileVmmesh, WithEveryByteChangedLoadsOrThrows) {
    for (std::size_t at = 0; at < valid.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xFF, 0x7F}) {
            std::string bytes = valid;
            bytes[at] = static_cast<char>(bytes[at] ^ change);
            expectDocumentedOutcome(path, bytes, "byte " + std::to_string(at) + " xor " + std::to_string(change));
        }
        for (const char value : {'\0', '\xFF'}) {
            std::string bytes = valid;
            bytes[at] = value;
            expectDocumentedOutcome(path, bytes, "byte " + std::to_string(at) + " set");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(PlainAndCompressed, HostileVmmesh, testing::Bool());

TEST(VmmeshReader, CutPlainFilesNeverLoad) {
    const TempDir dir;
    const std::string path = dir.file("mesh.vmmesh");
    Mesh mesh;
    fillSample(mesh);
    writeToFile(toVelmarString(path), mesh, false);
    const std::string valid = readFileBytes(path);
    for (std::size_t length = 0; length < valid.size(); ++length) {
        writeFileBytes(path, valid.substr(0, length));
        Mesh read;
        EXPECT_EQ(messageOf<VelmarException>([&] { readFromFile(toVelmarString(path), read); }), "Read failed.")
            << length;
    }
}

} // namespace

} // namespace VmmeshReaderTests
