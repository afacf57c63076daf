#include "mesh/ObjLoader.h"

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MtlLoader.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TextFile.h"
#include "tests/support/Throws.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace Velmar;
using TestSupport::messageOf;
using TestSupport::TempDir;
using TestSupport::TextFile;

namespace {

void load(std::string_view text, Mesh& mesh, float scale = 1.0f) {
    const TextFile file("model.obj", text);
    MTLLibrary library;
    loadOBJ(file.path(), mesh, scale, false, library);
}

std::string loaderMessage(std::string_view text) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { load(text, mesh); });
}

std::string meshMessage(std::string_view text) {
    Mesh mesh;
    return messageOf<VelmarException>([&] { load(text, mesh); });
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

TEST(ObjLoader, ReadsATriangleOfPositions) {
    Mesh mesh;
    load(three + "f 1 2 3\n", mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_EQ(mesh.num_uv_mappings, 0u);
    EXPECT_EQ(trianglesOf(mesh), (Corners{{0, 1, 2}}));
    EXPECT_EQ(mesh.aabb_max.x, 1.0f) << "built";
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(ObjLoader, ReadsNormalsAndNormalisesThem) {
    Mesh mesh;
    load(three + three_normals + "f 1//2 2//2 3//2\n", mesh);
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}));
}

TEST(ObjLoader, ReadsUVsInFileOrderWhetherUsedOrNot) {
    Mesh mesh;
    load(three + "vt 0.5 0.25 7\nvt 1 2\nvt 3 4\nvt 5 6\nf 1/4 2/2 3/1\n", mesh);
    EXPECT_EQ(mesh.num_uv_mappings, 1u);
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{0.5f, 0.25f}, {1, 2}, {3, 4}, {5, 6}}));
    EXPECT_EQ(uvIndicesOf(mesh), (Corners{{3, 1, 0}}));
    EXPECT_TRUE(mesh.normals.empty());
}

TEST(ObjLoader, ReadsFullCorners) {
    Mesh mesh;
    load(three + seven_uvs + three_normals + "f 3/1/1 1/2/2 2/3/3\n", mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 1, 0}, {0, 0, 0}, {1, 0, 0}}));
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0, 1}, {0, 0, 1}, {1, 0, 0}}));
    EXPECT_EQ(uvIndicesOf(mesh), (Corners{{0, 1, 2}}));
}

TEST(ObjLoader, ScalesPositionsAndNothingElse) {
    Mesh mesh;
    load("v 1 2 3\nv 2 0 0\nv 0 3 0\nvt 1 1\nvn 0 0 1\nf 1/1/1 2/1/1 3/1/1\n", mesh, 0.5f);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0.5f, 1, 1.5f}, {1, 0, 0}, {0, 1.5f, 0}}));
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}));
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{1, 1}}));
}

TEST(ObjLoader, CountsNegativeIndicesBackFromTheLastSoFar) {
    Mesh mesh;
    load(three + "f -3 -2 -1\n", mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    Mesh of_four;
    load(four + "f -3 -2 -1\nv 9 9 9\n", of_four);
    EXPECT_EQ(bytesOf(of_four.verts), bytesOf(std::vector<Vec3f>{{1, 0, 0}, {0, 1, 0}, {1, 1, 0}}));
    Mesh full;
    load(three + seven_uvs + three_normals + "f -3/-1/-1 -2/-7/-2 -1/-3/-3\n", full);
    EXPECT_EQ(uvIndicesOf(full), (Corners{{6, 0, 4}}));
    EXPECT_EQ(bytesOf(full.normals), bytesOf(std::vector<Vec3f>{{1, 0, 0}, {0, 0, 1}, {0, 0, 1}}));
}

TEST(ObjLoader, SharesAVertexBetweenEqualPairsOfPositionAndNormal) {
    Mesh mesh;
    load(four + three_normals + "f 1//1 2//1 3//1\nf 2//1 4//1 3//1\n", mesh);
    EXPECT_EQ(mesh.verts.size(), 4u);
    EXPECT_EQ(trianglesOf(mesh), (Corners{{0, 1, 2}, {1, 3, 2}}));
}

TEST(ObjLoader, MakesAVertexForEachNormalAtAPosition) {
    Mesh mesh;
    load(three + three_normals + "f 1//1 2//1 3//1\nf 1//2 2//1 3//1\nf 1//3 2//1 3//1\nf 1//2 2//1 3//1\n", mesh);
    EXPECT_EQ(mesh.verts.size(), 5u);
    EXPECT_EQ(trianglesOf(mesh), (Corners{{0, 1, 2}, {3, 1, 2}, {4, 1, 2}, {3, 1, 2}}));
    EXPECT_EQ(bytesOf(mesh.normals),
              bytesOf(std::vector<Vec3f>{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {1, 0, 0}}));
}

TEST(ObjLoader, SharesTheVertexOfTheFirstNormalWithCornersWithoutOne) {
    Mesh first_with_normal;
    EXPECT_EQ(messageOf<VelmarException>(
                  [&] { load(four + three_normals + "f 1//1 2//1 3//1\nf 1 2 4\n", first_with_normal); }),
              "Must be zero normals, or normals.size() must equal verts.size()");
    EXPECT_EQ(trianglesOf(first_with_normal), (Corners{{0, 1, 2}, {0, 1, 3}}));

    Mesh first_without;
    load(three + three_normals + "f 1//1 2//1 3//1\nf 2 3 1\n", first_without);
    EXPECT_EQ(trianglesOf(first_without), (Corners{{0, 1, 2}, {1, 2, 0}}));
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
    load(text, mesh);

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

/// What a file gives: the mesh, or the message of what was thrown.
std::string outcomeOf(const std::string& text) {
    Mesh mesh;
    std::string message;
    try {
        load(text, mesh, 0.75f);
    } catch (const Velmar::Exception& e) {
        return e.getMessage();
    } catch (const VelmarException& e) {
        return toStdString(e.getMessage());
    }
    std::string result = std::to_string(mesh.num_uv_mappings) + "|";
    for (const std::string& name : namesOf(mesh.used_materials))
        result += name + "|";
    return result + bytesOf(mesh.verts) + "|" + bytesOf(mesh.normals) + "|" + bytesOf(mesh.uv_pairs) + "|" +
           bytesOf(mesh.triangles) + "|" + bytesOf(mesh.quads);
}

/// Lines are read on a quick road when they are of the usual form. A blank in front changes nothing of what they mean,
/// but takes them off that road.
std::string indented(const std::string& text) {
    std::string result = " ";
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        const bool ends_line = text[i] == '\n' || (text[i] == '\r' && text.substr(i + 1, 1) != "\n");
        if (ends_line && i + 1 < text.size()) result += ' ';
    }
    return result;
}

/// Text of lines that are mostly of the usual form, and mostly right.
class LineMaker {
  public:
    LineMaker(std::uint64_t seed, bool may_be_wrong) : random(seed), wrong(may_be_wrong) {}

    std::string lines(int count) {
        const char* const ends[] = {"\n", "\n", "\r\n", "\r"};
        const std::string end = ends[random() % 4];
        std::string text;
        for (int i = 0; i < count; ++i)
            text += line(i) + end;
        if (random() % 3 == 0) text.resize(text.size() - end.size());
        // The last lines of a file are too near to its end for the quick road.
        if (random() % 3 != 0) text += end + "#" + std::string(100, ' ');
        return text;
    }

  private:
    std::string line(int i) {
        const auto kind = i < 8 ? random() % 3 : random() % 8;
        if (kind == 0 || i < 3) return "v" + blank() + number() + blank() + number() + blank() + number() + rest();
        if (kind == 1) return "vt" + blank() + number() + blank() + number() + rest();
        if (kind == 2) return "vn" + blank() + number() + blank() + number() + blank() + number() + rest();
        if (kind == 3 && rarely(4)) return "usemtl m" + std::to_string(random() % 3);
        if (kind == 3 && rarely(2)) return rarely(2) ? "" : "g some group";
        return face();
    }

    std::string face() {
        std::string text = "f";
        const auto form = random() % 4;
        const auto corners = rarely(3) ? 4 : rarely(8) ? 5 + random() % 4 : rarely(40) && wrong ? 2 : 3;
        for (std::uint64_t corner = 0; corner < corners; ++corner) {
            text += blank() + index(3);
            if (form != 0) text += "/";
            if (form == 1 || form == 3) text += index(1);
            if (form >= 2) text += "/" + index(1);
        }
        return text + rest();
    }

    std::string index(std::uint64_t least_count) {
        if (wrong && rarely(60)) return "0";
        if (wrong && rarely(60)) return std::to_string(random() % 100000000000);
        if (rarely(20)) return "-" + std::to_string(1 + random() % least_count);
        if (rarely(30)) return "00" + std::to_string(1 + random() % least_count);
        return std::to_string(1 + random() % least_count);
    }

    std::string number() {
        if (wrong && rarely(200)) return "x";
        const double value = (static_cast<double>(random() % 2000001) - 1000000) / 1000;
        const char* const forms[] = {"%.6f", "%.6f", "%.6f", "%g", "%.9g", "%e", "%.0f", "%.8f"};
        char text[64];
        std::snprintf(text, sizeof text, forms[random() % 8], value);
        return rarely(60) ? std::string(text) + "f" : text;
    }

    std::string blank() { return rarely(30) ? "\t" : rarely(30) ? "  " : rarely(100) ? " \\\n" : " "; }
    std::string rest() { return rarely(20) ? " " : rarely(20) ? " 0.5 0.5 0.5" : rarely(30) ? " # it" : ""; }
    bool rarely(std::uint64_t times) { return random() % times == 0; }

    std::mt19937_64 random;
    bool wrong;
};

TEST(ObjLoader, ReadsLinesOfTheUsualFormAsAnyOthers) {
    for (const char* line : {"v 1.5 -2.5 0.000001",
                             "v  1.5 2 3",
                             "vt 0.5 -1",
                             "vn -0.0 0 1",
                             "f 1 2 3",
                             "f 1 2 4 3",
                             "f 1 2 3 ",
                             "f 1/1 2/2 3/3",
                             "f 1/1/1 2/2/2 4/3/3",
                             "f 1//1 2//1 3//1",
                             "f 1/1/1 2/2/2 4/3/3 3/1/1",
                             "f 1 2 4 3 1",
                             "f 1 2",
                             "f 1 2 0",
                             "f 1 2 5",
                             "f 1/0 2/1 3/1",
                             "f 1/4 2/1 3/1",
                             "f 1//4 2//1 3//1",
                             "f 1//0 2//1 3//1",
                             "f 12345678 1 2",
                             "f 123456789 1 2",
                             "f 1 2 -1",
                             "f 1 2/ 3",
                             "f 1/2/ 2 3",
                             "f 1//1 2//1 3",
                             "f 1 2 3x",
                             "f 1/1 2/1 3/1 "}) {
        const std::string before = four + "vt 0 0\nvt 1 0\nvt 0 1\n" + three_normals;
        // With a material before them and without.
        for (const std::string& material : {std::string(), std::string("usemtl a\n")}) {
            const std::string text = before + material + line + "\nf 1 2 3\n#" + std::string(100, '-');
            EXPECT_EQ(outcomeOf(text), outcomeOf(indented(text))) << line;
        }
    }
}

TEST(ObjLoader, ReadsEveryFileAlikeOnBothRoads) {
    for (std::uint64_t seed = 0; seed < 800; ++seed) {
        LineMaker maker(seed, seed % 2 == 1);
        const std::string text = maker.lines(static_cast<int>(10 + seed % 90));
        ASSERT_EQ(outcomeOf(text), outcomeOf(indented(text))) << "seed " << seed << "\n" << text;
    }
}

TEST(ObjLoader, ReadsLargeFilesAlikeOnBothRoads) {
    // Lists grow many times, and the normals come only when the room for vertices is made.
    LineMaker maker(4, false);
    const std::string text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\n" + maker.lines(150000);
    EXPECT_EQ(outcomeOf(text), outcomeOf(indented(text)));
}

TEST(ObjLoader, AppendsToAMeshThatHoldsSomething) {
    Mesh mesh;
    mesh.raiseNumUVMappings(2);
    addUnitSquare(mesh);
    const Vec2f pairs[] = {{7, 8}, {9, 10}};
    mesh.addUVs(pairs);
    mesh.addQuad({3, 2, 1, 0}, {0, 0, 0, 0}, 5);
    load("v 5 0 0\nv 6 0 0\nv 5 1 0\nvt 0.5 0.25\nusemtl a\nf 1/1 2/1 3/1\nf 1/1 2/1 3/1 2/1\n#" +
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

TEST(ObjLoader, LeavesOutPositionsThatNoFaceNames) {
    Mesh mesh;
    load(four + "f 1 2 4\n", mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
}

TEST(ObjLoader, KeepsUVIndicesOfEarlierFacesWhereAFaceHasNone) {
    Mesh mesh;
    load(three + seven_uvs + "f 1/5 2/6 3/7\nf 1 2 3\nf 1 2/1 3/\n", mesh);
    EXPECT_EQ(uvIndicesOf(mesh), (Corners{{4, 5, 6}, {4, 5, 6}, {4, 0, 6}}));
}

TEST(ObjLoader, CutsFacesOfMoreThanFourCornersIntoFans) {
    const std::string positions = "v 0 0 0\nv 2 0 0\nv 3 1 0\nv 2 2 0\nv 0 2 0\nv -1 1 0\n";
    Mesh pentagon;
    load(positions + "f 1 2 3 4 5\n", pentagon);
    EXPECT_EQ(trianglesOf(pentagon), (Corners{{0, 1, 2}, {0, 2, 3}, {0, 3, 4}}));
    Mesh hexagon;
    load(positions + seven_uvs + "f 1/7 2/6 3/5 4/4 5/3 6/2\n", hexagon);
    EXPECT_EQ(trianglesOf(hexagon), (Corners{{0, 1, 2}, {0, 2, 3}, {0, 3, 4}, {0, 4, 5}}));
    EXPECT_EQ(uvIndicesOf(hexagon), (Corners{{6, 5, 4}, {6, 4, 3}, {6, 3, 2}, {6, 2, 1}}));
}

TEST(ObjLoader, KeepsQuads) {
    Mesh mesh;
    load(four + seven_uvs + "f 1/1 2/2 4/3 3/4\nf 1 1 1 1\n", mesh);
    EXPECT_EQ(bytesOf(mesh.quads),
              bytesOf(std::vector<MeshQuad>{{{0, 1, 2, 3}, {0, 1, 2, 3}, 0}, {{0, 0, 0, 0}, {0, 1, 2, 3}, 0}}));
}

TEST(ObjLoader, DropsDegenerateTriangles) {
    Mesh mesh;
    load(four + "f 1 1 2\nf 1 2 3\n", mesh);
    EXPECT_EQ(trianglesOf(mesh), (Corners{{0, 1, 2}}));
}

TEST(ObjLoader, IgnoresTheRestOfALineBehindThe256thCorner) {
    std::string text;
    for (int i = 0; i < 300; ++i)
        text += "v " + std::to_string(i) + " " + std::to_string(i * i) + " 0\n";
    text += "f";
    for (int i = 1; i <= 256; ++i)
        text += " " + std::to_string(i);
    Mesh mesh;
    load(text + " and now for something else\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 254u);
    EXPECT_EQ(mesh.verts.size(), 256u);
}

TEST(ObjLoader, PutsFacesBeforeAnyMaterialUnderDefault) {
    Mesh mesh;
    load(three + "f 1 2 3\nusemtl a\nf 1 2 3\nusemtl default\nf 1 2 3\nusemtl a\nf 1 2 3\n", mesh);
    EXPECT_EQ(namesOf(mesh.used_materials), (std::vector<std::string>{"default", "a"}));
    EXPECT_EQ(mesh.triangles[0].material_index, 0u);
    EXPECT_EQ(mesh.triangles[1].material_index, 1u);
    EXPECT_EQ(mesh.triangles[2].material_index, 0u);
    EXPECT_EQ(mesh.triangles[3].material_index, 1u);
    EXPECT_EQ(mesh.num_materials_referenced, 2u);
}

TEST(ObjLoader, NeedsNoDefaultWhenAMaterialComesFirst) {
    Mesh mesh;
    load(three + "usemtl  a name\nf 1 2 3\n", mesh);
    EXPECT_EQ(namesOf(mesh.used_materials), std::vector<std::string>{"a"});
    EXPECT_EQ(mesh.triangles[0].material_index, 0u);
}

TEST(ObjLoader, TakesAnEmptyMaterialName) {
    Mesh mesh;
    load(three + "usemtl\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl \t\nf 1 2 3\n", mesh);
    EXPECT_EQ(namesOf(mesh.used_materials), (std::vector<std::string>{"", "b"}));
    EXPECT_EQ(mesh.triangles[2].material_index, 0u);
}

TEST(ObjLoader, GivesItsOwnNumbersToMaterialsOfAMeshThatHadSome) {
    Mesh mesh;
    mesh.addMaterialUsed("old");
    load(three + "usemtl old\nusemtl new\nf 1 2 3\n", mesh);
    EXPECT_EQ(namesOf(mesh.used_materials), (std::vector<std::string>{"old", "new"}));
    EXPECT_EQ(mesh.triangles[0].material_index, 1u);
}

TEST(ObjLoader, ReadsKeywordsDirectlyBeforeNumbers) {
    Mesh mesh;
    load("v0 0 0\nv1 0 0\nv0 1 0\nvn0 0 1\nvt0 0\nf1/1/1 2/1/1 3/1/1", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(mesh.normals.size(), 3u);
}

TEST(ObjLoader, IgnoresOtherLinesAndWhatFollowsOnALine) {
    Mesh mesh;
    load("# v 9 9 9\n\n  \t v 0 0 0 1.0 and more\nV 1 1 1\nvp 1 2\n_v\n\tv 1 0 0 0.5 0.5 0.5\ng group\ns off\no f 1 2 "
         "3\n"
         "- f 1 2 3\nv 0 1 0 # third\nface 1 2 3\nl 1 2\n\\\nf 1 2 3\n",
         mesh);
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(ObjLoader, GivesAnEmptyBuiltMeshForAnEmptyFile) {
    for (const char* text : {"", "\n", "# nothing", "\r\n\r\n"}) {
        Mesh mesh;
        load(text, mesh);
        EXPECT_TRUE(mesh.verts.empty());
        EXPECT_TRUE(mesh.used_materials.empty());
        EXPECT_EQ(mesh.num_materials_referenced, 1u);
    }
}

TEST(ObjLoader, ContinuesLinesBehindABackslashWithoutCountingThem) {
    Mesh mesh;
    load("v 1 \\\n2 \\ ignored \r\n3\nv 1 0 0\nv 0 1 0\nf 1 2 \\\n 3\n", mesh);
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
        load(text.substr(0, text.size() - 1 - end.size()), mesh);
        EXPECT_EQ(mesh.triangles.size(), 1u);
    }
    EXPECT_EQ(loaderMessage("\n\r\rv"), "Parse error while reading position on line 4");
}

TEST(ObjLoader, ReadsANumberThatEndsWithTheFile) {
    Mesh mesh;
    load("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nvt 0.5 0.125", mesh);
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{0.5f, 0.125f}}));
}

TEST(ObjLoader, ReadsLinesOfAMegabyte) {
    const std::string blanks(1000000, ' ');
    Mesh mesh;
    load("# " + std::string(1000000, 'x') + "\nv" + blanks + "0 0 0\nv 1 0 0" + blanks + "\nv 0 1 0\nusemtl " +
             std::string(1000000, 'm') + "\n" + std::string(1000000, 'k') + "\nf 1 2" + blanks + "3",
         mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(mesh.used_materials[0].size(), 1000000u);
}

TEST(ObjLoader, NamesTheLineOfABrokenNumber) {
    EXPECT_EQ(loaderMessage("v 1 2\n"), "Parse error while reading position on line 1");
    EXPECT_EQ(loaderMessage("\nv 1 x 3\n"), "Parse error while reading position on line 2");
    EXPECT_EQ(loaderMessage("v nan 0 0\n"), "Parse error while reading position on line 1");
    EXPECT_EQ(loaderMessage("v 1,5 2 3\n"), "Parse error while reading position on line 1");
    EXPECT_EQ(loaderMessage("# c\nvt 1\n"), "Parse error while reading tex coord on line 2");
    EXPECT_EQ(loaderMessage("vt x 1\n"), "Parse error while reading tex coord on line 1");
    EXPECT_EQ(loaderMessage("\n\nvn 1 2\n"), "Parse error while reading normal on line 3");
}

TEST(ObjLoader, RefusesFacesOfFewerThanThreeCorners) {
    EXPECT_EQ(loaderMessage(three + "f 1 2\n"), "Invalid number of vertices in face: 2 (line 4)");
    EXPECT_EQ(loaderMessage(three + "f\n"), "Invalid number of vertices in face: 0 (line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1"), "Invalid number of vertices in face: 1 (line 4)");
}

TEST(ObjLoader, RefusesCornersWithoutANumber) {
    EXPECT_EQ(loaderMessage(three + "f 1 2 x\n"), "syntax error: no integer following 'f' (line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 99999999999\n"), "syntax error: no integer following 'f' (line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 # 3\n"), "syntax error: no integer following 'f' (line 4)");
    EXPECT_EQ(loaderMessage(three + "f /1 2 3\n"), "syntax error: no integer following 'f' (line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1// 2 3\n"), "syntax error: no integer following '/' (line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1/1/"), "syntax error: no integer following '/' (line 4)");
}

TEST(ObjLoader, AcceptsACornerThatEndsWithOneSlash) {
    Mesh mesh;
    load(three + "f 1/ 2/ 3/", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(ObjLoader, RefusesZeroIndices) {
    EXPECT_EQ(loaderMessage(three + "f 1 2 0\n"), "Position index invalid. (index '0' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 -0\n"), "Position index invalid. (index '0' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1/0 2/1 3/1\n"),
              "Invalid tex coord index. (index '0' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1//0 2//1 3//1\n"),
              "Invalid normal index. (index '0' out of bounds, on line 4)");
}

TEST(ObjLoader, RefusesTooLargeIndicesAndShowsThemFromZero) {
    EXPECT_EQ(loaderMessage(three + "f 1 2 4\n"), "Position index invalid. (index '3' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 2147483647\n"),
              "Position index invalid. (index '2147483646' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "vn 0 0 1\nf 1//1 2//2 3//1\n"),
              "Normal index invalid. (index '1' out of bounds, on line 5)");
    EXPECT_EQ(meshMessage(three + "vt 0 0\nf 1/1 2/2 3/1\n"), "Triangle uv index is out of bounds. (uv index=1)");
    EXPECT_EQ(meshMessage(four + "vt 0 0\nf 1/1 2/1 3/1 4/3\n"), "Quad uv index is out of bounds. (uv index=2)");
}

TEST(ObjLoader, RefusesRelativeIndicesBelowTheFirst) {
    EXPECT_EQ(loaderMessage(three + "f -4 -2 -1\n"), "Position index invalid. (index '-1' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 -9\n"), "Position index invalid. (index '-6' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "f 1 2 -2147483648\n"),
              "Position index invalid. (index '-2147483645' out of bounds, on line 4)");
    EXPECT_EQ(loaderMessage(three + "vn 0 0 1\nf 1//-2 2//1 3//1\n"),
              "Normal index invalid. (index '-1' out of bounds, on line 5)");
    EXPECT_EQ(meshMessage(three + "vt 0 0\nf 1/1 2/-2 3/1\n"),
              "Triangle uv index is out of bounds. (uv index=4294967295)");
}

TEST(ObjLoader, RefusesAnInvalidNormalOnlyWhenAFaceUsesIt) {
    // Numbers too large for a float read as infinity.
    Mesh mesh;
    load(three + three_normals + "vn 1e39 0 0\nf 1//1 2//1 3//1\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(meshMessage(three + "vn 1e39 0 0\nf 1//1 2//1 3//1\n"), "Invalid normal");
}

TEST(ObjLoader, DoesNotLookAtUVIndicesOfAFileWithoutUVs) {
    Mesh mesh;
    load(three + "f 1/7 2/-9 3/1\n", mesh);
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
