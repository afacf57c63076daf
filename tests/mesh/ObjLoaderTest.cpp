#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "tests/mesh/ObjText.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ObjLoaderTests {

using namespace Velmar;
using TestSupport::loadText;
using TestSupport::messageOf;
using TestSupport::TempDir;

namespace {

std::string loaderMessage(std::string_view text) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { loadText(text, mesh); });
}

std::string meshMessage(std::string_view text) {
    Mesh mesh;
    return messageOf<VelmarException>([&] { loadText(text, mesh); });
}

std::vector<std::array<std::uint32_t, 3>> trianglesOf(const Mesh& mesh) {
    std::vector<std::array<std::uint32_t, 3>> result;
    for (const MeshTriangle& t : mesh.triangles)
        result.push_back({t.vertex_indices[0], t.vertex_indices[1], t.vertex_indices[2]});
    return result;
}

std::vector<std::array<std::uint32_t, 3>> uvIndicesOf(const Mesh& mesh) {
    std::vector<std::array<std::uint32_t, 3>> result;
    for (const MeshTriangle& t : mesh.triangles)
        result.push_back({t.uv_indices[0], t.uv_indices[1], t.uv_indices[2]});
    return result;
}

using Corners = std::vector<std::array<std::uint32_t, 3>>;

const std::string three = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
const std::string four = three + "v 1 1 0\n";
const std::string three_normals = "vn 0 0 1\nvn 0 0 2\nvn 1 0 0\n";
const std::string seven_uvs = "vt 0 0\nvt 1 0\nvt 2 0\nvt 3 0\nvt 4 0\nvt 5 0\nvt 6 0\n";

TEST(ObjLoader, ScalesPositionsAndNothingElse) {
    Mesh mesh;
    loadText("v 1 2 3\nv 2 0 0\nv 0 3 0\nvt 1 1\nvn 0 0 1\nf 1/1/1 2/1/1 3/1/1\n", mesh, 0.5f);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0.5f, 1, 1.5f}, {1, 0, 0}, {0, 1.5f, 0}}));
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}));
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{1, 1}}));
}

TEST(ObjLoader, CountsNegativeUVIndicesInEntriesOfAllSets) {
    Mesh mesh;
    mesh.raiseNumUVMappings(3);
    loadText(three + "vt 1 1\nvt 2 2\nvt 3 3\nf 1/-3 2/-2 3/-1\n", mesh);
    EXPECT_EQ(uvIndicesOf(mesh), (Corners{{0, 1, 2}}));
    EXPECT_EQ(mesh.uv_pairs.size(), 9u);
}

TEST(ObjLoader, LeavesListsWithTheCapacityThatAppendsGiveThem) {
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "v 0 0 0\n";
    text += "v 1 0 0\nv 0 1 0\nf 1 -2 -1\n";
    Mesh mesh;
    loadText(text, mesh);
    EXPECT_EQ(mesh.verts.capacity(), 4u);
    EXPECT_EQ(mesh.triangles.capacity(), 1u);
}

TEST(ObjLoader, RefusesAMixOfCornersWithAndWithoutNormals) {
    EXPECT_EQ(meshMessage(three + three_normals + "f 1//1 2 3//1\n"),
              "Must be zero normals, or normals.size() must equal verts.size()");
}

TEST(ObjLoader, JoinsVerticesInLargeFilesAsInSmallOnes) {
    // Each position appears with two normals in turn, often enough for the table to grow.
    constexpr int positions = 90000;
    std::string text = three_normals;
    for (int i = 0; i < positions; ++i)
        text += "v " + std::to_string(i) + " " + std::to_string(i % 2) + " " + std::to_string(i % 3) + "\n";
    const auto addFaces = [&] {
        for (int i = 1; i + 2 <= positions; i += 3)
            for (const int normal : {1, 2, 3}) {
                text += 'f';
                for (int corner = 0; corner < 3; ++corner)
                    text += " " + std::to_string(i + corner) + "//" + std::to_string(normal);
                text += '\n';
            }
    };
    addFaces();
    addFaces();
    Mesh mesh;
    loadText(text, mesh);

    std::map<std::pair<int, int>, std::uint32_t> expected;
    std::size_t triangle = 0;
    for (int round = 0; round < 2; ++round)
        for (int i = 1; i + 2 <= positions; i += 3)
            for (const int normal : {1, 2, 3}) {
                for (int corner = 0; corner < 3; ++corner) {
                    const auto next = static_cast<std::uint32_t>(expected.size());
                    const std::uint32_t vertex = expected.try_emplace({i + corner, normal}, next).first->second;
                    ASSERT_EQ(mesh.triangles[triangle].vertex_indices[corner], vertex);
                }
                ++triangle;
            }
    EXPECT_EQ(mesh.triangles.size(), triangle);
    EXPECT_EQ(mesh.verts.size(), expected.size());
}

TEST(ObjLoader, AppendsToAMeshThatHoldsSomething) {
    Mesh mesh;
    mesh.raiseNumUVMappings(2);
    addUnitSquare(mesh);
    const Vec2f pairs[] = {{7, 8}, {9, 10}};
    mesh.addUVs(pairs);
    mesh.addQuad({3, 2, 1, 0}, {0, 0, 0, 0}, 5);
    loadText("v 5 0 0\nv 6 0 0\nv 5 1 0\nvt 0.5 0.25\nusemtl a\nf 1/1 2/1 3/1\nf 1/1 2/1 3/1 2/1\n#" +
                 std::string(100, ' '),
             mesh);
    EXPECT_EQ(mesh.verts.size(), 7u);
    EXPECT_EQ(mesh.verts[6].x, 5.0f);
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{7, 8}, {9, 10}, {0.5f, 0.25f}, {0, 0}}))
        << "a pair for each UV set";
    EXPECT_EQ(bytesOf(mesh.quads),
              bytesOf(std::vector<MeshQuad>{{{3, 2, 1, 0}, {0, 0, 0, 0}, 5}, {{0, 1, 2, 1}, {0, 0, 0, 0}, 0}}));
    EXPECT_EQ(trianglesOf(mesh), (Corners{{0, 1, 2}})) << "its own vertices count from 0";
}

TEST(ObjLoader, IgnoresTheRestOfALineBehindThe256thCorner) {
    std::string text;
    for (int i = 0; i < 300; ++i)
        text += "v " + std::to_string(i) + " " + std::to_string(i * i) + " 0\n";
    text += "f";
    for (int i = 1; i <= 256; ++i)
        text += " " + std::to_string(i);
    Mesh mesh;
    loadText(text + " and now for something else\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 254u);
    EXPECT_EQ(mesh.verts.size(), 256u);
}

TEST(ObjLoader, GivesItsOwnNumbersToMaterialsOfAMeshThatHadSome) {
    Mesh mesh;
    mesh.addMaterialUsed("old");
    loadText(three + "usemtl old\nusemtl new\nf 1 2 3\n", mesh);
    EXPECT_EQ(namesOf(mesh.used_materials), (std::vector<std::string>{"old", "new"}));
    EXPECT_EQ(mesh.triangles[0].material_index, 1u);
}

TEST(ObjLoader, GivesAnEmptyBuiltMeshForAnEmptyFile) {
    for (const char* text : {"", "\n", "# nothing", "\r\n\r\n"}) {
        Mesh mesh;
        loadText(text, mesh);
        EXPECT_TRUE(mesh.verts.empty());
        EXPECT_TRUE(mesh.used_materials.empty());
        EXPECT_EQ(mesh.num_materials_referenced, 1u);
    }
}

TEST(ObjLoader, ContinuesLinesAfterABackslashWithoutCountingThem) {
    Mesh mesh;
    loadText("v 1 \\\n2 \\ ignored \r\n3\nv 1 0 0\nv 0 1 0\nf 1 2 \\\n 3\n", mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{1, 2, 3}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(loaderMessage("v 1 \\\n2 3\nv x\n"), "Parse error while reading position on line 2");
}

TEST(ObjLoader, CountsEachKindOfLineEndAsOneLine) {
    for (const std::string end : {"\n", "\r", "\r\n"}) {
        std::string text;
        for (const char* line : {"v 0 0 0", "", "v 1 0 0", "v 0 1 0", "f 1 2 3", "v"})
            text += line + end;
        EXPECT_EQ(loaderMessage(text), "Parse error while reading position on line 6") << text;
        Mesh mesh;
        loadText(text.substr(0, text.size() - 1 - end.size()), mesh);
        EXPECT_EQ(mesh.triangles.size(), 1u);
    }
    EXPECT_EQ(loaderMessage("\n\r\rv"), "Parse error while reading position on line 4");
}

TEST(ObjLoader, ReadsANumberThatEndsWithTheFile) {
    Mesh mesh;
    loadText("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nvt 0.5 0.125", mesh);
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{0.5f, 0.125f}}));
}

TEST(ObjLoader, ReadsLinesOfAMegabyte) {
    const std::string blanks(1000000, ' ');
    Mesh mesh;
    loadText("# " + std::string(1000000, 'x') + "\nv" + blanks + "0 0 0\nv 1 0 0" + blanks + "\nv 0 1 0\nusemtl " +
                 std::string(1000000, 'm') + "\n" + std::string(1000000, 'k') + "\nf 1 2" + blanks + "3",
             mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(mesh.used_materials[0].size(), 1000000u);
}

TEST(ObjLoader, RefusesAnInvalidNormalOnlyWhenAFaceUsesIt) {
    // Numbers too large for a float read as infinity.
    Mesh mesh;
    loadText(three + three_normals + "vn 1e39 0 0\nf 1//1 2//1 3//1\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(meshMessage(three + "vn 1e39 0 0\nf 1//1 2//1 3//1\n"), "Invalid normal");
}

TEST(ObjLoader, DoesNotLookAtUVIndicesOfAFileWithoutUVs) {
    Mesh mesh;
    loadText(three + "f 1/7 2/-9 3/1\n", mesh);
    EXPECT_EQ(mesh.num_uv_mappings, 0u);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(ObjLoader, PassesTheMappingsFailureOn) {
    const TempDir dir;
    const std::string path = dir.file("missing.obj");
    Mesh mesh;
    MTLLibrary library;
    const std::string message = messageOf<Velmar::Exception>([&] { loadOBJ(path, mesh, 1.0f, false, library); });
    EXPECT_TRUE(message.starts_with("Failed to open file '" + path + "': ")) << message;
}

TEST(ObjLoader, ReadsNamedLibrariesOnlyWhenAsked) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("first.mtl"), "newmtl a\n");
    TestSupport::writeFileBytes(dir.file("second.mtl"), "newmtl b\nnewmtl c\n");
    TestSupport::writeFileBytes(dir.file("model.obj"),
                                "mtllib first.mtl\nmtllib second.mtl and more\nmtllib missing.mtl\n");
    Mesh mesh;
    MTLLibrary library;
    library.path = "untouched";
    loadOBJ(dir.file("model.obj"), mesh, 1.0f, false, library);
    EXPECT_EQ(library.path, "untouched");
    EXPECT_TRUE(library.materials.empty());

    loadOBJ(dir.file("model.obj"), mesh, 1.0f, true, library);
    EXPECT_EQ(library.path, dir.file("second.mtl"));
    ASSERT_EQ(library.materials.size(), 2u) << "each library replaces the one before";
    EXPECT_EQ(library.materials[0].name, "b");
}

TEST(ObjLoader, EndsWithTheLibraryThatItsFileNamesLast) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("m.obj"), "mtllib a.mtl\nmtllib b.mtl\nmtllib a.mtl\nmtllib missing.mtl\n");
    TestSupport::writeFileBytes(dir.file("a.mtl"), "newmtl a\n");
    TestSupport::writeFileBytes(dir.file("b.mtl"), "newmtl b\n");
    Mesh mesh;
    MTLLibrary library;
    loadOBJ(dir.file("m.obj"), mesh, 1.0f, true, library);
    EXPECT_EQ(library.path, dir.file("a.mtl"));
    ASSERT_EQ(library.materials.size(), 1u);
    EXPECT_EQ(library.materials[0].name, "a");
}

TEST(ObjLoader, CountsLinesThroughAllPartsOfAText) {
    const std::string text = "v 1 2 3\r\n# a \\\r\nv 1 \\\r\n 2 3\r\n\r\nv 1 2\r\n";
    for (std::size_t part_size = 1; part_size <= text.size(); ++part_size) {
        Mesh mesh;
        std::vector<std::string> library_names;
        EXPECT_EQ(messageOf<Velmar::Exception>([&] { readOBJ(text, mesh, 1.0f, library_names, part_size); }),
                  "Parse error while reading position on line 5");
    }
}

TEST(ObjLoader, SurvivesEveryCutOfAFile) {
    const std::string text = "mtllib a.mtl\n" + four + seven_uvs + three_normals +
                             "usemtl m\nf 1/1/1 2/2/2 3/3/3\nf -1/-1/-1 -2/-2/-2 -3/-3/-3 \\\n 1/1/1\nf 1//3 2//2 3//1";
    const TempDir dir;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        TestSupport::writeFileBytes(dir.file("cut.obj"), text.substr(0, length));
        Mesh mesh;
        MTLLibrary library;
        try {
            loadOBJ(dir.file("cut.obj"), mesh, 1.0f, true, library);
        } catch (const Velmar::Exception&) {
        } catch (const VelmarException&) {
        }
        EXPECT_LE(mesh.verts.size(), 8u);
    }
}

} // namespace

} // namespace ObjLoaderTests
