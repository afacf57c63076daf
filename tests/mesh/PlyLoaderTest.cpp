#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/ReaderPaths.h"
#include "tests/support/System.h"
#include "tests/support/TextFile.h"
#include "tests/support/Throws.h"
#include "tests/support/VmmeshBytes.h"
#include "utils/FileUtils.h"

#include <clocale>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace PlyLoaderTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

std::string header(int vertices, int faces) {
    return "ply\nformat ascii 1.0\nelement vertex " + std::to_string(vertices) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + std::to_string(faces) +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

const std::string square = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n";

/// Also compares the fast path with RPly.
void loadPlyText(std::string_view text, Mesh& mesh, float scale = 1.0f) {
    const PlainPly plain = comparePlyPaths(text, scale);
    EXPECT_TRUE(plain == PlainPly::refused || plain == PlainPly::same_as_rply);
    const TextFile file("model.ply", text);
    loadPLY(file.path(), mesh, scale);
}

std::string plyMessage(std::string_view text) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { loadPlyText(text, mesh); });
}

using Triangles = std::vector<MeshTriangle>;

TEST(PlyLoader, ReadsVerticesAndTrianglesOfAText) {
    Mesh mesh;
    loadPlyText(header(4, 2) + square + "3 0 1 2\n3 2 3 0\n", mesh, 2.0f);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}));
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}, {{2, 3, 0}, {0, 0, 0}, 0}}));
    EXPECT_EQ(namesOf(mesh.used_materials), std::vector<std::string>{"default"});
    EXPECT_EQ(mesh.num_uv_mappings, 0u);
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_EQ(mesh.aabb_max.y, 2.0f) << "built";
}

TEST(PlyLoader, ReadsBinaryFiles) {
    VmmeshBytes body;
    body.f32(0).f32(0).f32(0).f32(1).f32(0).f32(0).f32(0).f32(1).f32(0.25f);
    body.append("\x03").u32(0).u32(1).u32(2);
    std::string text = header(3, 1);
    text.replace(text.find("ascii"), 5, "binary_little_endian");
    Mesh mesh;
    loadPlyText(text + body.bytes, mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0.25f}}));
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, TakesTheFirstThreeCornersOfAPolygonAndNothingOfAShorterOne) {
    Mesh mesh;
    loadPlyText(header(4, 3) + square + "4 0 1 2 3\n2 0 1\n3 1 2 3\n", mesh);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}, {{1, 2, 3}, {0, 0, 0}, 0}}));
}

TEST(PlyLoader, DropsDegenerateFacesAndKeepsTheOrderOfTheOthers) {
    Mesh mesh;
    loadPlyText(header(4, 3) + square + "3 0 1 2\n3 1 1 2\n3 2 3 0\n", mesh);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}, {{2, 3, 0}, {0, 0, 0}, 0}}));
}

TEST(PlyLoader, PassesOverOtherPropertiesAndElements) {
    Mesh mesh;
    loadPlyText(
        "ply\nformat ascii 1.0\ncomment c\nelement camera 1\nproperty float x\nelement vertex 3\nproperty float x\n"
        "property float y\nproperty float z\nproperty float nx\nproperty uchar red\nelement face 1\n"
        "property uchar flags\nproperty list uchar int vertex_indices\nend_header\n9\n"
        "0 0 0 1 255\n1 0 0 1 255\n0 1 0 1 255\n7 3 0 1 2\n",
        mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, ReadsVerticesAlone) {
    Mesh mesh;
    loadPlyText(
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\nproperty float z\nend_header\n"
        "1 2 3\n4 5 6\n",
        mesh);
    EXPECT_EQ(mesh.verts.size(), 2u);
    EXPECT_EQ(namesOf(mesh.used_materials), std::vector<std::string>{"default"});
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(PlyLoader, KnowsNoOtherNameForTheListOfIndices) {
    std::string text = header(4, 1);
    text.replace(text.find("vertex_indices"), 14, "vertex_index");
    Mesh mesh;
    loadPlyText(text + square + "3 0 1 2\n", mesh);
    EXPECT_EQ(mesh.verts.size(), 4u);
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(PlyLoader, NamesAFileThatCantBeOpened) {
    const TempDir dir;
    Mesh mesh;
    const std::string path = dir.file("missing.ply");
    EXPECT_EQ(messageOf<Velmar::Exception>([&] { loadPLY(path, mesh, 1.0f); }),
              "could not open file '" + path + "' for reading.");
}

TEST(PlyLoader, RefusesABrokenHeader) {
    EXPECT_EQ(plyMessage("ply\nformat ascii 1.0\nelement vertex many\nend_header\n"), "could not read header.");
    EXPECT_EQ(plyMessage("ply\nformat ascii 1.0\n"), "could not read header.");
}

TEST(PlyLoader, RefusesTypesThatDontExist) {
    const std::string before = "ply\nformat ascii 1.0\nelement vertex 3\n";
    const std::string after = "\nend_header\n1 2 3\n4 5 6\n7 8 9\n";
    for (const char* property :
         {"property quad x", "property", "property list", "property list list int x", "property list uchar list x",
          "property list uchar quad x", "property list what int x"})
        EXPECT_EQ(plyMessage(before + property + after), "could not read header.") << property;
}

TEST(PlyLoader, PassesOverElementsWithoutPropertiesWhateverTheirNumber) {
    std::string text = header(4, 1);
    for (int i = 0; i < 1000; ++i)
        text.insert(text.find("element face"), "element nothing 2000000000\n");
    Mesh mesh;
    loadPlyText(text + square + "3 0 1 2\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, TakesTheFirstElementOfANameEvenIfItReadsNothing) {
    for (const char* first : {"element vertex 5\n", "element vertex 0\nproperty float x\n"}) {
        Mesh mesh;
        loadPlyText("ply\nformat ascii 1.0\n" + std::string(first) + header(1, 0).substr(21) + "1 2 3\n", mesh);
        EXPECT_TRUE(mesh.verts.empty()) << first;
    }
}

TEST(PlyLoader, RefusesABodyThatEndsEarly) {
    EXPECT_EQ(plyMessage(header(4, 1) + "0 0 0\n1 0 0\n"), "read of body failed.");
    EXPECT_EQ(plyMessage(header(4, 1) + square + "3 0 1"), "read of body failed.");
    EXPECT_EQ(plyMessage(header(1000000000, 1) + square), "read of body failed.");
}

TEST(PlyLoader, ReadsATextWithoutALineEndAfterTheLastNumber) {
    Mesh mesh;
    loadPlyText(header(4, 2) + square + "3 0 1 2\n3 2 3 0", mesh);
    EXPECT_EQ(mesh.triangles.size(), 2u);
}

TEST(PlyLoader, ReadsATextWithoutALastLineEndWhereverTheBlocksOfRPlyEnd) {
    // RPly reads blocks of 8191 bytes and keeps what it read before after the end of the last one.
    for (std::size_t body_size = 8170; body_size < 8210; ++body_size) {
        std::string text = header(4, 1) + square + "3 0 1 2";
        text.insert(text.find("3 0 1 2"), std::string(body_size - text.size(), ' '));
        Mesh mesh;
        loadPlyText(text, mesh);
        EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}})) << body_size;
    }
}

TEST(PlyLoader, ReadsATextWithoutALastLineEndWhereTemporaryFilesCantBeMade) {
    const TextFile file("m.ply", header(4, 1) + square + "3 0 1 2");
    const std::string missing = file.directory().file("missing");
    const ScopedVariable posix_folder("TMPDIR", missing.c_str());
    const ScopedVariable windows_folder("TMP", missing.c_str());
    Mesh mesh;
    loadPLY(file.path(), mesh, 1.0f);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, ReadsAFileThatIsOpenForWriting) {
    const TextFile file("m.ply", header(4, 1) + square + "3 0 1 2\n");
    std::fstream writer(systemPath(file.path()), std::ios::in | std::ios::out | std::ios::binary);
    ASSERT_TRUE(writer.is_open());
    Mesh mesh;
    loadPLY(file.path(), mesh, 1.0f);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, LeavesListsWithTheCapacityThatAppendsGiveThem) {
    Mesh mesh;
    loadPlyText(header(4, 3) + square + "2 0 1\n2 0 1\n3 0 1 2\n", mesh);
    EXPECT_EQ(mesh.verts.capacity(), 4u);
    EXPECT_EQ(mesh.triangles.capacity(), 1u);
}

TEST(PlyLoader, RefusesEveryCutOfATextThatLosesANumber) {
    const std::string text = header(4, 2) + square + "3 0 1 2\n3 2 3 0\n";
    for (std::size_t length = 0; length + 2 < text.size(); ++length) {
        const std::string message = plyMessage(text.substr(0, length));
        EXPECT_TRUE(message == "could not read header." || message == "read of body failed.") << length << message;
    }
}

TEST(PlyLoader, PassesTheMeshsRefusalOnAsItIs) {
    for (const std::string face : {"3 0 1 4", "3 -1 1 2"}) {
        const std::string index = face == "3 0 1 4" ? "4" : "4294967295";
        Mesh mesh;
        testing::internal::CaptureStderr();
        EXPECT_EQ(messageOf<VelmarException>([&] { loadPlyText(header(4, 2) + square + face + "\n3 0 1 2\n", mesh); }),
                  "Triangle vertex index is out of bounds. (vertex index=" + index + ")");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST(PlyLoader, LeavesTheDetailsOfAParseErrorOnTheErrorStream) {
    Mesh mesh;
    testing::internal::CaptureStderr();
    EXPECT_THROW(loadPlyText(header(4, 1) + "x", mesh), Velmar::Exception);
    EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with("RPly: "));
}

TEST(PlyLoader, LeavesTheLineOfABrokenHeaderOnTheErrorStream) {
    const auto detailsOf = [](std::string_view text) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(plyMessage(text), "could not read header.");
        return testing::internal::GetCapturedStderr();
    };
    EXPECT_EQ(detailsOf("ply\nformat ascii 1.0\nCreated by hand\nend_header\n"),
              "PLY header: line 3 has an unexpected 'Created'\n");
    EXPECT_EQ(detailsOf("ply\nformat ascii 1.1\nend_header\n"), "PLY header: line 2 has an unexpected '1.1'\n");
    EXPECT_EQ(detailsOf("ply\nformat \x1B[2J\xFF 1.0\nend_header\n"), "PLY header: line 2 has an unexpected '?[2J?'\n");
    EXPECT_EQ(detailsOf("ply\nformat ascii 1.0\ncomment "), "PLY header: line 3 ends too early or too late\n");
    EXPECT_EQ(detailsOf("ply\nformat ascii 1.0\nelement " + std::string(300, 'n') + " 1\nend_header\n"),
              "PLY header: line 3 ends too early or too late\n");
    EXPECT_EQ(detailsOf("no ply"), "PLY header: line 1 ends too early or too late\n");
    EXPECT_EQ(detailsOf(""), "PLY header: line 1 ends too early or too late\n");
}

TEST(PlyLoader, RefusesFacesBeforeTheirVertices) {
    Mesh mesh;
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  loadPlyText("ply\nformat ascii 1.0\nelement face 1\nproperty list uchar int vertex_indices\n"
                              "element vertex 1\nproperty float x\nproperty float y\nproperty float z\nend_header\n"
                              "3 0 0 0\n0 0 0\n",
                              mesh);
              }),
              "Triangle vertex index is out of bounds. (vertex index=0)");
}

TEST(PlyLoader, OpensPathsOfAnyScriptAndLength) {
    const TempDir dir;
    std::string folder = dir.path();
    for (int i = 0; i < 3; ++i) {
        folder = FileUtils::join(folder, std::string(100, 'd') + " # \xC3\xA9\xE6\xBC\xA2");
        FileUtils::createDir(folder);
    }
    const std::string path = FileUtils::join(folder, "\xE6\xA8\xA1\xE5\x9E\x8B.ply");
    writeFileBytes(path, header(4, 1) + square + "3 0 1 2\n");
    Mesh mesh;
    loadPLY(path, mesh, 1.0f);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(PlyLoader, ReadsNumbersWithAPointWhateverTheHostsLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "German"})
        if (std::setlocale(LC_NUMERIC, name) != nullptr) break;
    const std::string during = std::setlocale(LC_NUMERIC, nullptr);
    Mesh mesh;
    loadPlyText(header(1, 0) + "0.5 1.25 -2.75\n", mesh);
    EXPECT_EQ(during, std::setlocale(LC_NUMERIC, nullptr)) << "left as it was";
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0.5f, 1.25f, -2.75f}}));
}

TEST(PlyLoader, ReadsListsOfEveryLengthInLargeFiles) {
    // Enough numbers that lists of all lengths begin and end anywhere in what is looked at together.
    constexpr int faces = 20000;
    std::string text = header(4, faces) + square;
    Triangles expected;
    for (int i = 0; i < faces; ++i) {
        const int length = i % 7 < 4 ? 3 : i % 11;
        text += std::to_string(length);
        std::uint32_t corners[3] = {};
        for (int corner = 0; corner < length; ++corner) {
            const auto index = static_cast<std::uint32_t>((i + corner) % 4);
            if (corner < 3) corners[corner] = index;
            text += " " + std::to_string(index);
        }
        text += "\n";
        if (length >= 3) expected.push_back({{corners[0], corners[1], corners[2]}, {0, 0, 0}, 0});
    }
    Mesh mesh;
    loadPlyText(text, mesh);
    EXPECT_TRUE(bytesOf(mesh.triangles) == bytesOf(expected));
}

TEST(PlyLoader, TakesListsOfNoOrNegativeLengthAsEmpty) {
    std::string text = header(4, 4);
    text.replace(text.find("uchar"), 5, "float");
    Mesh mesh;
    loadPlyText(text + square + "0\n-3\n-0.5\n3.75 0 1 2\n", mesh);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}}));
}

TEST(PlyLoader, TakesListsOfALengthBeyondALongAsEmpty) {
    std::string text = header(4, 2);
    text.replace(text.find("uchar"), 5, "double");
    const double beyond = 4.0 * static_cast<double>(std::numeric_limits<long>::max());
    Mesh mesh;
    loadPlyText(text + square + std::to_string(beyond) + "\n3 0 1 2\n", mesh);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}}));
}

TEST(PlyLoader, MakesNoFacesOfASingleNumber) {
    std::string text = header(4, 3);
    text.replace(text.find("list uchar int"), 14, "int");
    Mesh mesh;
    loadPlyText(text + square + "3\n1\n2\n", mesh);
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(PlyLoader, RefusesAFaceBeforeItComplainsOfWhatFollows) {
    Mesh mesh;
    testing::internal::CaptureStderr();
    EXPECT_EQ(messageOf<VelmarException>([&] { loadPlyText(header(4, 3) + square + "3 0 1 7\n3 0 1 2\nx", mesh); }),
              "Triangle vertex index is out of bounds. (vertex index=7)");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PlyLoader, AppendsToAMeshThatHoldsSomething) {
    Mesh mesh;
    addUnitSquare(mesh);
    loadPlyText(header(1, 1) + "7 8 9\n3 0 1 4\n", mesh);
    EXPECT_EQ(mesh.verts.size(), 5u);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 4}, {0, 0, 0}, 0}}));
    mesh.raiseNumUVMappings(1);
    EXPECT_EQ(messageOf<VelmarException>([&] { loadPlyText(header(4, 1) + square + "3 0 1 2\n", mesh); }),
              "Triangle uv index is out of bounds. (uv index=0)");
}

TEST(PlyLoader, ReadsTwoFilesAtOnce) {
    std::string small_text = header(3000, 0);
    std::string large_text = header(3000, 0);
    for (int i = 0; i < 3000; ++i) {
        small_text += "1 2 3\n";
        large_text += "4 5 6\n";
    }
    const TextFile small_file("small.ply", small_text);
    const TextFile large_file("large.ply", large_text);
    Mesh small;
    Mesh large;
    std::thread other([&] { loadPLY(small_file.path(), small, 1.0f); });
    loadPLY(large_file.path(), large, 10.0f);
    other.join();
    EXPECT_EQ(bytesOf(small.verts), bytesOf(std::vector<Vec3f>(3000, {1, 2, 3})));
    EXPECT_EQ(bytesOf(large.verts), bytesOf(std::vector<Vec3f>(3000, {40, 50, 60})));
}

} // namespace

} // namespace PlyLoaderTests
