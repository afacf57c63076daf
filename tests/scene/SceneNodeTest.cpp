#include "scene/SceneNode.h"

#include "scene/SceneNodeRoot.h"
#include "tests/support/PlainNode.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace SceneNodeTests {

using namespace Velmar;
using TestSupport::PlainNode;

namespace {

Reference<PlainNode> plainNode(UID uid, const char* name) {
    Reference<PlainNode> node(new PlainNode);
    node->setUID(uid);
    node->setName(name);
    return node;
}

Reference<SceneNodeRoot> rootWith(std::initializer_list<Reference<PlainNode>> nodes) {
    Reference<SceneNodeRoot> root(new SceneNodeRoot);
    for (const Reference<PlainNode>& node : nodes)
        root->addChildNode(node);
    return root;
}

std::vector<std::string> materialMasksOf(const SceneNodeRoot& root) {
    std::vector<std::string> names;
    for (const String& name : SceneNode::getMaterialMaskNameList(root))
        names.push_back(toStdString(name));
    return names;
}

} // namespace

TEST(NodeTypeName, IsThatOfTheTable) {
    const char* const names[] = {"Root",
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
                                 "Section Plane"};
    std::uint32_t code = 0;
    for (const char* const name : names)
        EXPECT_EQ(getNodeTypeName(static_cast<NodeType>(code++)), String(name));
}

TEST(NodeTypeName, IsUnknownForCodesWithoutOne) {
    EXPECT_EQ(getNodeTypeName(NodeType::Curve1D), String("Unknown type"));
    EXPECT_EQ(getNodeTypeName(static_cast<NodeType>(999)), String("Unknown type"));
}

TEST(OffsetUID, WrapsAndKeepsTheInvalidOne) {
    EXPECT_EQ(offsetUID(0xFFFFFFFF, 5), 0xFFFFFFFF);
    EXPECT_EQ(offsetUID(0xFFFFFFFE, 2), 0u);
    EXPECT_EQ(offsetUID(3, 5), 8u);
}

TEST(SceneNode, IsFreshWithoutUidNameParentOrCount) {
    auto* const node = new PlainNode;
    EXPECT_EQ(node->getUID(), invalid_uid);
    EXPECT_TRUE(node->getName().empty());
    EXPECT_EQ(node->getParent(), nullptr);
    EXPECT_EQ(node->getRefCount(), 0);
    EXPECT_EQ(node->getChangeFlags(), 0u);
    node->destroy(1);
}

TEST(SceneNode, IsTheSameAsItselfOnly) {
    const auto a = plainNode(1, "a");
    const auto b = plainNode(1, "a");
    EXPECT_TRUE(a->isSameNode(a.getPointer()));
    EXPECT_FALSE(a->isSameNode(b.getPointer()));
}

TEST(SceneNode, FindsItsRootOnceAdded) {
    const auto node = plainNode(invalid_uid, "a");
    EXPECT_EQ(node->getRootNode(), nullptr);
    const auto root = rootWith({node});
    EXPECT_EQ(node->getRootNode(), root.getPointer());
    EXPECT_EQ(root->getRootNode(), root.getPointer());
}

TEST(SceneNode, EqualContentWithAnotherUidOrNameDiffers) {
    EXPECT_TRUE(plainNode(1, "a")->isEqual(plainNode(1, "a").getPointer()));
    EXPECT_FALSE(plainNode(1, "a")->isEqual(plainNode(2, "a").getPointer()));
    EXPECT_FALSE(plainNode(1, "a")->isEqual(plainNode(1, "b").getPointer()));
}

TEST(SceneNode, OffsetsItsUidOnThatKindOnly) {
    const auto node = plainNode(3, "a");
    TraversalState* const state = node->createTraversalState(TraversalKind::OffsetUIDs, "s", "d");
    state->uid_offset = 5;
    node->traverse(*state);
    EXPECT_EQ(node->getUID(), 8u);
    state->kind = TraversalKind::GetBounds;
    node->traverse(*state);
    EXPECT_EQ(node->getUID(), 8u);
    node->destroyTraversalState(state);
}

TEST(SceneNode, ACloneHasUidNameAndFlagsButNoParent) {
    const auto node = plainNode(3, "a");
    node->setChangeFlags(6);
    const auto root = rootWith({node});
    const Reference<SceneNode> copy = node->clone();
    EXPECT_EQ(copy->getUID(), 3u);
    EXPECT_EQ(copy->getName(), String("a"));
    EXPECT_EQ(copy->getChangeFlags(), 6u);
    EXPECT_EQ(copy->getParent(), nullptr);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_EQ(root->getChangedNodeCount(), 0u);
}

namespace {

/// Clones into a node that is in a scene already, as a class of another library may.
class NodeClonedIntoScene : public Destroyable<NodeClonedIntoScene, PlainSceneNode> {
  public:
    NodeClonedIntoScene(SceneNodeRoot& root) : Destroyable(NodeType::Metadata), root_(root) {}
    ~NodeClonedIntoScene() = default;
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override {
        const Reference<NodeClonedIntoScene> copy(new NodeClonedIntoScene(root_));
        copy->setParent(&root_);
        copyBaseFields(*this, *copy);
        return new (static_cast<void*>(result)) Reference<SceneNode>(copy);
    }
    void writeXML(OStream&, std::uint32_t, const XMLWriteOptions&) const override {}

  private:
    SceneNodeRoot& root_;
};

} // namespace

TEST(SceneNode, ACloneWithChangeFlagsInsideASceneIsEnteredAsChanged) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const Reference<NodeClonedIntoScene> node(new NodeClonedIntoScene(*root));
    node->clone();
    EXPECT_EQ(root->getChangedNodeCount(), 0u);
    EXPECT_EQ(root->getChangedNodes().size(), 0u);

    node->setChangeFlags(1);
    const Reference<SceneNode> copy = node->clone();
    EXPECT_EQ(root->getChangedNodeCount(), 1u);
    ASSERT_NE(root->getChangedNodes().find(copy), nullptr);
    EXPECT_EQ(*root->getChangedNodes().find(copy), 0u);
}

TEST(SceneTree, EqualityWalksChildrenInOrder) {
    const auto a = rootWith({plainNode(1, "a"), plainNode(2, "b")});
    const auto same = rootWith({plainNode(1, "a"), plainNode(2, "b")});
    const auto other_order = rootWith({plainNode(2, "b"), plainNode(1, "a")});
    const auto shorter = rootWith({plainNode(1, "a")});
    EXPECT_TRUE(SceneNode::isEqualTree(*a, *same));
    EXPECT_FALSE(SceneNode::isEqualTree(*a, *other_order));
    EXPECT_FALSE(SceneNode::isEqualTree(*a, *shorter));
    EXPECT_FALSE(SceneNode::isEqualTree(*shorter, *a));
}

TEST(SceneTree, EqualityComparesTheKindOfChildren) {
    const Reference<PlainNode> medium(new PlainNode(NodeType::Medium));
    medium->setUID(1);
    medium->setName("a");
    EXPECT_FALSE(SceneNode::isEqualTree(*rootWith({plainNode(1, "a")}), *rootWith({medium})));
}

TEST(SceneTree, TheGreatestLayerIsThatOfAnyNode) {
    const auto a = plainNode(1, "a");
    const auto b = plainNode(2, "b");
    a->layer = 4;
    b->layer = 2;
    const auto root = rootWith({a, b});
    EXPECT_EQ(root->getMaxLayerIndex(), 0u);
    EXPECT_EQ(SceneNode::getMaxLayerIndexOfTree(*root), 4u);
}

TEST(MaskNames, StandOnceAndSortedByBytesTakenAsSigned) {
    const auto root =
        rootWith({plainNode(1, "1"), plainNode(2, "2"), plainNode(3, "3"), plainNode(4, "4"), plainNode(5, "5")});
    const char* const masks[] = {"ba", "b", "\xC3\xA4", "ba", "Z"};
    for (std::size_t i = 0; i < 5; ++i)
        static_cast<PlainNode&>(*root->children()[i]).mask = masks[i];
    EXPECT_EQ(materialMasksOf(*root), (std::vector<std::string>{"\xC3\xA4", "Z", "b", "ba"}));
    EXPECT_EQ(SceneNode::getModelMaskNameList(*root).size(), 4u);
}

TEST(MaskNames, OrdinalsCountFromTheFirstName) {
    MaskNameMap map;
    const auto node = plainNode(1, "a");
    for (const char* mask : {"x", "y", "x", "z"}) {
        node->mask = mask;
        node->getMaterialMaskNames(map);
    }
    EXPECT_EQ(map.size(), 3u);
    EXPECT_EQ(*map.find("x"), 0u);
    EXPECT_EQ(*map.find("y"), 1u);
    EXPECT_EQ(*map.find("z"), 2u);
}

TEST(SignedByteHash, SignExtendsBytesFrom0x80) {
    // One step of FNV-1a from its offset basis, with the byte as 0xFFFFFFFFFFFFFFC3 and as 0x61.
    EXPECT_EQ(SignedByteHashTraits::hash("\xC3"), (0xCBF29CE484222325u ^ 0xFFFFFFFFFFFFFFC3u) * 0x100000001B3u);
    EXPECT_EQ(SignedByteHashTraits::hash("a"), 0xAF63DC4C8601EC8Cu);
}

TEST(TraversalState, HoldsWhatItWasMadeWith) {
    const auto node = plainNode(1, "a");
    TraversalState* const state = node->createTraversalState(TraversalKind::LoadMeshes, "D:\\a\\scene.xml", "D:\\a");
    EXPECT_EQ(state->kind, TraversalKind::LoadMeshes);
    EXPECT_EQ(state->scene_path, String("D:\\a\\scene.xml"));
    EXPECT_EQ(state->scene_dir, String("D:\\a"));
    EXPECT_TRUE(state->meshes_dir.empty());
    EXPECT_TRUE(state->mesh_dependencies_as_paths);
    EXPECT_EQ(state->bounds_min[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(state->bounds_max[2], -std::numeric_limits<float>::infinity());
    EXPECT_EQ(state->mesh_cache, nullptr);
    EXPECT_EQ(state->depth, 0);
    EXPECT_EQ(state->path_map.bucketCount(), 4u);
    node->destroyTraversalState(state);
    node->destroyTraversalState(nullptr);
}

} // namespace SceneNodeTests
