#include "tests/faults/ExportHost.h"

#include "api/Handles.h"
#include "api/SharedFunctions.h"
#include "scene/Material.h"
#include "scene/XMLPrimitives.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <iostream>
#include <vector>

namespace Faults {

using namespace Velmar;
using Object = Velmar::ThreadSafeRefCounted;

namespace {

constexpr float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
constexpr std::uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};
constexpr float no_rotation[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

VelmarMesh* makeTriangle(const char* name) {
    VelmarMesh* const mesh = VelmarMesh_Create(name);
    VelmarMesh_AddVertices(mesh, 3, corners);
    VelmarMesh_AddFaces(mesh, 1, face);
    VelmarMesh_Build(mesh);
    return mesh;
}

/// Not by the export, each of whose calls leaves a node for the life of the process.
VelmarRenderSettings* makeSettings() {
    auto* const settings = toHandle<VelmarRenderSettings>(new SceneNodeRenderSettings);
    VelmarRenderSettings_Width(settings, 8);
    VelmarRenderSettings_Height(settings, 6);
    VelmarRenderSettings_SuperSampleFactor(settings, 1);
    return settings;
}

std::string describeNode(const SceneNode& node, const XMLWriteOptions& options) {
    const std::string element = TestSupport::textOf([&](OStream& stream) { node.writeXML(stream, 0, options); });
    return "in a scene " + std::to_string(node.getParent() != nullptr) + "\n" + element;
}

std::string describeMesh(const Mesh& mesh) {
    std::string text = std::to_string(mesh.checksum());
    for (const std::size_t size :
         {std::size_t{mesh.num_uv_mappings}, mesh.used_materials.size(), mesh.verts.size(), mesh.uv_pairs.size(),
          mesh.triangles.size(), mesh.quads.size(), std::size_t{mesh.num_materials_referenced}})
        text += " " + std::to_string(size);
    return text + " " + std::to_string(mesh.aabb_max.x) + "\n";
}

} // namespace

SilentStreams::SilentStreams() : out(std::cout.rdbuf(&nowhere)), err(std::cerr.rdbuf(&nowhere)) {}

SilentStreams::~SilentStreams() {
    std::cout.rdbuf(out);
    std::cerr.rdbuf(err);
}

ExportHost::ExportHost(const Folders& folders_, Stage stage_)
    : path(folders_.files.file("a file with a rather long name")), folders(folders_), stage(stage_) {
    empty_scene = VelmarScene_Create();
    other_scene = VelmarScene_Create();
    VelmarScene_AddRenderSettings(other_scene, makeSettings());
    mesh = makeTriangle("a mesh that is in no scene");
    material_node = VelmarMaterial_CreateNode("a material node that is in no scene");
    material = VelmarMaterial_CreateDiffuse("a material that is in no node", 0.25, 0.5, 0.75);
    tonemapping = VelmarTonemapping_Create();
    settings = makeSettings();
    camera = VelmarCamera_Create();
    background = VelmarBackground_CreateUniform(0.5, 0.5, 0.5, 1);
    new_context = VelmarContext_Create();
    background_record = new (sdkMalloc(sizeof(void*))) Reference<SceneNode>(new SceneNodeTonemapping);

    scene = VelmarScene_Create();
    VelmarScene_AddRenderSettings(scene, makeSettings());
    scene_mesh = makeTriangle("a mesh that is in a scene");
    VelmarScene_AddMesh(scene, scene_mesh);
    scene_material_node = VelmarMaterial_CreateNode("a material node that is in a scene");
    VelmarScene_AddMaterial(scene, scene_material_node);
    // The fourth child and the fourth entry in one bucket of the table of UIDs: the next child makes the list grow.
    VelmarScene_AddTonemapping(scene, VelmarTonemapping_Create());

    model = VelmarModel_Create("a model that is in no scene", scene_mesh);
    VelmarModel_SetMaterials(model, 1, &scene_material_node);

    if (stage == Stage::without_renderer) return;
    context = VelmarContext_Create();
    EXPECT_EQ(VelmarContext_Initialize(context), 0);
    if (stage == Stage::with_context) return;
    renderer = VelmarRenderer_Create(context);
    if (stage == Stage::with_renderer) return;
    VelmarRenderer_InitializeWithScene(renderer, context, scene);
}

ExportHost::~ExportHost() {
    useEveryHandle();
    deleteEveryHandle();
}

std::string ExportHost::describe() const {
    XMLWriteOptions options;
    options.meshes_dir = toVelmarString(folders.files.path());
    std::string text;
    const auto add = [&](const char* name, const void* handle) {
        if (handle == nullptr) return false;
        const auto count = static_cast<const Object*>(handle)->getRefCount();
        text += std::string(name) + " held " + std::to_string(count) + " times\n";
        return true;
    };
    const auto addNode = [&](const char* name, void* handle) {
        if (add(name, handle)) text += describeNode(*static_cast<const SceneNode*>(handle), options);
    };
    addNode("empty scene", empty_scene);
    addNode("other scene", other_scene);
    addNode("mesh", mesh);
    if (mesh != nullptr) text += describeMesh(*fromHandle(mesh)->mesh);
    addNode("material node", material_node);
    if (add("material", material)) text += fromHandle(material)->name.view();
    addNode("model", model);
    addNode("tone mapping", tonemapping);
    addNode("settings", settings);
    addNode("camera", camera);
    addNode("background", background);
    add("new context", new_context);
    if (background_record != nullptr) text += "background record\n";
    addNode("scene", scene);
    if (scene != nullptr) text += std::to_string(fromHandle(scene)->getNextUID());
    add("mesh of the scene", scene == nullptr ? nullptr : scene_mesh);
    add("material node of the scene", scene == nullptr ? nullptr : scene_material_node);
    add("context", context);
    add("renderer", renderer);
    add("made", made);
    return text;
}

void ExportHost::useEveryHandle() {
    if (mesh != nullptr) VelmarMesh_Build(mesh);
    if (camera != nullptr) VelmarCamera_SetPosition(camera, 1, 2, 3);
    if (tonemapping != nullptr) VelmarTonemapping_SetResponseFunctionPath(tonemapping, "a file of a film's response");
    if (settings != nullptr) VelmarRenderSettings_Width(settings, 16);
    if (model != nullptr) VelmarModel_SetTransformation(model, no_rotation, corners, 0);
    if (material_node != nullptr && material != nullptr) VelmarMaterial_AddToNode(material_node, material);
    if (stage != Stage::without_renderer) {
        EXPECT_EQ(VelmarContext_Initialize(new_context), 0);
    }
    for (void* const node :
         std::initializer_list<void*>{mesh, material_node, tonemapping, settings, camera, background})
        if (empty_scene != nullptr && node != nullptr)
            VelmarScene_AddModel(empty_scene, static_cast<VelmarModel*>(node));
    if (stage == Stage::rendering && renderer != nullptr) {
        VelmarRenderer_Start(renderer);
        VelmarRenderer_Stop(renderer);
    }
    describe();
}

/// In an order that deletes holders before what they hold.
void ExportHost::deleteEveryHandle() {
    std::vector<Object*> objects;
    for (void* const handle :
         std::initializer_list<void*>{made, renderer, empty_scene, other_scene, scene, model, material_node, material,
                                      mesh, tonemapping, settings, camera, background, context, new_context}) {
        if (handle == nullptr) continue;
        objects.push_back(static_cast<Object*>(handle));
        // The last of its holders doesn't take it along.
        objects.back()->increment();
    }
    for (Object* const object : objects) {
        EXPECT_EQ(object->decrement(), 1) << "somebody still holds it";
        velmarDeleteHandle(object);
    }
    VelmarBackground_Delete(background_record);
}

} // namespace Faults
