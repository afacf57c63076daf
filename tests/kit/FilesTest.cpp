#include "tests/kit/Support.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <vector>

using namespace TestSupport;

namespace {

VelmarMesh* loaded(const std::string& path, float scale = 1) {
    VelmarMesh* mesh = nullptr;
    EXPECT_SUCCESS(VelmarKit_Mesh_LoadFile(path.c_str(), scale, &mesh));
    return mesh;
}

VelmarKitMeshCounts countsOf(const VelmarMesh* mesh) {
    VelmarKitMeshCounts counts = {};
    EXPECT_SUCCESS(VelmarKit_Mesh_GetCounts(mesh, &counts));
    return counts;
}

std::vector<std::uint32_t> trianglesOf(const VelmarMesh* mesh) {
    const std::uint32_t* words = nullptr;
    std::uint64_t count = 0;
    EXPECT_SUCCESS(VelmarKit_Mesh_GetTriangles(mesh, &words, &count));
    std::vector<std::uint32_t> vertices;
    for (std::uint64_t i = 0; i < count; ++i)
        vertices.insert(vertices.end(), words + 7 * i, words + 7 * i + 3);
    return vertices;
}

std::vector<std::string> filesIn(const TempDir& dir) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(systemPath(dir.path())))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

// ---- meshes ----

TEST(KitMesh, NormalsAreSetAndReadWithoutACopy) {
    VelmarMesh* const mesh = newTriangle();
    constexpr float normals[] = {0, 0, 1, 0, 1, 0, 1, 0, 0};
    EXPECT_SUCCESS(VelmarKit_Mesh_SetNormals(mesh, 3, normals));
    const float* read = nullptr;
    std::uint64_t count = 0;
    EXPECT_SUCCESS(VelmarKit_Mesh_GetNormals(mesh, &read, &count));
    ASSERT_EQ(count, 3u);
    EXPECT_TRUE(std::equal(normals, normals + 9, read));
    expectRefused(VelmarKit_Mesh_SetNormals(mesh, 2, normals), "count isn't the number of vertices");
    constexpr float bad[] = {0, 0, 1, 0, 1, 0, 1, 0, std::numeric_limits<float>::infinity()};
    expectRefused(VelmarKit_Mesh_SetNormals(mesh, 3, bad), "isn't finite");
    EXPECT_SUCCESS(VelmarKit_Mesh_SetNormals(mesh, 0, nullptr));
    EXPECT_EQ(countsOf(mesh).normals, 0u);
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitMesh, UVSetsGivenOneAfterTheOtherAreInterleaved) {
    VelmarMesh* const mesh = newTriangle();
    constexpr float first[] = {1, 2, 3, 4, 5, 6};
    constexpr float second[] = {11, 12, 13, 14, 15, 16};
    const float* const sets[] = {first, second};
    EXPECT_SUCCESS(VelmarKit_Mesh_SetTextureCoordinates(mesh, 2, 3, sets));
    const float* pairs = nullptr;
    std::uint64_t count = 0;
    EXPECT_SUCCESS(VelmarKit_Mesh_GetTextureCoordinates(mesh, &pairs, &count));
    ASSERT_EQ(count, 6u);
    EXPECT_THAT(std::vector<float>(pairs, pairs + 12), testing::ElementsAre(1, 2, 11, 12, 3, 4, 13, 14, 5, 6, 15, 16));
    EXPECT_EQ(countsOf(mesh).uv_sets, 2u);
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitMesh, BoundsAreThoseOfTheVertices) {
    VelmarMesh* const mesh = newTriangle();
    float bounds[6];
    EXPECT_SUCCESS(VelmarKit_Mesh_GetBounds(mesh, bounds));
    EXPECT_THAT(bounds, testing::ElementsAre(0, 0, 0, 1, 1, 0));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

// ---- mesh files ----

TEST(KitMeshFiles, OBJIsLoadedWithScale) {
    const TempDir dir;
    writeFileBytes(dir.file("one.obj"), "v 0 0 0\nv 1 0 0\nv 0 2 0\nf 1 2 3\n");
    VelmarMesh* const mesh = loaded(dir.file("one.obj"), 10);
    EXPECT_EQ(nameOf(mesh), "one");
    const float* xyz = nullptr;
    EXPECT_SUCCESS(VelmarKit_Mesh_GetVertices(mesh, &xyz, nullptr));
    EXPECT_EQ(xyz[7], 20);
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitMeshFiles, PLYPolygonsAreWhole) {
    const TempDir dir;
    for (const std::string list : {"vertex_indices", "vertex_index"}) {
        writeFileBytes(dir.file("five.ply"),
                       "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\nproperty float z\n"
                       "property float nx\nproperty float ny\nproperty float nz\nproperty float u\nproperty float v\n"
                       "element face 3\nproperty list uchar int " +
                           list +
                           "\nend_header\n"
                           "0 0 0 0 0 2 0 0\n1 0 0 0 0 1 1 0\n2 1 0 0 0 1 1 1\n1 2 0 0 0 1 0.5 1\n0 1 0 0 0 1 0 1\n"
                           "5 0 1 2 3 4\n4 0 1 2 3\n3 0 1 2\n");
        VelmarMesh* const mesh = loaded(dir.file("five.ply"));
        EXPECT_THAT(trianglesOf(mesh), testing::ElementsAre(0, 1, 2, 0, 2, 3, 0, 3, 4, 0, 1, 2));
        const VelmarKitMeshCounts counts = countsOf(mesh);
        EXPECT_EQ(counts.quads, 1u);
        EXPECT_EQ(counts.normals, 5u);
        EXPECT_EQ(counts.uv_pairs, 5u);
        EXPECT_EQ(counts.uv_sets, 1u);
        EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
    }
}

TEST(KitMeshFiles, PLYFaceWithoutItsVertexIsAMeshError) {
    const TempDir dir;
    for (const std::string face : {"3 0 1 7", "3 0 1 -1"}) {
        writeFileBytes(dir.file("bad.ply"),
                       "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
                       "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
                       "end_header\n0 0 0\n1 0 0\n" +
                           face + "\n");
        VelmarMesh* mesh = nullptr;
        expectFailure(VelmarKit_Mesh_LoadFile(dir.file("bad.ply").c_str(), 1, &mesh), VELMARKIT_MESH_ERROR,
                      "PLY file has a face that refers to vertex");
        EXPECT_EQ(mesh, nullptr);
    }
}

TEST(KitMeshFiles, MissingAndUnknownFilesAreReported) {
    const TempDir dir;
    VelmarMesh* mesh = nullptr;
    for (const char* const name : {"no.obj", "no.ply", "no.stl", "no.vmmesh"})
        expectFailure(VelmarKit_Mesh_LoadFile(dir.file(name).c_str(), 1, &mesh), VELMARKIT_FILE_ERROR, name);
    expectFailure(VelmarKit_Mesh_LoadFile("image.png", 1, &mesh), VELMARKIT_MESH_ERROR, "Unsupported mesh format");
    expectRefused(VelmarKit_Mesh_LoadFile(nullptr, 1, &mesh), "path is null");
    expectRefused(VelmarKit_Mesh_LoadFile("", 1, &mesh), "path is empty");
}

TEST(KitMeshFiles, ModelHasTheMaterialsAndColoursOfItsFile) {
    const TempDir dir;
    writeFileBytes(dir.file("two.mtl"), "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n");
    writeFileBytes(dir.file("two.obj"),
                   "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 0 2 0\nusemtl blue\nf 1 2 3\nusemtl other\n"
                   "f 3 2 1\n");
    VelmarScene* const scene = newScene();
    VelmarModel* model = nullptr;
    EXPECT_SUCCESS(VelmarKit_Scene_LoadModel(scene, dir.file("two.obj").c_str(), 1, &model));
    std::uint64_t nodes = 0;
    std::uint64_t materials = 0;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNodeCount(scene, &nodes));
    EXPECT_EQ(nodes, 4u);
    EXPECT_SUCCESS(VelmarKit_Model_GetGeometry(model, nullptr, &materials));
    EXPECT_EQ(materials, 2u);
    VelmarMaterialNode* material = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_GetMaterial(model, 0, &material));
    EXPECT_EQ(nameOf(material), "blue");
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, dir.file("two.xml").c_str()));
    const std::string document = readFileBytes(dir.file("two.xml"));
    EXPECT_THAT(document, testing::HasSubstr("<rgb>0 0 1</rgb>"));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitMeshFiles, FileWhoseFacesNameTooManyMaterialsIsNoModel) {
    const TempDir dir;
    VelmarMesh* const mesh = newTriangle();
    constexpr std::uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 65536};
    EXPECT_SUCCESS(VelmarKit_Mesh_AddFaces(mesh, 1, face));
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));
    EXPECT_SUCCESS(VelmarKit_Mesh_WriteToFile(mesh, dir.file("a.vmmesh").c_str()));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
    VelmarScene* const scene = newScene();
    expectFailure(VelmarKit_Scene_LoadModel(scene, dir.file("a.vmmesh").c_str(), 1, nullptr), VELMARKIT_MESH_ERROR,
                  "A face names material 65537");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitMeshFiles, FailedModelLeavesTheSceneAsItWas) {
    VelmarScene* const scene = newScene();
    EXPECT_EQ(VelmarKit_Scene_LoadModel(scene, "no_such_file.obj", 1, nullptr), VELMARKIT_FILE_ERROR);
    std::uint64_t nodes = 1;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNodeCount(scene, &nodes));
    EXPECT_EQ(nodes, 0u);
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

// ---- nodes in scenes ----

TEST(KitScene, RemovedNodeIsTheHostsAgainAndCanBeAddedElsewhere) {
    VelmarScene* const scene = newScene();
    VelmarScene* const other = newScene();
    VelmarMesh* const mesh = newTriangle();
    EXPECT_SUCCESS(VelmarKit_create_plane(scene));
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, mesh));
    EXPECT_SUCCESS(VelmarKit_Scene_RemoveNode(scene, mesh));
    expectRefused(VelmarKit_Scene_RemoveNode(scene, mesh), "isn't in this scene");
    std::uint64_t nodes = 0;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNodeCount(scene, &nodes));
    EXPECT_EQ(nodes, 1u);
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(other, mesh));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
    EXPECT_EQ(nameOf(mesh), "Triangle");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(other));
}

// ---- documents ----

TEST(KitDocument, OfAnyPathNamesItsMeshesAsSeenFromItself) {
    const TempDir dir;
    const std::filesystem::path former = std::filesystem::current_path();
    std::filesystem::current_path(systemPath(dir.path()));
    std::filesystem::create_directory("folder");
    VelmarScene* const scene = newScene();
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, newTriangle()));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, "folder/scene.xml"));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, "scene.xml"));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, dir.file("absolute.xml").c_str()));
    VelmarScene_WriteToXML(scene, "bare.xml");
    const std::string document = readFileBytes(dir.file("scene.xml"));
    EXPECT_EQ(readFileBytes(dir.file("folder/scene.xml")), document);
    std::string bare = readFileBytes(dir.file("bare.xml"));
    bare.replace(bare.find("bare_meshes"), 4, "scene");
    EXPECT_EQ(bare, document) << "as the other library writes it without a folder";
    EXPECT_THAT(readFileBytes(dir.file("absolute.xml")), testing::HasSubstr("<path>absolute_meshes\\mesh_"));
    EXPECT_TRUE(std::filesystem::is_directory("folder/scene_meshes"));
    std::filesystem::current_path(former);
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitDocument, ThatCantBeOpenedIsReported) {
    const TempDir dir;
    VelmarScene* const scene = newScene();
    const std::string path = dir.file("missing\\scene.xml");
    expectFailure(VelmarKit_Scene_WriteToXML(scene, path.c_str()), VELMARKIT_FILE_ERROR, path.c_str());
    EXPECT_THAT(filesIn(dir), testing::IsEmpty());
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitDocument, FailureLeavesTheOldDocumentAndNoPart) {
    const TempDir dir;
    writeFileBytes(dir.file("scene.xml"), "the old one");
    VelmarScene* const scene = newScene();
    // A name that only VelmarAPI takes.
    VelmarScene_AddMesh(scene, VelmarMesh_Create("bad \xff name"));
    expectFailure(VelmarKit_Scene_WriteToXML(scene, dir.file("scene.xml").c_str()), VELMARKIT_DOCUMENT_ERROR,
                  "isn't UTF-8");
    EXPECT_EQ(readFileBytes(dir.file("scene.xml")), "the old one");
    EXPECT_THAT(filesIn(dir), testing::ElementsAre("scene.xml"));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitDocument, MeshFilesAndTextsAreReportedToo) {
    const TempDir dir;
    VelmarMesh* const mesh = newTriangle();
    const std::string missing = dir.file("missing\\mesh.vmmesh");
    expectFailure(VelmarKit_Mesh_WriteToFile(mesh, missing.c_str()), VELMARKIT_FILE_ERROR, "Failed to open file");
    expectFailure(VelmarKit_write_mesh_to_file(mesh, missing.c_str()), VELMARKIT_FILE_ERROR, "Failed to open file");
    EXPECT_SUCCESS(VelmarKit_Mesh_WriteToFile(mesh, dir.file("mesh.vmmesh").c_str()));
    EXPECT_SUCCESS(VelmarKit_write_mesh_to_file(mesh, dir.file("mesh.txt").c_str()));
    EXPECT_THAT(filesIn(dir), testing::ElementsAre("mesh.txt", "mesh.vmmesh"));
    VelmarMesh* const again = loaded(dir.file("mesh.vmmesh"));
    EXPECT_EQ(countsOf(again).triangles, 1u);
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(again));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}
