#include "scene/SceneNodeRoot.h"

#include "tests/support/PlainNode.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace SceneNodeRootTests {

using namespace Velmar;
using TestSupport::PlainNode;

namespace {

PlainNode* add(SceneNodeRoot& root, UID uid = invalid_uid, NodeType type = NodeType::Metadata) {
    auto* const node = new PlainNode(type);
    node->setUID(uid);
    root.addChildNode(node);
    return node;
}

class SceneNodeRootTest : public testing::Test {
  protected:
    const Reference<SceneNodeRoot> root{new SceneNodeRoot};
};

} // namespace

TEST_F(SceneNodeRootTest, IsNamedSceneAndHasUidZero) {
    EXPECT_EQ(root->getName(), String("Scene"));
    EXPECT_EQ(root->getUID(), 0u);
    EXPECT_EQ(root->getNextUID(), 1u);
    EXPECT_EQ(root->getType(), NodeType::Root);
}

TEST_F(SceneNodeRootTest, ItsOwnUidFindsIt) {
    EXPECT_EQ(root->getNodeByUID(0), root.getPointer());
}

TEST_F(SceneNodeRootTest, AnUnknownUidFindsNothing) {
    EXPECT_EQ(root->getNodeByUID(12345), nullptr);
}

TEST_F(SceneNodeRootTest, ChildrenWithoutUidReceiveThemInOrder) {
    EXPECT_EQ(add(*root)->getUID(), 1u);
    EXPECT_EQ(add(*root)->getUID(), 2u);
}

TEST_F(SceneNodeRootTest, AGivenUidIsKeptAndNeverGivenAgain) {
    EXPECT_EQ(add(*root, 100)->getUID(), 100u);
    EXPECT_EQ(add(*root)->getUID(), 101u);
    add(*root, 7);
    EXPECT_EQ(root->getNextUID(), 102u);
}

TEST_F(SceneNodeRootTest, AChildMayBeAddedAgainByItsPlaceInTheListOfChildren) {
    PlainNode* const node = add(*root);
    // The list moves when it grows.
    for (int i = 0; i < 10; ++i)
        root->addChildNode(root->children()[0]);
    EXPECT_EQ(root->children().size(), 11u);
    EXPECT_EQ(root->children()[10].getPointer(), node);
    EXPECT_EQ(node->getRefCount(), 11);
}

TEST_F(SceneNodeRootTest, AChildIsOwnedAndKnowsItsParent) {
    int destructions = 0;
    {
        const Reference<SceneNodeRoot> other(new SceneNodeRoot);
        auto* const node = new PlainNode(NodeType::Metadata, &destructions);
        other->addChildNode(node);
        EXPECT_EQ(node->getRefCount(), 1);
        EXPECT_EQ(node->getParent(), other.getPointer());
    }
    EXPECT_EQ(destructions, 1);
}

TEST_F(SceneNodeRootTest, AChildHeldElsewhereOutlivesTheRoot) {
    int destructions = 0;
    const Reference<PlainNode> node(new PlainNode(NodeType::Metadata, &destructions));
    {
        const Reference<SceneNodeRoot> other(new SceneNodeRoot);
        other->addChildNode(node);
    }
    EXPECT_EQ(destructions, 0);
    EXPECT_EQ(node->getRefCount(), 1);
}

TEST_F(SceneNodeRootTest, ChildrenAreSeenInTheOrderOfAdding) {
    PlainNode* const first = add(*root, 9);
    PlainNode* const second = add(*root, 2);
    ASSERT_EQ(root->children().size(), 2u);
    EXPECT_EQ(root->children()[0].getPointer(), first);
    EXPECT_EQ(root->children()[1].getPointer(), second);
}

TEST_F(SceneNodeRootTest, ANodeAddedTwiceStandsTwice) {
    PlainNode* const node = add(*root);
    root->addChildNode(node);
    EXPECT_EQ(root->children().size(), 2u);
    EXPECT_EQ(node->getRefCount(), 2);
    EXPECT_EQ(node->getUID(), 1u);
}

TEST_F(SceneNodeRootTest, OfTwoNodesWithOneUidTheLaterIsFound) {
    add(*root, 5);
    PlainNode* const later = add(*root, 5);
    EXPECT_EQ(root->getNodeByUID(5), later);
    EXPECT_EQ(root->children().size(), 2u);
}

TEST_F(SceneNodeRootTest, ChildrenAreFoundAfterTheTableHasGrown) {
    for (UID uid = 1; uid <= 1000; ++uid)
        add(*root);
    for (UID uid = 1; uid <= 1000; ++uid) {
        ASSERT_NE(root->getNodeByUID(uid), nullptr);
        ASSERT_EQ(root->getNodeByUID(uid)->getUID(), uid);
    }
}

namespace {

/// What a renderer library sees of the table: the entries by bucket, each with its UID and the number of its child.
std::vector<std::pair<UID, std::size_t>> tableOf(const SceneNodeRoot& root) {
    constexpr std::size_t offset_of_table = 120;
    const auto* const table =
        reinterpret_cast<const NodeUIDMap*>(reinterpret_cast<const char*>(&root) + offset_of_table);
    std::vector<std::pair<UID, std::size_t>> entries;
    table->forEach([&](UID uid, SceneNode* node) {
        const auto child = std::ranges::find(root.children(), node, &Reference<SceneNode>::getPointer);
        entries.emplace_back(uid, static_cast<std::size_t>(child - root.children().begin()));
    });
    entries.emplace_back(0, table->bucketCount());
    return entries;
}

Vector<Reference<SceneNode>> nodesOf(const std::vector<UID>& uids) {
    Vector<Reference<SceneNode>> nodes;
    for (const UID uid : uids) {
        const Reference<SceneNode> node(new PlainNode(NodeType::Metadata));
        node->setUID(uid);
        nodes.push_back(node);
    }
    return nodes;
}

} // namespace

TEST(FirstChildren, AddedAtOnceAreInTheTableAsIfAddedOneByOne) {
    std::vector<UID> colliding;
    for (UID i = 1; i < 3000; ++i)
        colliding.push_back(i << 12U);
    for (const std::vector<UID>& uids :
         {std::vector<UID>{}, {7}, {1, 2, 3}, {9, 4, 9, 1, 4, 9, 2}, {0, 5, 0xFFFFFFFE, 5, 0}, colliding}) {
        const Reference<SceneNodeRoot> one_by_one(new SceneNodeRoot);
        for (const Reference<SceneNode>& node : nodesOf(uids))
            one_by_one->addChildNode(node);
        const Reference<SceneNodeRoot> at_once(new SceneNodeRoot);
        Vector<Reference<SceneNode>> nodes = nodesOf(uids);
        at_once->addFirstChildNodes(nodes);
        EXPECT_EQ(tableOf(*at_once), tableOf(*one_by_one));
        EXPECT_EQ(at_once->getNextUID(), one_by_one->getNextUID());
        ASSERT_EQ(at_once->children().size(), uids.size());
        for (std::size_t i = 0; i < uids.size(); ++i) {
            EXPECT_EQ(at_once->children()[i]->getUID(), uids[i]);
            EXPECT_EQ(at_once->children()[i]->getParent(), at_once.getPointer());
        }
    }
}

TEST(NodeUIDMap, DoublesWithTheThirtyThirdEntry) {
    NodeUIDMap map;
    for (UID uid = 1; uid <= 32; ++uid)
        map.insert(uid, nullptr);
    EXPECT_EQ(map.bucketCount(), 4u);
    map.insert(33, nullptr);
    EXPECT_EQ(map.bucketCount(), 8u);
    for (UID uid = 1; uid <= 33; ++uid)
        EXPECT_NE(map.find(uid), nullptr);
}

TEST_F(SceneNodeRootTest, TheFirstRenderSettingsNodeCounts) {
    EXPECT_EQ(root->getRenderSettingsNode(), nullptr);
    add(*root);
    PlainNode* const first = add(*root, invalid_uid, NodeType::RenderSettings);
    add(*root, invalid_uid, NodeType::RenderSettings);
    EXPECT_EQ(root->getRenderSettingsNode(), first);
}

TEST_F(SceneNodeRootTest, ChangedNodesAreEnteredOnce) {
    const Reference<PlainNode> node(new PlainNode);
    root->addChangedNode(node);
    root->addChangedNode(node);
    EXPECT_EQ(root->getChangedNodes().size(), 1u);
    EXPECT_EQ(node->getRefCount(), 2);
}

TEST_F(SceneNodeRootTest, ARemovedChildIsNoChangedNodeAnyMore) {
    PlainNode* const removed = add(*root);
    PlainNode* const kept = add(*root);
    root->addChangedNode(removed);
    root->addChangedNode(kept);
    const Reference<PlainNode> held(removed);
    EXPECT_TRUE(root->removeChildNode(*removed));
    EXPECT_EQ(root->getChangedNodes().size(), 1u);
    EXPECT_NE(root->getChangedNodes().find(Reference<SceneNode>(kept)), nullptr);
    EXPECT_EQ(held->getRefCount(), 1);
}

TEST_F(SceneNodeRootTest, IsNeitherClonedNorTraversed) {
    EXPECT_EQ(root->clone().getPointer(), nullptr);
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 5;
    root->traverse(state);
    EXPECT_EQ(root->getUID(), 0u);
}

TEST_F(SceneNodeRootTest, ComparesUidAndNameOnly) {
    const Reference<SceneNodeRoot> other(new SceneNodeRoot);
    add(*root);
    EXPECT_TRUE(root->isEqual(other.getPointer()));
    other->setName("Other");
    EXPECT_FALSE(root->isEqual(other.getPointer()));
}

} // namespace SceneNodeRootTests
