#pragma once

#include "mesh/Mesh.h"
#include "scene/Rotations.h"
#include "scene/SceneNodeRoot.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"

#include <initializer_list>

namespace TestSupport {

using Velmar::Reference;

/// A mesh node with a box from (0, 0, 0) to (1, 2, 3) and the names of materials.
inline Reference<Velmar::SceneNodeMesh> meshNode(std::initializer_list<const char*> material_names = {}) {
    const Reference<Velmar::SceneNodeMesh> node(new Velmar::SceneNodeMesh);
    node->mesh = new Velmar::Mesh;
    node->mesh->addVertex({0, 0, 0});
    node->mesh->addVertex({1, 2, 3});
    for (const char* const name : material_names)
        node->mesh->addMaterialUsed(name);
    node->mesh->build();
    return node;
}

/// A model as hosts get it: one frame, not rotated.
inline Reference<Velmar::SceneNodeModel> model() {
    const Reference<Velmar::SceneNodeModel> node(new Velmar::SceneNodeModel);
    node->rotation = new Velmar::MatrixRotation;
    node->keyframes.push_back(Velmar::KeyFrame());
    return node;
}

inline Reference<Velmar::SceneNodeMaterial> materialNode(Velmar::UID uid = Velmar::invalid_uid) {
    const Reference<Velmar::SceneNodeMaterial> node(new Velmar::SceneNodeMaterial);
    node->setUID(uid);
    return node;
}

inline void pass(Velmar::SceneNode& node, Velmar::TraversalKind kind, std::uint32_t uid_offset = 0) {
    Velmar::TraversalState state(kind, "", "");
    state.uid_offset = uid_offset;
    node.traverse(state);
}

} // namespace TestSupport
