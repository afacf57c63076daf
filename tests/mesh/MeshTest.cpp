#include "mesh/Mesh.h"

#include "velmarexceptions.h"

#include "tests/support/MeshSupport.h"
#include "tests/support/SpecialFloats.h"
#include "tests/support/Throws.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>
#include <xxhash.h>

namespace MeshTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

std::array<float, 6> boxOf(const Mesh& mesh) {
    std::array<float, 6> box{};
    mesh.getBoundingBox(box.data());
    return box;
}

const std::array<float, 6> inverted_box = {infinity, infinity, infinity, -infinity, -infinity, -infinity};

TEST(NewMesh, IsEmptyWithAnInvertedBox) {
    const Mesh mesh;
    EXPECT_EQ(mesh.num_uv_mappings, 0u);
    EXPECT_EQ(mesh.uv_layout, 0u);
    EXPECT_EQ(mesh.num_materials_referenced, 0u);
    EXPECT_TRUE(mesh.used_materials.empty());
    EXPECT_TRUE(mesh.verts.empty());
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_TRUE(mesh.uv_pairs.empty());
    EXPECT_TRUE(mesh.triangles.empty());
    EXPECT_TRUE(mesh.quads.empty());
    EXPECT_EQ(boxOf(mesh), inverted_box);
}

TEST(NewMesh, OnTheHeapHasCountZeroAndGoesThroughSlotZero) {
    auto* const mesh = new Mesh;
    addUnitSquare(*mesh);
    EXPECT_EQ(mesh->getRefCount(), 0);
    ThreadSafeRefCounted* const base = mesh;
    EXPECT_EQ(base->destroy(1), mesh);
}

TEST(RaiseNumUVMappings, NeverLowersTheNumber) {
    Mesh mesh;
    mesh.raiseNumUVMappings(3);
    mesh.raiseNumUVMappings(1);
    EXPECT_EQ(mesh.num_uv_mappings, 3u);
}

TEST(AddMaterialUsed, KeepsNamesDistinctInTheOrderOfFirstUse) {
    Mesh mesh;
    for (const char* name : {"b", "a", "b", "", "a", ""})
        mesh.addMaterialUsed(name);
    EXPECT_EQ(namesOf(mesh.used_materials), (std::vector<std::string>{"b", "a", ""}));
}

TEST(AddVertices, EndsAsSingleAppendsWould) {
    std::vector<Vec3f> positions;
    Mesh bulk;
    Mesh single;
    for (float count = 1; count < 70; ++count) {
        positions.push_back({count, -count, 0.5f * count});
        bulk.addVertices(positions);
        for (const Vec3f& position : positions)
            single.addVertex(position);
        ASSERT_EQ(bulk.verts.capacity(), single.verts.capacity());
    }
    EXPECT_EQ(bytesOf(bulk.verts), bytesOf(single.verts));
}

TEST(AddVertexWithNormal, StoresTheNormalDividedByItsLength) {
    Mesh mesh;
    mesh.addVertexWithNormal({1, 2, 3}, {0, 3, 4});
    EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>{{1, 2, 3}}));
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0.6f, 0.8f}}));
}

TEST(AddVertexWithNormal, StoresNaNsForAZeroNormal) {
    Mesh mesh;
    mesh.addVertexWithNormal({1, 2, 3}, {0, 0, 0});
    ASSERT_EQ(mesh.normals.size(), 1u);
    EXPECT_TRUE(std::isnan(mesh.normals[0].x) && std::isnan(mesh.normals[0].y) && std::isnan(mesh.normals[0].z));
}

TEST(AddVertexWithNormal, LooksAtTheGivenNormalAndNotAtTheQuotients) {
    Mesh mesh;
    // The sum of squares overflows, so the quotients are 0; the components are finite all the same.
    mesh.addVertexWithNormal({0, 0, 0}, {3e38f, 3e38f, 0});
    EXPECT_EQ(bytesOf(mesh.normals), bytesOf(std::vector<Vec3f>{{0, 0, 0}}));
}

TEST(AddVertexWithNormal, RefusesWhatIsNotFiniteAndChangesNothing) {
    for (const float bad : {infinity, -infinity, not_a_number}) {
        for (const Vec3f& normal : {Vec3f{bad, 0, 0}, Vec3f{1, bad, 0}, Vec3f{0, 0, bad}}) {
            Mesh mesh;
            mesh.addVertexWithNormal({0, 0, 0}, {1, 0, 0});
            EXPECT_EQ(messageOf<VelmarException>([&] {
                          mesh.addVertexWithNormal({1, 1, 1}, normal);
                      }),
                      "Invalid normal");
            EXPECT_EQ(mesh.verts.size(), 1u);
            EXPECT_EQ(mesh.normals.size(), 1u);
        }
    }
}

TEST(AddUVs, PadsAShortListWithZerosAndCutsALongOne) {
    Mesh mesh;
    mesh.raiseNumUVMappings(2);
    const Vec2f pairs[] = {{1, 2}, {3, 4}, {5, 6}};
    mesh.addUVs({pairs, 1});
    mesh.addUVs({pairs, 3});
    EXPECT_EQ(bytesOf(mesh.uv_pairs), bytesOf(std::vector<Vec2f>{{1, 2}, {0, 0}, {1, 2}, {3, 4}}));
}

TEST(AddVertexWithNormal, TakesAVertexAndANormalOfTheSameMesh) {
    Mesh mesh;
    mesh.addVertexWithNormal({1, 2, 3}, {0, 0, 1});
    for (int i = 0; i < 10; ++i)
        mesh.addVertexWithNormal(mesh.verts[0], mesh.normals[0]);
    for (const Vec3f& vertex : mesh.verts)
        EXPECT_EQ(vertex.y, 2.0f);
    for (const Vec3f& normal : mesh.normals)
        EXPECT_EQ(normal.z, 1.0f);
}

TEST(AddVertices, TakesThoseOfTheSameMesh) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.addVertices({mesh.verts.data(), mesh.verts.size()});
    EXPECT_EQ(bytesOf(mesh.verts).substr(48), bytesOf(mesh.verts).substr(0, 48));
}

TEST(AddUVs, TakesPairsOfTheSameMesh) {
    Mesh mesh;
    mesh.raiseNumUVMappings(3);
    const Vec2f pairs[] = {{1, 2}, {3, 4}};
    mesh.addUVs(pairs);
    for (int i = 0; i < 10; ++i)
        mesh.addUVs({mesh.uv_pairs.data() + 3 * i, 2});
    for (std::size_t entry = 0; entry < 11; ++entry) {
        EXPECT_EQ(mesh.uv_pairs[3 * entry].y, 2.0f) << entry;
        EXPECT_EQ(mesh.uv_pairs[3 * entry + 1].y, 4.0f) << entry;
        EXPECT_EQ(mesh.uv_pairs[3 * entry + 2].y, 0.0f) << entry;
    }
}

TEST(AddUVs, AppendsNothingWithoutUVSets) {
    Mesh mesh;
    const Vec2f pairs[] = {{1, 2}};
    mesh.addUVs(pairs);
    EXPECT_TRUE(mesh.uv_pairs.empty());
}

TEST(AddTriangle, StoresIndicesAndMaterialAsGiven) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.addTriangle({2, 0, 1}, {7, 8, 9}, 0xFFFFFFFF);
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(std::vector<MeshTriangle>{{{2, 0, 1}, {7, 8, 9}, 0xFFFFFFFF}}));
}

TEST(AddTriangle, DropsTrianglesWithoutAreaAndKeepsTheOrderOfTheOthers) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.addVertex({2, 0, 0});
    mesh.addVertex({not_a_number, 0, 0});
    mesh.addTriangle({0, 1, 2}, {0, 0, 0}, 0);
    mesh.addTriangle({1, 1, 2}, {0, 0, 0}, 1); // two equal vertices
    mesh.addTriangle({0, 1, 4}, {0, 0, 0}, 2); // on one line
    mesh.addTriangle({0, 1, 5}, {0, 0, 0}, 3); // area NaN
    mesh.addTriangle({1, 2, 3}, {0, 0, 0}, 4);
    ASSERT_EQ(mesh.triangles.size(), 2u);
    EXPECT_EQ(mesh.triangles[0].material_index, 0u);
    EXPECT_EQ(mesh.triangles[1].material_index, 4u);
}

TEST(AddTriangle, KeepsAreasFromTheLeastUpwards) {
    // Squares as small as these are so coarse that no length gives the bound itself: these two areas enclose it.
    constexpr float least = 1e-20f;
    const auto area = [](float width) { return 0.5f * std::sqrt(width * width); };
    const auto kept = [](float width) {
        Mesh mesh;
        mesh.addVertex({0, 0, 0});
        mesh.addVertex({width, 0, 0});
        mesh.addVertex({0, 1, 0});
        mesh.addTriangle({0, 1, 2}, {0, 0, 0}, 0);
        return mesh.triangles.size() == 1;
    };
    float too_narrow = 2 * least;
    while (area(too_narrow) >= least)
        too_narrow = std::nextafter(too_narrow, 0.0f);
    const float wide_enough = std::nextafter(too_narrow, 1.0f);
    ASSERT_GE(area(wide_enough), least);

    EXPECT_FALSE(kept(too_narrow));
    EXPECT_TRUE(kept(wide_enough));
}

TEST(AddTriangle, RefusesAVertexIndexOutOfBoundsAndNamesIt) {
    Mesh mesh;
    addUnitSquare(mesh);
    for (const auto& indices : std::vector<std::array<std::uint32_t, 3>>{{4, 0, 1}, {0, 4, 1}, {0, 1, 4}})
        EXPECT_EQ(messageOf<VelmarException>([&] {
                      mesh.addTriangle({indices[0], indices[1], indices[2]}, {0, 0, 0}, 0);
                  }),
                  "Triangle vertex index is out of bounds. (vertex index=4)");
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  mesh.addTriangle({0, 1, 0xFFFFFFFF}, {0, 0, 0}, 0);
              }),
              "Triangle vertex index is out of bounds. (vertex index=4294967295)");
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(AddTriangle, ChecksUVIndicesInEntriesOfAllSets) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.raiseNumUVMappings(2);
    mesh.addUVs({});
    mesh.addUVs({});
    mesh.addTriangle({0, 1, 2}, {1, 1, 1}, 0);
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  mesh.addTriangle({0, 1, 2}, {0, 1, 2}, 0);
              }),
              "Triangle uv index is out of bounds. (uv index=2)");
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(AddTriangle, ComparesUVIndicesByAProductThatWraps) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.raiseNumUVMappings(0x10000);
    mesh.addUVs({});
    mesh.addTriangle({0, 1, 2}, {0x10000, 0x10000, 0x10000}, 0);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(AddTriangle, ReportsTheVertexOfAFaceThatIsBadInBoth) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.raiseNumUVMappings(1);
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  mesh.addTriangle({0, 1, 9}, {5, 5, 5}, 0);
              }),
              "Triangle vertex index is out of bounds. (vertex index=9)");
}

TEST(AddQuad, KeepsDegenerateQuads) {
    Mesh mesh;
    addUnitSquare(mesh);
    mesh.addQuad({1, 1, 1, 1}, {0, 0, 0, 3}, 7);
    EXPECT_EQ(bytesOf(mesh.quads), bytesOf(std::vector<MeshQuad>{{{1, 1, 1, 1}, {0, 0, 0, 3}, 7}}));
}

TEST(AddQuad, RefusesIndicesOutOfBounds) {
    Mesh mesh;
    addUnitSquare(mesh);
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  mesh.addQuad({0, 1, 2, 4}, {9, 9, 9, 9}, 0);
              }),
              "Quad vertex index is out of bounds. (vertex index=4)");
    mesh.raiseNumUVMappings(1);
    mesh.addUVs({});
    EXPECT_EQ(messageOf<VelmarException>([&] {
                  mesh.addQuad({0, 1, 2, 3}, {0, 0, 0, 1}, 0);
              }),
              "Quad uv index is out of bounds. (uv index=1)");
    EXPECT_TRUE(mesh.quads.empty());
}

TEST(AddFaces, ReadsTrianglesAndQuadsFromOneStream) {
    Mesh mesh;
    const std::uint32_t words[] = {0, 1, 2, 3, 4, 5, 6, 7,               //
                                   7, 1, 2, 3, 4, 5, 6, 7,         8, 9, //
                                   1, 9, 8, 7, 6, 5, 4, 3,         2, 1, //
                                   0, 0, 0, 0, 0, 0, 0, 0xFFFFFFFF};
    mesh.addFaces(4, words);
    EXPECT_EQ(bytesOf(mesh.triangles),
              bytesOf(std::vector<MeshTriangle>{{{1, 2, 3}, {4, 5, 6}, 7}, {{0, 0, 0}, {0, 0, 0}, 0xFFFFFFFF}}));
    EXPECT_EQ(bytesOf(mesh.quads),
              bytesOf(std::vector<MeshQuad>{{{1, 2, 3, 4}, {5, 6, 7, 8}, 9}, {{9, 8, 7, 6}, {5, 4, 3, 2}, 1}}));
}

TEST(AddFaces, LeavesTheCapacitiesOfSingleAppends) {
    Mesh mesh;
    Vector<MeshTriangle> single;
    const std::vector<std::uint32_t> words(8 * 40);
    for (std::uint64_t count = 0; count < 40; ++count) {
        mesh.addFaces(count, words.data());
        for (std::uint64_t i = 0; i < count; ++i)
            single.push_back({});
        ASSERT_EQ(mesh.triangles.size(), single.size());
        ASSERT_EQ(mesh.triangles.capacity(), single.capacity());
    }
    EXPECT_EQ(mesh.quads.capacity(), 0u);
}

TEST(Build, FoldsAllVerticesIntoTheBox) {
    Mesh mesh;
    for (const Vec3f& position : {Vec3f{1, -2, 3}, Vec3f{-4, 5, 0.5f}, Vec3f{0, 0, 9}})
        mesh.addVertex(position);
    mesh.build();
    EXPECT_EQ(boxOf(mesh), (std::array<float, 6>{-4, -2, 0.5f, 1, 5, 9}));
}

TEST(Build, StartsTheBoxAfreshEachTime) {
    Mesh mesh;
    mesh.addVertex({100, 100, 100});
    mesh.build();
    mesh.verts[0] = {1, 2, 3};
    mesh.build();
    EXPECT_EQ(boxOf(mesh), (std::array<float, 6>{1, 2, 3, 1, 2, 3}));
}

TEST(Build, LeavesTheBoxOfAnEmptyMeshInvertedAndReportsOneMaterial) {
    Mesh mesh;
    EXPECT_EQ(mesh.build(), 1u);
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
    EXPECT_EQ(boxOf(mesh), inverted_box);
}

TEST(Build, CountsMaterialsByTheGreatestIndexOfTrianglesAndQuads) {
    Mesh mesh;
    mesh.triangles.push_back({{0, 0, 0}, {0, 0, 0}, 4});
    EXPECT_EQ(mesh.build(), 5u);
    mesh.quads.push_back({{0, 0, 0, 0}, {0, 0, 0, 0}, 6});
    mesh.quads.push_back({{0, 0, 0, 0}, {0, 0, 0, 0}, 1});
    EXPECT_EQ(mesh.build(), 7u);
}

TEST(Build, DoesNotLookAtFaceIndices) {
    Mesh mesh;
    const std::uint32_t words[] = {0, 100, 200, 300, 7, 7, 7, 0};
    mesh.addFaces(1, words);
    EXPECT_EQ(mesh.build(), 1u);
}

TEST(Build, AcceptsUVPairsWithoutUVSets) {
    Mesh mesh;
    mesh.uv_pairs.push_back({1, 2});
    EXPECT_EQ(mesh.build(), 1u);
}

TEST(Build, RefusesPairsThatAreNoMultipleOfTheSetsBeforeItTouchesTheBox) {
    Mesh mesh;
    mesh.addVertex({0, 0, 0});
    mesh.raiseNumUVMappings(2);
    for (int i = 0; i < 3; ++i)
        mesh.uv_pairs.push_back({0, 0});
    EXPECT_EQ(messageOf<VelmarException>([&] { mesh.build(); }),
              "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 3, num_uv_mappings: 2");
    EXPECT_EQ(boxOf(mesh), inverted_box);
    EXPECT_EQ(mesh.num_materials_referenced, 0u);
}

TEST(Build, RefusesNormalsThatDontMatchTheVertices) {
    Mesh mesh;
    mesh.addVertexWithNormal({0, 0, 0}, {1, 0, 0});
    mesh.addVertexWithNormal({0, 0, 0}, {1, 0, 0});
    mesh.addVertex({0, 0, 0});
    EXPECT_EQ(messageOf<VelmarException>([&] { mesh.build(); }),
              "Must be zero normals, or normals.size() must equal verts.size()");
}

TEST(Build, ReportsUVsBeforeNormals) {
    Mesh mesh;
    mesh.addVertexWithNormal({0, 0, 0}, {1, 0, 0});
    mesh.addVertex({0, 0, 0});
    mesh.raiseNumUVMappings(2);
    mesh.uv_pairs.push_back({0, 0});
    EXPECT_EQ(messageOf<VelmarException>([&] { mesh.build(); }),
              "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 1, num_uv_mappings: 2");
}

TEST(Checksum, IsTheHashOfAllContentInOrder) {
    Mesh mesh;
    fillSample(mesh);
    mesh.uv_layout = 1;
    std::string bytes;
    const auto word = [&](std::uint32_t value) { bytes.append(reinterpret_cast<const char*>(&value), sizeof value); };
    word(2);
    bytes += "wooda name of more than sixteen bytes";
    bytes += bytesOf(mesh.verts) + bytesOf(mesh.normals);
    word(1);
    bytes += bytesOf(mesh.uv_pairs) + bytesOf(mesh.triangles) + bytesOf(mesh.quads);
    EXPECT_EQ(mesh.checksum(), XXH64(bytes.data(), bytes.size(), 1));
}

TEST(Checksum, OfAnEmptyMeshIsThatOfTwoZeroWords) {
    // XXH64 of eight zero bytes with seed 1.
    const char zeros[8] = {};
    EXPECT_EQ(Mesh().checksum(), XXH64(zeros, sizeof zeros, 1));
}

TEST(Checksum, DoesNotTellWhereOneMaterialNameEnds) {
    Mesh first;
    first.addMaterialUsed("ab");
    first.addMaterialUsed("c");
    Mesh second;
    second.addMaterialUsed("a");
    second.addMaterialUsed("bc");
    second.addMaterialUsed("");
    EXPECT_EQ(first.checksum(), second.checksum());
}

TEST(Checksum, ChangesWithTheUVLayoutAndNotWithBuild) {
    Mesh mesh;
    fillSample(mesh);
    const std::uint64_t before = mesh.checksum();
    mesh.build();
    EXPECT_EQ(mesh.checksum(), before);
    mesh.uv_layout = 1;
    EXPECT_NE(mesh.checksum(), before);
}

} // namespace

} // namespace MeshTests
