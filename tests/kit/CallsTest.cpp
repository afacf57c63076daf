#include "velmarexceptions.h"

#include "tests/kit/Support.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <thread>

using namespace TestSupport;

TEST(KitCalls, ResultComesThroughTheLastArgument) {
    VelmarMesh* const mesh = newTriangle();
    uint32_t materials = 77;
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, &materials));
    EXPECT_EQ(materials, 1u);
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, ResultOfAFailureIsUntouched) {
    VelmarMesh* mesh = reinterpret_cast<VelmarMesh*>(1);
    expectRefused(VelmarKit_Mesh_Create(nullptr, &mesh), "name is null");
    EXPECT_EQ(mesh, reinterpret_cast<VelmarMesh*>(1));
}

TEST(KitCalls, NewObjectNeedsAPlace) {
    expectRefused(VelmarKit_Scene_Create(nullptr), "result is null");
}

TEST(KitCalls, NullHandleIsRefused) {
    expectRefused(VelmarKit_Camera_SetUp(nullptr, 0, 0, 1), "camera is null");
    VelmarScene* const scene = newScene();
    expectRefused(VelmarKit_Scene_AddMesh(scene, nullptr), "mesh is null");
    expectRefused(VelmarKit_create_plane(nullptr), "scene is null");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitCalls, DeletesAcceptNull) {
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(nullptr));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(nullptr));
    EXPECT_SUCCESS(VelmarKit_Background_Delete(nullptr));
    EXPECT_SUCCESS(VelmarKit_Node_Delete(nullptr));
}

TEST(KitCalls, HandleOfAnotherKindIsRefused) {
    VelmarMesh* const mesh = newMesh();
    expectRefused(VelmarKit_Camera_SetUp(reinterpret_cast<VelmarCamera*>(mesh), 0, 0, 1), "camera isn't a camera");
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, HandleWhoseCountCantBeOneIsRefused) {
    // Memory that was freed and filled again: of the object only the reference count is looked at, its second word.
    std::array<std::int64_t, 64> object = {};
    auto* const camera = reinterpret_cast<VelmarCamera*>(object.data());
    for (const std::int64_t count : {std::int64_t{-1}, std::int64_t{0x5555555555555555}, std::int64_t{1} << 41}) {
        object[1] = count;
        expectRefused(VelmarKit_Camera_SetUp(camera, 0, 0, 1), "camera was deleted");
    }
}

TEST(KitCalls, NegativeCountsAndNullArraysAreRefused) {
    VelmarMesh* const mesh = newMesh();
    constexpr float corners[] = {0, 0, 0};
    expectRefused(VelmarKit_Mesh_AddVertices(mesh, -1, corners), "count is negative");
    expectRefused(VelmarKit_Mesh_AddVertices(mesh, 1, nullptr), "xyz is null");
    expectRefused(VelmarKit_Mesh_AddFaces(mesh, 1, nullptr), "words is null");
    EXPECT_SUCCESS(VelmarKit_Mesh_AddVertices(mesh, 0, nullptr));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, NamesThatADocumentCantHoldAreRefused) {
    VelmarMesh* mesh = nullptr;
    for (const char* const name : {"\xff", "a\x01z", "\xed\xa0\x80", "\xc0\x80", "\xef\xbf\xbf", "\xf4\x90\x80\x80"})
        expectRefused(VelmarKit_Mesh_Create(name, &mesh), "name isn't UTF-8");
    for (const char* const name : {"", "plain", "\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "tab\t"}) {
        EXPECT_SUCCESS(VelmarKit_Mesh_Create(name, &mesh));
        EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
    }
}

TEST(KitCalls, KeyFrameThatIsntThereIsRefused) {
    VelmarModel* model = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_Create("Model", newMesh(), &model));
    constexpr float numbers[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    expectRefused(VelmarKit_Model_SetTransformation(model, numbers, numbers, 1), "key frame");
    EXPECT_SUCCESS(VelmarKit_Model_SetTransformation(model, numbers, numbers, -1));
    EXPECT_SUCCESS(VelmarKit_Model_Delete(model));
}

TEST(KitCalls, OwnedObjectIsNotDeleted) {
    VelmarScene* const scene = newScene();
    VelmarMesh* const mesh = newMesh();
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, mesh));
    expectRefused(VelmarKit_Mesh_Delete(mesh), "belongs to another one");
    EXPECT_EQ(nameOf(mesh), "Mesh");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST(KitCalls, RetainedNodeOutlivesItsScene) {
    VelmarScene* const scene = newScene();
    VelmarMesh* const mesh = newMesh();
    EXPECT_SUCCESS(VelmarKit_Node_Retain(mesh));
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, mesh));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
    EXPECT_EQ(nameOf(mesh), "Mesh");
    EXPECT_SUCCESS(VelmarKit_Node_Release(mesh));
}

TEST(KitCalls, ReleaseNeedsARetain) {
    EXPECT_SUCCESS(VelmarKit_Node_Release(nullptr));
    expectRefused(VelmarKit_Node_Retain(nullptr), "node is null");
    VelmarMesh* const mesh = newMesh();
    expectRefused(VelmarKit_Node_Release(mesh), "isn't held");
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, MeshFailureHasItsStatusAndTheFullText) {
    constexpr float pairs[] = {0, 0, 1, 0, 1, 1};
    VelmarMesh* const mesh = newMesh();
    EXPECT_SUCCESS(VelmarKit_Mesh_AddTextureCoordinates(mesh, 1, pairs));
    EXPECT_SUCCESS(VelmarKit_Mesh_AddTextureCoordinates(mesh, 2, pairs));
    EXPECT_EQ(VelmarKit_Mesh_Build(mesh, nullptr), VELMARKIT_MESH_ERROR);
    EXPECT_STREQ(VelmarKit_LastError(), "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  "
                                        "uv_pairs.size(): 3, num_uv_mappings: 2");
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, FacesReferToWhatIsThere) {
    constexpr float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    constexpr uint32_t triangle[] = {0, 0, 1, 3, 0, 0, 0, 0};
    constexpr uint32_t quad[] = {1, 0, 1, 2, 0, 0, 0, 0, 3, 0};
    VelmarMesh* mesh = newMesh();
    EXPECT_SUCCESS(VelmarKit_Mesh_AddVertices(mesh, 3, corners));
    EXPECT_SUCCESS(VelmarKit_Mesh_AddFaces(mesh, 1, triangle));
    expectFailure(VelmarKit_Mesh_Build(mesh, nullptr), VELMARKIT_MESH_ERROR,
                  "Mesh 'Mesh': Triangle vertex index is out of bounds. (vertex index=3)");
    // The vertex may be added afterwards.
    EXPECT_SUCCESS(VelmarKit_Mesh_AddVertices(mesh, 1, corners));
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));

    // Without texture coordinates their indices mean nothing.
    EXPECT_SUCCESS(VelmarKit_Mesh_AddFaces(mesh, 1, quad));
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));
    const float* const set = corners;
    EXPECT_SUCCESS(VelmarKit_Mesh_SetTextureCoordinates(mesh, 1, 3, &set));
    expectFailure(VelmarKit_Mesh_Build(mesh, nullptr), VELMARKIT_MESH_ERROR,
                  "Quad uv index is out of bounds. (uv index=3)");
    EXPECT_SUCCESS(VelmarKit_Mesh_SetTextureCoordinates(mesh, 1, 4, &set));
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(mesh));
}

TEST(KitCalls, EachThreadHasItsOwnText) {
    expectRefused(VelmarKit_Camera_SetUp(nullptr, 0, 0, 1), "camera is null");
    std::thread other([] {
        EXPECT_STREQ(VelmarKit_LastError(), "");
        expectRefused(VelmarKit_create_plane(nullptr), "scene is null");
    });
    other.join();
    EXPECT_STREQ(VelmarKit_LastError(), "camera is null");
}

TEST(KitCalls, ContextWithoutALibraryFailsWithItsText) {
    const TestSupport::TempDir without_library;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(TestSupport::systemPath(without_library.path()));
    VelmarContext* context = nullptr;
    EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
    int result = 5;
    expectFailure(VelmarKit_Context_Initialize(context, &result), VELMARKIT_RENDERER_ERROR,
                  "Failed to load Velmar SDK DLL from 'vs2017_64'");
    EXPECT_EQ(result, 5);
    VelmarRenderer* renderer = nullptr;
    expectRefused(VelmarKit_Renderer_Create(context, &renderer), "context has no renderer library");
    expectRefused(VelmarKit_Renderer_UpdateScene(nullptr, 1, 2.0), "renderer is null");
    EXPECT_SUCCESS(VelmarKit_Context_Delete(context));
    std::filesystem::current_path(before);
}

TEST(KitCalls, LinesReachTheCallback) {
    std::string lines;
    const auto take = [](void* user, int32_t is_error, const char* line) {
        *static_cast<std::string*>(user) += (is_error != 0 ? "error: " : "output: ") + std::string(line) + "\n";
    };
    EXPECT_SUCCESS(VelmarKit_SetLineCallback(take, &lines));
    VelmarModel* model = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_Create("Model", newMesh(), &model));
    EXPECT_SUCCESS(VelmarKit_Model_SetMaterials(model, 0, nullptr));
    EXPECT_SUCCESS(VelmarKit_SetLineCallback(nullptr, nullptr));
    EXPECT_EQ(lines, "output: Num materials: 0\n");
    EXPECT_SUCCESS(VelmarKit_Model_Delete(model));
}

TEST(KitCalls, StatusesHaveNames) {
    EXPECT_STREQ(VelmarKit_StatusName(VELMARKIT_OUT_OF_MEMORY), "out of memory");
    EXPECT_STREQ(VelmarKit_StatusName(1000), "unknown status");
    EXPECT_STREQ(VelmarKit_Version(), VELMAR_VERSION);
}

// ---- with VelmarAPI in the same process ----

TEST(KitWithVelmarAPI, HandlesOfEitherLibraryWorkInTheOther) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarMesh* const mesh = newTriangle();
    VelmarScene_AddMesh(scene, mesh);
    VelmarCamera* const camera = VelmarCamera_Create();
    EXPECT_SUCCESS(VelmarKit_Scene_AddCamera(scene, camera));
    EXPECT_SUCCESS(VelmarKit_Camera_SetUp(camera, 0, 1, 0));
    uint64_t count = 0;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNodeCount(scene, &count));
    EXPECT_EQ(count, 2u);
    VelmarScene_Delete(scene);
}

TEST(KitWithVelmarAPI, ObjectOfOneLibraryIsDeletedByTheOther) {
    VelmarMesh_Delete(newTriangle());
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(VelmarMesh_Create("Mesh")));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(VelmarScene_Create()));
}
