#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "scene/SceneTables.h"
#include "scene/TraversalState.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Velmar {

/// What a node is. The renderer library knows kinds that this library has no class for; checks of a node's kind do too.
enum class NodeType : std::uint32_t {
    Root = 0,
    Camera = 1,
    RenderSettings = 2,
    Material = 3,
    Mesh = 4,
    Object = 5,
    Sphere = 6,
    Medium = 7,
    ToneMapping = 8,
    RectangleLight = 9,
    BackgroundSettings = 10,
    Metadata = 11,
    ParametricSurface = 12,
    DisplacedQuad = 13,
    Scatter = 14,
    SectionPlane = 15,
    Curve1D = 16,
};

/// The name that messages show for a node's kind; "Unknown type" for codes without one, curves among them.
String getNodeTypeName(NodeType type);

class OStream;
class SceneNodeRoot;
struct XMLWriteOptions;

/// What everything in a scene is: a node with a name, a UID and a kind. Nodes live on the heap and are held by
/// `Reference`. A scene is changed and traversed from one thread at a time; only reference counts are safe across
/// threads.
///
/// The sixteen virtual operations are called by position from the renderer library, which also derives classes from
/// this one: their order, their parameters and the layout of the fields must not change. An operation whose name ends
/// with `Into` constructs a class value in the place that it is given, and returns that place: its slot returns the
/// value.
class SceneNode : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual void setName(const String& new_name);
    /// Slot 2.
    virtual const String& getName() const;
    /// Slot 3. True when `other` is this very node.
    virtual bool isSameNode(const SceneNode* other) const;
    /// Slot 4. A copy outside any scene; null for classes that aren't copied.
    virtual Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const = 0;
    /// Slot 5. Rebinds node references to the nodes of equal UID in `map`.
    virtual void updateNodeReferences(const NodeUIDMap& map) = 0;
    /// Slot 6. Writes the node's element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 7. Does the part of a pass that concerns this node; kinds that don't concern it are ignored.
    /// Throws `VelmarException`.
    virtual void traverse(TraversalState& state) = 0;
    /// Slot 8. Makes the state for one pass, to be given back to `destroyTraversalState` of any node.
    virtual TraversalState* createTraversalState(TraversalKind kind, const String& scene_path, const String& scene_dir);
    /// Slot 9. Null is ignored.
    virtual void destroyTraversalState(TraversalState* state);
    /// Slot 10. The greatest light layer that this node names.
    virtual std::uint32_t getMaxLayerIndex() const = 0;
    /// Slot 11. Enters the node's material mask name into `map` unless it is there.
    virtual void getMaterialMaskNames(MaskNameMap& map) const;
    /// Slot 12. Enters the node's object mask name into `map` unless it is there.
    virtual void getModelMaskNames(MaskNameMap& map) const;
    /// Slot 13. True when this node refers to `node`.
    virtual bool refersToNode(const SceneNode* node) const = 0;
    /// Slot 14. The UIDs of the nodes that this node refers to.
    virtual Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const = 0;
    /// Slot 15. Exact comparison of the fields that count for equality in the class.
    virtual bool isEqual(const SceneNode* other) const = 0;

    /// The natural forms of slots 4 and 14.
    Reference<SceneNode> clone() const;
    Vector<UID> getDependencyUIDs() const;

    UID getUID() const { return uid; }
    void setUID(UID new_uid) { uid = new_uid; }
    NodeType getType() const { return type; }
    std::uint32_t getChangeFlags() const { return change_flags; }
    void setChangeFlags(std::uint32_t flags) { change_flags = flags; }
    SceneNode* getParent() const { return parent; }
    void setParent(SceneNode* new_parent) { parent = new_parent; }

    /// The scene that this node is in, or null.
    SceneNodeRoot* getRootNode();

    /// The children in the order of adding; only a root has any.
    std::span<const Reference<SceneNode>> children() const { return {child_nodes_begin, child_nodes_end}; }

    /// True when both trees are equal, child by child in order.
    static bool isEqualTree(const SceneNode& a, const SceneNode& b);
    /// The greatest light layer named by `node` or anything below it.
    static std::uint32_t getMaxLayerIndexOfTree(const SceneNode& node);
    /// The distinct mask names of the direct children of `node`, sorted by bytes taken as signed.
    static Vector<String> getMaterialMaskNameList(const SceneNode& node);
    static Vector<String> getModelMaskNameList(const SceneNode& node);

  protected:
    explicit SceneNode(NodeType type_);
    ~SceneNode() = default;

    /// The last step of every `clone`: carries UID, name and change flags over to the new object.
    static void copyBaseFields(const SceneNode& source, SceneNode& target);

    /// UID and name are equal: the whole comparison of classes without data of their own to compare.
    bool isBaseEqual(const SceneNode& other) const;

    /// The node of that UID and kind in `map`, or null: what a reference to such a node is rebound to.
    static SceneNode* findNode(const NodeUIDMap& map, UID uid, NodeType type);

    /// Offsets the node's own UID on `OffsetUIDs`: the whole pass of classes that no other kind concerns.
    void traverseOwnUID(const TraversalState& state);

    SceneNode* parent = nullptr;
    const Reference<SceneNode>* child_nodes_begin = nullptr;
    const Reference<SceneNode>* child_nodes_end = nullptr;
    String name;
    UID uid = invalid_uid;
    std::uint32_t change_flags = 0;
    const NodeType type;

  private:
    struct Layout;

    // Keeps fields of derived classes out of the tail padding, where another compiler wouldn't look for them.
    [[maybe_unused]] std::uint32_t tail_padding = 0;
};

struct SceneNode::Layout {
    static_assert(offsetof(SceneNode, parent) == 16);
    static_assert(offsetof(SceneNode, child_nodes_begin) == 24);
    static_assert(offsetof(SceneNode, child_nodes_end) == 32);
    static_assert(offsetof(SceneNode, name) == 40);
    static_assert(offsetof(SceneNode, uid) == 80);
    static_assert(offsetof(SceneNode, change_flags) == 84);
    static_assert(offsetof(SceneNode, type) == 88);
};

static_assert(sizeof(SceneNode) == 96);

/// The operations of classes that refer to no other node, name no layer and compare by UID and name.
class PlainSceneNode : public SceneNode {
  public:
    void updateNodeReferences(const NodeUIDMap& map) override;
    void traverse(TraversalState& state) override;
    std::uint32_t getMaxLayerIndex() const override;
    bool refersToNode(const SceneNode* node) const override;
    Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const override;
    bool isEqual(const SceneNode* other) const override;

  protected:
    using SceneNode::SceneNode;
    ~PlainSceneNode() = default;
};

static_assert(sizeof(PlainSceneNode) == sizeof(SceneNode));

} // namespace Velmar
