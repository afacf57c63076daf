#pragma once

#include "scene/SceneNode.h"
#include "utils/System.h"

#include <cstddef>
#include <vector>

namespace Velmar {

class SceneNodeMaterial;

/// The scene: owns its nodes in the order of adding, hands out their UIDs and finds them by UID. It only grows;
/// children are never removed one at a time. Built from one thread at a time.
class SceneNodeRoot : public Destroyable<SceneNodeRoot, PlainSceneNode> {
  public:
    SceneNodeRoot();
    /// Children that others hold too have no parent then.
    ~SceneNodeRoot();
    SceneNodeRoot(const SceneNodeRoot&) = delete;
    SceneNodeRoot& operator=(const SceneNodeRoot&) = delete;

    /// Appends `node` as the last child. A node without a UID receives the next free one; of two nodes with one UID the
    /// later is found by it, and both stay children. A node may be added several times.
    /// Throws `BadAlloc`; root and node are then as they were, also a node that has no references yet.
    void addChildNode(SceneNode& node);
    void addChildNode(const Reference<SceneNode>& node) { addChildNode(*node); }

    /// Moves nodes that have UIDs into a scene that has none yet, as `addChildNode` does one by one, but in a time in
    /// proportion to their number even when the UIDs share buckets of the table. Throws `BadAlloc`; the scene can then
    /// only be destroyed.
    void addFirstChildNodes(Vector<Reference<SceneNode>>& nodes);

    /// Makes room for `count` nodes without UIDs: adding them next can't fail. Throws `BadAlloc`.
    void reserveNewChildren(std::size_t count);

    /// Removes the first child that is `node`, which loses its UID if it was the only one. Returns whether there was
    /// one. Without another holder the node is destroyed.
    bool removeChildNode(SceneNode& node);

    /// The node, the root itself for its own UID, or null.
    SceneNode* getNodeByUID(UID wanted);

    /// As `getNodeByUID`. Throws `VelmarException` when there is no such node or it isn't a material node.
    SceneNodeMaterial* getMaterialNodeByUID(UID wanted);

    /// The first child that is a render settings node, or null.
    SceneNode* getRenderSettingsNode() const;

    /// Enters the node in the table of changed nodes.
    void addChangedNode(const Reference<SceneNode>& node);
    void countChangedNode() { ++changed_node_count; }

    UID getNextUID() const { return next_uid; }
    const ChangedNodes& getChangedNodes() const { return changed_nodes; }
    std::uint64_t getChangedNodeCount() const { return changed_node_count; }

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    void traverse(TraversalState& state) override;

  private:
    struct Layout;

    void growChildList(std::size_t count);
    void insertAnyUIDs(const Vector<Reference<SceneNode>>& nodes, const std::vector<UID>& uids);

    Vector<Reference<SceneNode>> child_nodes;
    NodeUIDMap uid_to_node;
    ChangedNodes changed_nodes;
    UID next_uid = 1;
    /// For the renderer library; never locked on this side.
    OwnedMutex mutex;
    std::uint64_t changed_node_count = 0;
    [[maybe_unused]] bool changes_pending = false;
};

struct SceneNodeRoot::Layout {
    static_assert(offsetof(SceneNodeRoot, child_nodes) == 96);
    static_assert(offsetof(SceneNodeRoot, uid_to_node) == 120);
    static_assert(offsetof(SceneNodeRoot, changed_nodes) == 160);
    static_assert(offsetof(SceneNodeRoot, next_uid) == 200);
    static_assert(offsetof(SceneNodeRoot, mutex) == 208);
    static_assert(offsetof(SceneNodeRoot, changed_node_count) == 216);
    static_assert(offsetof(SceneNodeRoot, changes_pending) == 224);
};

static_assert(sizeof(SceneNodeRoot) == 232);

} // namespace Velmar
