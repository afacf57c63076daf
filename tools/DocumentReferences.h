#pragma once

#include "scene/SceneNodeRoot.h"

#include <functional>
#include <string>

/// Whether a scene mostly has one node of this kind.
bool isSingle(Velmar::NodeType type);

/// A reference of a node to another one.
struct NodeReference {
    /// Where it is.
    const Velmar::SceneNode* holder = nullptr;
    /// The element with the UID, from that of the node on: "materials.uid".
    std::string element;
    Velmar::UID uid = Velmar::invalid_uid;
    /// Whether the scene has a node of this UID, of a kind that fits.
    bool is_bound = false;
};

/// Passes the references of the nodes of a scene to `take`, one by one, because there may be very many. Those that name
/// no node on purpose are left out.
void visitReferences(Velmar::SceneNodeRoot& scene, const std::function<void(const NodeReference&)>& take);

/// "model2 'Bunny' (uid 8)"
std::string describeNode(const Velmar::SceneNode& node);
