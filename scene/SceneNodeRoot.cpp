#include "scene/SceneNodeRoot.h"

#include "velmarexceptions.h"

#include "scene/ClassSupport.h"
#include "scene/NumberText.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/XMLPrimitives.h"
#include "utils/OStream.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <vector>

namespace Velmar {

SceneNodeRoot::SceneNodeRoot() : Destroyable(NodeType::Root) {
    uid = root_uid;
    name = "Scene";
}

SceneNodeRoot::~SceneNodeRoot() {
    for (const Reference<SceneNode>& child : children())
        if (child->getParent() == this) child->setParent(nullptr);
}

void SceneNodeRoot::addChildNode(SceneNode& node) {
    const bool is_new = node.getUID() == invalid_uid;
    const UID node_uid = is_new ? next_uid : node.getUID();
    growChildList(1);
    uid_to_node.set(node_uid, &node);

    // Nothing can fail from here on.
    child_nodes.push_back(Reference<SceneNode>(&node));
    child_nodes_end = child_nodes.end();
    node.setParent(this);
    node.setUID(node_uid);
    next_uid = is_new ? next_uid + 1 : std::max(next_uid, node_uid + 1);
}

void SceneNodeRoot::addFirstChildNodes(Vector<Reference<SceneNode>>& nodes) {
    assertThat(child_nodes.empty() && uid_to_node.size() == 0, "child_nodes.empty()");
    std::vector<UID> uids;
    uids.reserve(nodes.size());
    for (const Reference<SceneNode>& node : nodes) {
        node->setParent(this);
        uids.push_back(node->getUID());
        next_uid = std::max(next_uid, node->getUID() + 1);
    }
    uid_to_node.reserveBuckets(nodes.size());
    if (std::ranges::is_sorted(uids, std::ranges::less_equal())) {
        for (std::size_t i = 0; i < nodes.size(); ++i)
            uid_to_node.insert(uids[i], nodes[i].getPointer());
    } else {
        insertAnyUIDs(nodes, uids);
    }
    child_nodes.swap(nodes);
    child_nodes_begin = child_nodes.begin();
    child_nodes_end = child_nodes.end();
}

void SceneNodeRoot::insertAnyUIDs(const Vector<Reference<SceneNode>>& nodes, const std::vector<UID>& uids) {
    std::vector<std::size_t> by_uid(uids.size());
    std::iota(by_uid.begin(), by_uid.end(), std::size_t{0});
    std::ranges::stable_sort(by_uid, {}, [&](std::size_t i) { return uids[i]; });
    // The first node of a UID has the place in the table, and the last one is found there.
    std::vector<SceneNode*> found(uids.size());
    for (std::size_t i = 0, first = 0; i < by_uid.size(); ++i) {
        if (i == 0 || uids[by_uid[i]] != uids[by_uid[i - 1]]) first = by_uid[i];
        found[first] = nodes[by_uid[i]].getPointer();
    }
    for (std::size_t i = 0; i < uids.size(); ++i)
        if (found[i] != nullptr) uid_to_node.insert(uids[i], found[i]);
}

void SceneNodeRoot::reserveNewChildren(std::size_t count) {
    Vector<UID> new_uids;
    for (std::size_t i = 0; i < count; ++i)
        new_uids.push_back(next_uid + static_cast<UID>(i));
    uid_to_node.reserveFor({new_uids.data(), new_uids.size()});
    growChildList(count);
}

bool SceneNodeRoot::removeChildNode(SceneNode& node) {
    const auto is_node = [&](const Reference<SceneNode>& child) { return child.getPointer() == &node; };
    Reference<SceneNode>* const found = std::find_if(child_nodes.begin(), child_nodes.end(), is_node);
    if (found == child_nodes.end()) return false;
    const Reference<SceneNode> held(&node);
    std::copy(found + 1, child_nodes.end(), found);
    child_nodes.resize(child_nodes.size() - 1);
    child_nodes_end = child_nodes.end();
    if (std::any_of(child_nodes.begin(), child_nodes.end(), is_node)) return true;

    SceneNode** const known = uid_to_node.find(node.getUID());
    if (known != nullptr && *known == &node) uid_to_node.erase(node.getUID());
    changed_nodes.erase(held);
    node.setParent(nullptr);
    node.setUID(invalid_uid);
    return true;
}

/// Makes room for `count` more children.
void SceneNodeRoot::growChildList(std::size_t count) {
    child_nodes.growFor(count);
    // The list may have moved.
    child_nodes_begin = child_nodes.begin();
    child_nodes_end = child_nodes.end();
}

SceneNode* SceneNodeRoot::getNodeByUID(UID wanted) {
    if (wanted == uid) return this;
    SceneNode* const* const found = uid_to_node.find(wanted);
    return found != nullptr ? *found : nullptr;
}

SceneNodeMaterial* SceneNodeRoot::getMaterialNodeByUID(UID wanted) {
    SceneNode* const node = getNodeByUID(wanted);
    if (node == nullptr)
        throw VelmarException(toVelmarString("Failed to find node with UID " + uint32ToString(wanted)));
    if (node->getType() != NodeType::Material)
        throw VelmarException(toVelmarString("Node with UID " + uint32ToString(wanted) + " was not a material node."));
    return static_cast<SceneNodeMaterial*>(node);
}

SceneNode* SceneNodeRoot::getRenderSettingsNode() const {
    const auto found = std::ranges::find_if(
        children(), [](const Reference<SceneNode>& child) { return child->getType() == NodeType::RenderSettings; });
    return found != children().end() ? found->getPointer() : nullptr;
}

void SceneNodeRoot::addChangedNode(const Reference<SceneNode>& node) {
    changed_nodes.set(node, 0);
}

Reference<SceneNode>* SceneNodeRoot::cloneInto(Reference<SceneNode>* result) const {
    return constructResult(result, nullptr);
}

void SceneNodeRoot::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    // Reporting at each node would cost more than the writing of small ones.
    constexpr double min_progress = 0.01;

    writeOpenTag(stream, depth, "scene");
    float last_reported = 0.0f;
    const std::size_t count = child_nodes.size();
    for (std::size_t i = 0; i < count; ++i) {
        child_nodes[i]->writeXML(stream, depth + 1, options);
        if (i + 1 < count) stream.write("\n");
        if (options.progress_listener != nullptr) {
            const float fraction = static_cast<float>(i) / static_cast<float>(count);
            if (static_cast<double>(fraction - last_reported) > min_progress) {
                options.progress_listener->reportProgress(fraction);
                last_reported = fraction;
            }
        }
    }
    writeCloseTag(stream, depth, "scene");
}

void SceneNodeRoot::traverse(TraversalState&) {}

} // namespace Velmar
