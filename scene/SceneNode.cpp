#include "scene/SceneNode.h"

#include "scene/ClassSupport.h"
#include "scene/SceneNodeRoot.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Velmar {

String getNodeTypeName(NodeType type) {
    static constexpr std::array<const char*, 16> names = {
        "Root",
        "Camera",
        "Render Settings",
        "Material",
        "Mesh",
        "Object",
        "Sphere",
        "Medium",
        "Tone Mapping",
        "Rectangle Light",
        "Background Settings",
        "Metadata",
        "Parametric Surface",
        "Displaced Quad",
        "Scatter",
        "Section Plane",
    };
    const auto code = static_cast<std::size_t>(type);
    return code < names.size() ? names[code] : "Unknown type";
}

namespace {

bool lessBySignedBytes(const String& a, const String& b) {
    return std::ranges::lexicographical_compare(
        a.view(), b.view(), [](char x, char y) { return static_cast<signed char>(x) < static_cast<signed char>(y); });
}

template <class Collect>
Vector<String> collectMaskNames(const SceneNode& node, Collect collect) {
    MaskNameMap map;
    for (const Reference<SceneNode>& child : node.children())
        collect(*child, map);
    Vector<String> names;
    names.reserve(map.size());
    map.forEach([&](const String& name, std::uint32_t) { names.push_back(name); });
    std::sort(names.begin(), names.end(), lessBySignedBytes);
    return names;
}

} // namespace

SceneNode::SceneNode(NodeType type_) : type(type_) {}

void SceneNode::setName(const String& new_name) {
    name = new_name;
}

const String& SceneNode::getName() const {
    return name;
}

bool SceneNode::isSameNode(const SceneNode* other) const {
    return other == this;
}

TraversalState* SceneNode::createTraversalState(TraversalKind kind, const String& scene_path, const String& scene_dir) {
    return new TraversalState(kind, scene_path, scene_dir);
}

void SceneNode::destroyTraversalState(TraversalState* state) {
    delete state;
}

void SceneNode::getMaterialMaskNames(MaskNameMap&) const {}

void SceneNode::getModelMaskNames(MaskNameMap&) const {}

Reference<SceneNode> SceneNode::clone() const {
    return valueOfSlot<Reference<SceneNode>>([this](auto* place) { return cloneInto(place); });
}

Vector<UID> SceneNode::getDependencyUIDs() const {
    return valueOfSlot<Vector<UID>>([this](auto* place) { return getDependencyUIDsInto(place); });
}

SceneNodeRoot* SceneNode::getRootNode() {
    SceneNode* topmost = this;
    while (topmost->parent != nullptr)
        topmost = topmost->parent;
    return topmost->type == NodeType::Root ? static_cast<SceneNodeRoot*>(topmost) : nullptr;
}

bool SceneNode::isEqualTree(const SceneNode& a, const SceneNode& b) {
    if (!a.isEqual(&b)) return false;
    return std::ranges::equal(a.children(), b.children(),
                              [](const Reference<SceneNode>& child_a, const Reference<SceneNode>& child_b) {
                                  return child_a->type == child_b->type && isEqualTree(*child_a, *child_b);
                              });
}

std::uint32_t SceneNode::getMaxLayerIndexOfTree(const SceneNode& node) {
    std::uint32_t greatest = node.getMaxLayerIndex();
    for (const Reference<SceneNode>& child : node.children())
        greatest = std::max(greatest, getMaxLayerIndexOfTree(*child));
    return greatest;
}

Vector<String> SceneNode::getMaterialMaskNameList(const SceneNode& node) {
    return collectMaskNames(node, [](const SceneNode& child, MaskNameMap& map) { child.getMaterialMaskNames(map); });
}

Vector<String> SceneNode::getModelMaskNameList(const SceneNode& node) {
    return collectMaskNames(node, [](const SceneNode& child, MaskNameMap& map) { child.getModelMaskNames(map); });
}

void SceneNode::copyBaseFields(const SceneNode& source, SceneNode& target) {
    target.uid = source.uid;
    target.setName(source.getName());
    target.change_flags = source.change_flags;
    if (target.change_flags == 0) return;
    if (SceneNodeRoot* const root = target.getRootNode()) {
        root->addChangedNode(&target);
        root->countChangedNode();
    }
}

bool SceneNode::isBaseEqual(const SceneNode& other) const {
    return uid == other.uid && getName() == other.getName();
}

SceneNode* SceneNode::findNode(const NodeUIDMap& map, UID uid, NodeType type) {
    SceneNode* const* const found = map.find(uid);
    return found != nullptr && *found != nullptr && (*found)->type == type ? *found : nullptr;
}

void SceneNode::traverseOwnUID(const TraversalState& state) {
    if (state.kind == TraversalKind::OffsetUIDs) uid = offsetUID(uid, state.uid_offset);
}

void PlainSceneNode::updateNodeReferences(const NodeUIDMap&) {}

void PlainSceneNode::traverse(TraversalState& state) {
    traverseOwnUID(state);
}

std::uint32_t PlainSceneNode::getMaxLayerIndex() const {
    return 0;
}

bool PlainSceneNode::refersToNode(const SceneNode*) const {
    return false;
}

Vector<UID>* PlainSceneNode::getDependencyUIDsInto(Vector<UID>* result) const {
    return constructResult(result, Vector<UID>());
}

bool PlainSceneNode::isEqual(const SceneNode* other) const {
    return isBaseEqual(*other);
}

} // namespace Velmar
