#include "import/MeshImport.h"
#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include "api/Handles.h"
#include "api/MaterialValues.h"
#include "mesh/MeshBuilder.h"
#include "scene/Material.h"
#include "scene/Rotations.h"

#include <algorithm>
#include <cmath>
#include <string>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

constexpr Vec3f default_colour = {0.8F, 0.8F, 0.8F};

ImportedMesh import(const char* path, float scale) {
    checkPath(path, "path");
    if (!std::isfinite(scale)) refuse("scale", " isn't finite");
    ImportedMesh imported = importMesh(path, scale);
    // The reader of vmmesh files leaves that open.
    MeshBuilder::checkFaces(*imported.mesh);
    return imported;
}

/// The file's name without folder and extension.
String nameAfter(const char* path) {
    std::string_view name(path);
    name.remove_prefix(name.find_last_of("/\\") + 1);
    name = name.substr(0, name.find_last_of('.'));
    return String(isDocumentText(name) ? name : std::string_view("Mesh"));
}

NewObject<SceneNodeMesh> meshNode(const char* path, const Reference<Mesh>& mesh) {
    NewObject<SceneNodeMesh> node(new SceneNodeMesh);
    node->mesh = mesh;
    node->setName(nameAfter(path));
    // As of a mesh that a host creates.
    node->view_dependent_subdivision = false;
    node->max_num_subdivisions = 0;
    return node;
}

Reference<SceneNodeMaterial> materialNode(const String& name, const ImportedMesh& imported) {
    const auto& colours = imported.colours;
    const auto found = std::find_if(colours.begin(), colours.end(),
                                    [&](const MaterialColour& colour) { return colour.name == name.view(); });
    const Vec3f colour = found == colours.end() ? default_colour : found->colour;
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo =
        constantColour(static_cast<double>(colour.x), static_cast<double>(colour.y), static_cast<double>(colour.z));
    const Reference<SceneNodeMaterial> node(new SceneNodeMaterial);
    node->material = material.getPointer();
    node->setName(name);
    return node;
}

/// One for each material index of the faces.
Vector<Reference<SceneNodeMaterial>> materialNodes(const ImportedMesh& imported) {
    const Mesh& mesh = *imported.mesh;
    Vector<Reference<SceneNodeMaterial>> nodes;
    const std::size_t count = std::max<std::size_t>(mesh.num_materials_referenced, mesh.used_materials.size());
    // A damaged file's greatest index may be anything.
    constexpr std::size_t max_materials = 65536;
    if (count > max_materials) throw KitFailure{VELMARKIT_MESH_ERROR, "A face names material " + std::to_string(count)};
    for (std::size_t i = 0; i < count; ++i) {
        const bool is_named = i < mesh.used_materials.size() && isDocumentText(mesh.used_materials[i].view());
        nodes.push_back(materialNode(is_named ? mesh.used_materials[i] : String("Default"), imported));
    }
    return nodes;
}

} // namespace

extern "C" {

int32_t VelmarKit_Mesh_LoadFile(const char* path, float scale, VelmarMesh** mesh) {
    return guarded(Subject::mesh, [&] {
        checkPointer(mesh, "mesh");
        const Reference<Mesh> loaded = import(path, scale).mesh;
        NewObject<SceneNodeMesh> node = meshNode(path, loaded);
        *mesh = toHandle<VelmarMesh>(node.release());
    });
}

int32_t VelmarKit_Scene_LoadModel(VelmarScene* scene, const char* path, float scale, VelmarModel** model) {
    return guarded(Subject::mesh, [&] {
        SceneNodeRoot& root = objectOf(scene, "scene");
        const ImportedMesh imported = import(path, scale);
        const Reference<SceneNodeMesh> mesh(meshNode(path, imported.mesh).release());
        const Vector<Reference<SceneNodeMaterial>> materials = materialNodes(imported);
        const Reference<SceneNodeModel> node(new SceneNodeModel);
        node->setName(mesh->getName());
        node->keyframes.push_back(KeyFrame());
        node->rotation = new MatrixRotation;
        node->setMaterials(materials);

        // Nothing fails from here on.
        root.reserveNewChildren(materials.size() + 2);
        root.addChildNode(mesh);
        for (const Reference<SceneNodeMaterial>& material : materials)
            root.addChildNode(material);
        // By the UID that the mesh has now.
        node->setGeometry(mesh);
        root.addChildNode(node);
        store(model, toHandle<VelmarModel>(node.getPointer()));
    });
}

} // extern "C"
