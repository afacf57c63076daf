#pragma once

#include "scene/SceneNodeRoot.h"

#include <string>
#include <vector>

/// Whether models can be of a node of this kind.
bool isGeometry(Velmar::NodeType type);

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

/// All references of the nodes of a scene. Those that name no node on purpose are left out.
std::vector<NodeReference> findReferences(Velmar::SceneNodeRoot& scene);

/// "model2 'Bunny' (uid 8)"
std::string describeNode(const Velmar::SceneNode& node);

/// The element of a node in a document.
std::string getElementOf(const Velmar::SceneNode& node);
