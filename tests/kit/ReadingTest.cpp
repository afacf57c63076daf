#include "tests/kit/Support.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <string>

using namespace TestSupport;

namespace {

/// A scene of one node of each kind, written to `path`.
void writeScene(const std::string& path) {
    VelmarScene* const scene = newScene();
    VelmarRenderSettings* settings = nullptr;
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Create(&settings));
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Width(settings, 640));
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Metropolis(settings, 0));
    EXPECT_SUCCESS(VelmarKit_Scene_AddRenderSettings(scene, settings));
    VelmarCamera* camera = nullptr;
    EXPECT_SUCCESS(VelmarKit_Camera_Create(&camera));
    EXPECT_SUCCESS(VelmarKit_Camera_SetLensRadius(camera, 0.25));
    EXPECT_SUCCESS(VelmarKit_Camera_SetPosition(camera, 1, 2, 3));
    EXPECT_SUCCESS(VelmarKit_Scene_AddCamera(scene, camera));
    VelmarTonemapping* tonemapping = nullptr;
    EXPECT_SUCCESS(VelmarKit_Tonemapping_Create(&tonemapping));
    EXPECT_SUCCESS(VelmarKit_Scene_AddTonemapping(scene, tonemapping));
    EXPECT_SUCCESS(VelmarKit_create_sunsky(scene));
    VelmarMaterialNode* material = nullptr;
    EXPECT_SUCCESS(VelmarKit_Material_CreateNode("Red", &material));
    EXPECT_SUCCESS(VelmarKit_Scene_AddMaterial(scene, material));
    VelmarMesh* const mesh = newTriangle();
    EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, mesh));
    VelmarModel* model = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_Create("Model", mesh, &model));
    EXPECT_SUCCESS(VelmarKit_Model_SetMaterials(model, 1, &material));
    EXPECT_SUCCESS(VelmarKit_Scene_AddModel(scene, model));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, path.c_str()));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

VelmarScene* readScene(const std::string& path) {
    VelmarScene* scene = nullptr;
    EXPECT_SUCCESS(VelmarKit_Scene_Read(path.c_str(), &scene));
    return scene;
}

/// The node at `index`, which is of the kind.
template <class Handle>
Handle* nodeAt(const VelmarScene* scene, std::uint64_t index, std::int32_t wanted) {
    void* node = nullptr;
    std::int32_t kind = -1;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNode(scene, index, &node, &kind));
    EXPECT_EQ(kind, wanted);
    return static_cast<Handle*>(node);
}

class KitReading : public testing::Test {
  protected:
    KitReading() { writeScene(path); }

    TempDir dir;
    std::string path = dir.file("scene.xml");
};

} // namespace

TEST_F(KitReading, NodesAreThereInTheirOrder) {
    VelmarScene* const scene = readScene(path);
    std::uint64_t count = 0;
    EXPECT_SUCCESS(VelmarKit_Scene_GetNodeCount(scene, &count));
    EXPECT_EQ(count, 7u);
    constexpr std::int32_t kinds[] = {
        VELMARKIT_NODE_RENDER_SETTINGS, VELMARKIT_NODE_CAMERA, VELMARKIT_NODE_TONEMAPPING, VELMARKIT_NODE_BACKGROUND,
        VELMARKIT_NODE_MATERIAL,        VELMARKIT_NODE_MESH,   VELMARKIT_NODE_MODEL};
    for (std::uint64_t i = 0; i < count; ++i)
        nodeAt<void>(scene, i, kinds[i]);
    EXPECT_EQ(nameOf(nodeAt<void>(scene, 4, VELMARKIT_NODE_MATERIAL)), "Red");
    expectRefused(VelmarKit_Scene_GetNode(scene, count, nullptr, nullptr), "names a node that the scene doesn't have");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST_F(KitReading, GettersAndSettersWorkOnNodesOfADocument) {
    VelmarScene* const scene = readScene(path);
    auto* const camera = nodeAt<VelmarCamera>(scene, 1, VELMARKIT_NODE_CAMERA);
    double radius = 0;
    EXPECT_SUCCESS(VelmarKit_Camera_GetLensRadius(camera, &radius));
    EXPECT_EQ(radius, 0.25);
    EXPECT_SUCCESS(VelmarKit_Camera_SetLensRadius(camera, 0.5));
    auto* const model = nodeAt<VelmarModel>(scene, 6, VELMARKIT_NODE_MODEL);
    VelmarMesh* mesh = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_GetGeometry(model, &mesh, nullptr));
    EXPECT_EQ(mesh, nodeAt<VelmarMesh>(scene, 5, VELMARKIT_NODE_MESH));
    VelmarKitMeshCounts counts = {};
    EXPECT_SUCCESS(VelmarKit_Mesh_GetCounts(mesh, &counts));
    EXPECT_EQ(counts.triangles, 1u) << "the mesh file was read";
    constexpr float rotation[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    constexpr float position[] = {4, 5, 6};
    EXPECT_SUCCESS(VelmarKit_Model_SetTransformation(model, rotation, position, 0));
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, path.c_str()));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
    const std::string document = readFileBytes(path);
    EXPECT_THAT(document, testing::HasSubstr("<aperture_radius>0.5</aperture_radius>"));
    EXPECT_THAT(document, testing::HasSubstr("<pos>4 5 6</pos>"));
}

TEST_F(KitReading, UnchangedSceneIsWrittenAgainToTheByte) {
    const std::string document = readFileBytes(path);
    VelmarScene* const scene = readScene(path);
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, path.c_str()));
    EXPECT_EQ(readFileBytes(path), document);
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST_F(KitReading, SceneWrittenElsewhereHasItsMeshesThere) {
    const TempDir other;
    VelmarScene* const scene = readScene(path);
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, other.file("copy.xml").c_str()));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
    std::filesystem::remove_all(systemPath(dir.file("scene_meshes")));
    VelmarScene* const copy = readScene(other.file("copy.xml"));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(copy));
}

TEST_F(KitReading, OptionsOfARenderThatAreSetAreKnown) {
    VelmarScene* const scene = readScene(path);
    auto* const settings = nodeAt<VelmarRenderSettings>(scene, 0, VELMARKIT_NODE_RENDER_SETTINGS);
    const auto isSet = [&](const char* option) {
        VelmarBool is_set = 2;
        EXPECT_SUCCESS(VelmarKit_RenderSettings_IsSet(settings, option, &is_set));
        return is_set;
    };
    EXPECT_EQ(isSet("width"), 1);
    EXPECT_EQ(isSet("metropolis"), 1) << "false is set too";
    EXPECT_EQ(isSet("height"), 0);
    expectRefused(VelmarKit_RenderSettings_IsSet(settings, "depth", nullptr), "isn't the element of an option");
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

TEST_F(KitReading, FaultOfADocumentHasLineAndColumn) {
    VelmarScene* scene = nullptr;
    writeFileBytes(path, "<scene>\n  <camera>\n    <uid>x</uid></camera></scene>\n");
    expectFailure(VelmarKit_Scene_Read(path.c_str(), &scene), VELMARKIT_DOCUMENT_ERROR,
                  (path + ":3:5: error: 'x' is no whole number").c_str());
    EXPECT_EQ(scene, nullptr);
}

TEST_F(KitReading, MissingFilesAreReported) {
    VelmarScene* scene = nullptr;
    expectFailure(VelmarKit_Scene_Read(dir.file("none.xml").c_str(), &scene), VELMARKIT_FILE_ERROR, "none.xml");
    std::filesystem::remove_all(systemPath(dir.file("scene_meshes")));
    expectFailure(VelmarKit_Scene_Read(path.c_str(), &scene), VELMARKIT_FILE_ERROR, "scene_meshes");
    EXPECT_EQ(scene, nullptr);
    expectRefused(VelmarKit_Scene_Read(nullptr, &scene), "path is null");
    expectRefused(VelmarKit_Scene_Read(path.c_str(), nullptr), "scene is null");
}

TEST_F(KitReading, NodesOfOtherClassesAreKept) {
    const std::string sphere =
        "<sphere><uid>3</uid><name>s</name><radius>1</radius><material_uid>4294967295</material_uid></sphere>";
    writeFileBytes(path, "<scene>" + sphere + "</scene>");
    VelmarScene* const scene = readScene(path);
    EXPECT_EQ(nameOf(nodeAt<void>(scene, 0, VELMARKIT_NODE_OTHER)), "s");
    EXPECT_SUCCESS(VelmarKit_Scene_WriteToXML(scene, path.c_str()));
    EXPECT_THAT(readFileBytes(path), testing::HasSubstr("<sphere>"));
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}
