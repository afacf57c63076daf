#include "api/Handles.h"
#include "api/MaterialValues.h"
#include "scene/Material.h"
#include "scene/Rotations.h"
#include "scene/nodes/SceneNodeSphere.h"

using namespace Velmar;

namespace {

/// A mesh node with one quad of half-size `half_size` at the height `z`.
Reference<SceneNodeMesh> squareMeshNode(float half_size, float z) {
    const Reference<SceneNodeMesh> node(new SceneNodeMesh);
    node->mesh = new Mesh;
    Mesh& mesh = *node->mesh;
    mesh.quads.push_back({{0, 1, 2, 3}, {0, 0, 0, 0}, 0});
    mesh.verts.push_back({-half_size, -half_size, z});
    mesh.verts.push_back({-half_size, half_size, z});
    mesh.verts.push_back({half_size, half_size, z});
    mesh.verts.push_back({half_size, -half_size, z});
    mesh.build();
    return node;
}

KeyFrame keyFrameAt(const Vec3d& pos) {
    KeyFrame frame;
    frame.pos = pos;
    return frame;
}

} // namespace

void velmar_create_default_material(VelmarScene* scene) {
    fromHandle(scene)->addChildNode(greyMaterialNode("Default"));
}

void velmar_create_sunsky(VelmarScene* scene) {
    const Reference<SceneNodeBackgroundSettings> node(new SceneNodeBackgroundSettings);
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->model = "captured-simulation";
    material->sundir = {1.0, 1.0, 1.0};
    node->background_material = material.getPointer();
    fromHandle(scene)->addChildNode(node);
}

void velmar_create_plane(VelmarScene* scene) {
    fromHandle(scene)->addChildNode(squareMeshNode(1.0f, 0.0f));
}

void VelmarScene_AddGroundPlane(VelmarScene* scene, double z, double half_size) {
    SceneNodeRoot& root = *fromHandle(scene);

    // It isn't added to the scene and is destroyed at the end: the quad below is the ground.
    const Reference<SceneNodeSphere> sphere(new SceneNodeSphere);
    sphere->radius = z + 10000.0;
    sphere->keyframes.push_back(keyFrameAt({0.0, 0.0, -10000.0}));

    const Reference<SceneNodeMesh> mesh = squareMeshNode(static_cast<float>(half_size), static_cast<float>(z));
    const Reference<SceneNodeMaterial> material = greyMaterialNode("GroundPlane");
    const Reference<SceneNodeModel> model(new SceneNodeModel);
    model->setName("GroundPlane");
    model->keyframes.push_back(keyFrameAt({}));
    model->rotation = new MatrixRotation;
    Vector<Reference<SceneNodeMaterial>> materials;
    materials.push_back(material);
    model->setMaterials(materials);

    // All of them or none.
    root.reserveNewChildren(3);
    root.addChildNode(mesh);
    root.addChildNode(material);
    // By the UID that the mesh has now.
    model->setGeometry(mesh);
    root.addChildNode(model);
}
