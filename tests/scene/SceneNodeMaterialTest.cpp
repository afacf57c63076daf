#include "scene/SceneNodeMaterial.h"

#include "velmarexceptions.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeRoot.h"
#include "scene/Spectra.h"
#include "tests/support/Documents.h"
#include "tests/support/FakeParams.h"
#include "tests/support/Golden.h"
#include "tests/support/PlainNode.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace SceneNodeMaterialTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

using MaterialNode = Reference<SceneNodeMaterial>;

template <class Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const VelmarException& exception) {
        return toStdString(exception.getMessage());
    }
    return "nothing was thrown";
}

void traverse(SceneNode& node, TraversalKind kind) {
    TraversalState state(kind, "", "");
    node.traverse(state);
}

std::vector<UID> listOf(const Vector<UID>& uids) {
    return {uids.begin(), uids.end()};
}

/// Each of `count` nodes visits the next in a pass.
std::vector<MaterialNode> chainOf(std::size_t count) {
    std::vector<MaterialNode> nodes;
    for (std::size_t i = 0; i < count; ++i) {
        nodes.emplace_back(new SceneNodeMaterial);
        const Reference<FakeMaterial> material(new FakeMaterial);
        nodes.back()->material = material.getPointer();
        nodes.back()->setUID(static_cast<UID>(i + 1));
        nodes.back()->setName(toVelmarString("link " + std::to_string(i + 1)));
        if (i > 0) static_cast<FakeMaterial&>(*nodes[i - 1]->material).visited_in_a_pass = nodes[i].getPointer();
    }
    return nodes;
}

TEST(SceneNodeMaterial, NewNodeHoldsADiffuseMaterialNamedMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    EXPECT_EQ(node->getName(), "Material");
    EXPECT_EQ(node->material->name, "Material");
    EXPECT_EQ(node->material->getTypeName(), "diffuse");
    EXPECT_EQ(node->material->getRefCount(), 1);
    EXPECT_EQ(node->getType(), NodeType::Material);
}

TEST(SceneNodeMaterial, NameIsThatOfTheMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    node->setName("Wood");
    EXPECT_EQ(node->material->name, "Wood");
    node->material = new SunSkyMaterial;
    EXPECT_EQ(node->getName(), "");
}

TEST(SceneNodeMaterial, NameIsLostWithoutAMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    node->material = nullptr;
    node->setName("Wood");
    EXPECT_EQ(node->getName(), "");
}

TEST(SceneNodeMaterial, WritesIdentityThenTheMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    node->setUID(7);
    node->setName("Wood & co");
    node->material->mask_name = "wooden";
    expectGolden(elementOf(*node, 1), indented(golden("material/with_mask_name")));
}

TEST(SceneNodeMaterial, UIDsCanBeLeftOut) {
    const MaterialNode node(new SceneNodeMaterial);
    XMLWriteOptions options;
    options.write_material_uids = false;
    expectGolden(elementOf(*node, 0, options),
                 replaced(golden("material/plain"), {{"\t<uid>1</uid>\n", ""}, {"Wood", "Material"}}));
}

TEST(SceneNodeMaterial, WithoutAMaterialWritesItsIdentityAlone) {
    const MaterialNode node(new SceneNodeMaterial);
    node->setUID(7);
    node->material = nullptr;
    expectGolden(elementOf(*node), replaced(golden("material/empty"), {{"<uid>1<", "<uid>7<"}}));
}

TEST(SceneNodeMaterial, EachBoundScatterNodeHasAnElementOfItsOwn) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    root->addChildNode(node);
    root->addChildNode(new FakeScatter);
    root->addChildNode(new FakeScatter);
    node->scatter_uids = vectorOf<UID>({3, 2});
    traverse(*node, TraversalKind::BindReferences);
    expectGolden(elementOf(*node), golden("material/with_scatter_nodes"));
}

TEST(SceneNodeMaterial, ScatterNodesThatWereNeverBoundAreNotWritten) {
    const MaterialNode node(new SceneNodeMaterial);
    node->scatter_uids = vectorOf<UID>({3, 2});
    EXPECT_EQ(elementOf(*node).find("scatter_uids"), std::string::npos);
}

TEST(SceneNodeMaterial, BindingTellsTheScatterNodeItsOwner) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    const Reference<FakeScatter> scatter(new FakeScatter);
    root->addChildNode(scatter);
    root->addChildNode(node);
    node->scatter_uids.push_back(scatter->getUID());
    traverse(*node, TraversalKind::BindReferences);
    EXPECT_EQ(scatter->owner_uid, 2u);
    ASSERT_EQ(node->scatter_nodes.size(), 1u);
    EXPECT_EQ(node->scatter_nodes[0], scatter.getPointer());
    EXPECT_EQ(scatter->getRefCount(), 2) << "bound nodes aren't counted";
}

TEST(SceneNodeMaterial, BindingTwiceBindsTwice) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    root->addChildNode(node);
    root->addChildNode(new FakeScatter);
    node->scatter_uids.push_back(2);
    traverse(*node, TraversalKind::BindReferences);
    traverse(*node, TraversalKind::BindReferences);
    EXPECT_EQ(node->scatter_nodes.size(), 2u);
}

TEST(SceneNodeMaterial, BindingOutsideASceneThrows) {
    const MaterialNode node(new SceneNodeMaterial);
    EXPECT_NO_THROW(traverse(*node, TraversalKind::BindReferences)) << "there is nothing to bind";
    node->scatter_uids.push_back(2);
    EXPECT_EQ(messageOf([&] { traverse(*node, TraversalKind::BindReferences); }),
              "While binding scatter node: root node was NULL");
}

TEST(SceneNodeMaterial, BindingToAMissingNodeThrows) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    root->addChildNode(node);
    node->scatter_uids.push_back(12);
    EXPECT_EQ(messageOf([&] { traverse(*node, TraversalKind::BindReferences); }),
              "While processing node 'Material', UID 1:  Failed to find scatter node for UID 12");
}

TEST(SceneNodeMaterial, BindingToAnotherKindOfNodeThrowsAndKeepsWhatWasBound) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    root->addChildNode(node);
    root->addChildNode(new FakeScatter);
    node->scatter_uids = vectorOf<UID>({2, 1});
    TraversalState state(TraversalKind::BindReferences, "", "");
    EXPECT_EQ(messageOf([&] { node->traverse(state); }), "Referenced node did not have type SceneNodeScatter");
    EXPECT_EQ(node->scatter_nodes.size(), 1u);
    EXPECT_EQ(state.depth, 1);
}

TEST(SceneNodeMaterial, PassLowersTheDepthAgain) {
    TraversalState state(TraversalKind::GetDependencies, "", "");
    chainOf(3).front()->traverse(state);
    EXPECT_EQ(state.depth, 0);
}

TEST(SceneNodeMaterial, HundredNestedVisitsPass) {
    const auto chain = chainOf(100);
    EXPECT_NO_THROW(traverse(*chain.front(), TraversalKind::GetDependencies));
}

TEST(SceneNodeMaterial, HundredAndFirstNestedVisitThrows) {
    const auto chain = chainOf(101);
    TraversalState state(TraversalKind::GetDependencies, "", "");
    EXPECT_EQ(messageOf([&] { chain.front()->traverse(state); }),
              "While traversing scene, exceeded maximum traversal depth, possible reference loop found. (at node UID "
              "101, name 'link 101')");
    EXPECT_EQ(state.depth, 101);
}

TEST(SceneNodeMaterial, LoopOfReferencesThrows) {
    const auto chain = chainOf(2);
    static_cast<FakeMaterial&>(*chain[1]->material).visited_in_a_pass = chain[0].getPointer();
    EXPECT_EQ(messageOf([&] { traverse(*chain.front(), TraversalKind::OffsetUIDs); }).substr(0, 60),
              "While traversing scene, exceeded maximum traversal depth, po");
}

TEST(SceneNodeMaterial, OffsetReachesItsOwnUIDAndThoseOfScatterNodes) {
    const MaterialNode node(new SceneNodeMaterial);
    node->setUID(3);
    node->scatter_uids = vectorOf<UID>({7, invalid_uid});
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 5;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 8u);
    EXPECT_EQ(listOf(node->scatter_uids), (std::vector<UID>{12, invalid_uid}));
}

TEST(SceneNodeMaterial, OffsetLeavesAMissingUID) {
    const MaterialNode node(new SceneNodeMaterial);
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 5;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), invalid_uid);
}

TEST(SceneNodeMaterial, EveryPassReachesTheMaterial) {
    for (const auto kind :
         {TraversalKind::BindReferences, TraversalKind::GetDependencies, TraversalKind::UpdateDependencies,
          TraversalKind::LoadMeshes, TraversalKind::GetBounds, TraversalKind::OffsetUIDs}) {
        const MaterialNode node(new SceneNodeMaterial);
        std::string visits;
        node->material->bump = new FakeSurfaceParam("b", &visits);
        traverse(*node, kind);
        EXPECT_EQ(visits, "b ");
    }
}

TEST(SceneNodeMaterial, PassWithoutAMaterialDoesTheRest) {
    const MaterialNode node(new SceneNodeMaterial);
    node->material = nullptr;
    node->setUID(1);
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 1;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 2u);
    EXPECT_EQ(state.depth, 0);
}

TEST(SceneNodeMaterial, CloneHasUIDAndNameButADefaultMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    node->setUID(9);
    node->setName("Red");
    static_cast<DiffuseMaterial&>(*node->material).albedo =
        new ConstantWavelengthDependentParam(new UniformSpectrum(1));
    node->material->mask_name = "mask";
    node->scatter_uids.push_back(4);
    const Reference<SceneNode> copy = node->clone();
    expectGolden(elementOf(*copy), replaced(golden("material/plain"), {{"<uid>1<", "<uid>9<"}, {"Wood", "Red"}}));
    EXPECT_TRUE(static_cast<const SceneNodeMaterial&>(*copy).scatter_uids.empty());
    EXPECT_EQ(copy->getRefCount(), 1);
}

TEST(SceneNodeMaterial, ContentTakesNoPartInEquality) {
    const MaterialNode a(new SceneNodeMaterial);
    const MaterialNode b(new SceneNodeMaterial);
    b->material = new SunSkyMaterial;
    b->setName("Material");
    EXPECT_TRUE(a->isEqual(b.getPointer()));
    b->setName("Other");
    EXPECT_FALSE(a->isEqual(b.getPointer()));
}

TEST(SceneNodeMaterial, MaxLayerIndexIsThatOfTheMaterial) {
    const MaterialNode node(new SceneNodeMaterial);
    node->material->layer = 6;
    EXPECT_EQ(node->getMaxLayerIndex(), 6u);
}

TEST(SceneNodeMaterial, EmptyMaskNameIsNotEntered) {
    MaskNameMap map;
    const MaterialNode node(new SceneNodeMaterial);
    node->getMaterialMaskNames(map);
    node->material = nullptr;
    node->getMaterialMaskNames(map);
    EXPECT_EQ(map.size(), 0u);
}

TEST(SceneNodeMaterial, MaskNamesAreEnteredOnceWithTheOrderOfFirstUse) {
    MaskNameMap map;
    const MaterialNode node(new SceneNodeMaterial);
    for (const char* const mask : {"b", "a", "b"}) {
        node->material->mask_name = mask;
        node->getMaterialMaskNames(map);
    }
    ASSERT_EQ(map.size(), 2u);
    EXPECT_EQ(*map.find("b"), 0u);
    EXPECT_EQ(*map.find("a"), 1u);
}

TEST(SceneNodeMaterial, MaskNameOfTwoMaterialsStandsOnceInTheSortedList) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    for (const char* const mask : {"b", "a", "b"}) {
        const MaterialNode node(new SceneNodeMaterial);
        node->material->mask_name = mask;
        root->addChildNode(node);
    }
    const Vector<String> names = SceneNode::getMaterialMaskNameList(*root);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], "a");
    EXPECT_EQ(names[1], "b");
}

TEST(SceneNodeMaterial, RefersToWhatItsMaterialRefersTo) {
    const Reference<PlainNode> other(new PlainNode);
    const MaterialNode node(new SceneNodeMaterial);
    EXPECT_FALSE(node->refersToNode(other.getPointer()));
    const Reference<FakeMaterial> material(new FakeMaterial);
    material->references[1] = other.getPointer();
    node->material = material.getPointer();
    EXPECT_TRUE(node->refersToNode(other.getPointer()));
    node->material = nullptr;
    EXPECT_FALSE(node->refersToNode(other.getPointer()));
}

TEST(SceneNodeMaterial, DependenciesAreScatterUIDsThoseOfBoundNodesAndThoseOfTheMaterial) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    const Reference<FakeScatter> scatter(new FakeScatter);
    root->addChildNode(node);
    root->addChildNode(scatter);
    scatter->dependencies = vectorOf<UID>({2, 50});
    node->scatter_uids.push_back(2);
    traverse(*node, TraversalKind::BindReferences);

    const Reference<PlainNode> other(new PlainNode);
    other->setUID(60);
    const Reference<FakeMaterial> material(new FakeMaterial);
    material->references[0] = other.getPointer();
    node->material = material.getPointer();
    const Vector<UID> uids = node->getDependencyUIDs();
    EXPECT_EQ(listOf(uids), (std::vector<UID>{2, 2, 50, 60}));
    EXPECT_EQ(uids.capacity(), 6u) << "3 for the first three, then twice that";
}

TEST(SceneNodeMaterial, DependenciesWithoutAMaterialAreScatterUIDs) {
    const MaterialNode node(new SceneNodeMaterial);
    node->material = nullptr;
    node->scatter_uids = vectorOf<UID>({5, 5});
    EXPECT_EQ(listOf(node->getDependencyUIDs()), (std::vector<UID>{5, 5}));
}

struct RebindingCase {
    std::uint32_t material_kind;
    std::size_t reference;
    NodeType target;
};

class Rebinding : public testing::TestWithParam<RebindingCase> {
  protected:
    Rebinding() {
        old_target->setUID(20);
        material->references[GetParam().reference] = old_target.getPointer();
        node->material = material.getPointer();
    }

    SceneNode* boundAfter(const Reference<SceneNode>& new_target) {
        NodeUIDMap map;
        map.insert(20, new_target.getPointer());
        node->updateNodeReferences(map);
        return material->references[GetParam().reference].getPointer();
    }

    const MaterialNode node{new SceneNodeMaterial};
    const Reference<FakeMaterial> material{new FakeMaterial(GetParam().material_kind)};
    const Reference<PlainNode> old_target{new PlainNode(GetParam().target)};
};

INSTANTIATE_TEST_SUITE_P(SceneNodeMaterial, Rebinding,
                         testing::Values(RebindingCase{0, 0, NodeType::Material},
                                         RebindingCase{0, 1, NodeType::Material}, RebindingCase{2, 1, NodeType::Medium},
                                         RebindingCase{6, 0, NodeType::Medium}, RebindingCase{7, 2, NodeType::Medium}));

TEST_P(Rebinding, TakesTheNodeOfEqualUIDAndTheRightKind) {
    const Reference<SceneNode> new_target(new PlainNode(GetParam().target));
    EXPECT_EQ(boundAfter(new_target), new_target.getPointer());
    EXPECT_EQ(new_target->getRefCount(), 2);
    EXPECT_EQ(old_target->getRefCount(), 1);
}

TEST_P(Rebinding, KeepsTheNodeWhenTheNewOneIsOfAnotherKind) {
    EXPECT_EQ(boundAfter(new PlainNode(NodeType::Camera)), old_target.getPointer());
}

TEST_P(Rebinding, KeepsTheNodeWhenTheTableHoldsNull) {
    EXPECT_EQ(boundAfter(nullptr), old_target.getPointer());
}

TEST_P(Rebinding, KeepsTheNodeWhenTheTableHasNone) {
    node->updateNodeReferences(NodeUIDMap());
    EXPECT_EQ(material->references[GetParam().reference].getPointer(), old_target.getPointer());
}

TEST_P(Rebinding, SkipsAReferenceThatIsNull) {
    material->references[GetParam().reference] = nullptr;
    EXPECT_EQ(boundAfter(new PlainNode(GetParam().target)), nullptr);
}

TEST(SceneNodeMaterial, ClassesWithoutReferencesAndNullHaveNothingToRebind) {
    NodeUIDMap map;
    const MaterialNode node(new SceneNodeMaterial);
    node->updateNodeReferences(map);
    node->material = new SunSkyMaterial;
    node->updateNodeReferences(map);
    node->material = nullptr;
    node->updateNodeReferences(map);
    EXPECT_EQ(node->material.getPointer(), nullptr);
}

TEST(SceneNodeRoot, FindsMaterialNodesByUID) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const MaterialNode node(new SceneNodeMaterial);
    root->addChildNode(node);
    EXPECT_EQ(root->getMaterialNodeByUID(1), node.getPointer());
}

TEST(SceneNodeRoot, IsNoMaterialNodeItself) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    EXPECT_EQ(messageOf([&] { root->getMaterialNodeByUID(0); }), "Node with UID 0 was not a material node.");
}

TEST(SceneNodeRoot, MaterialNodeOfAnUnknownUIDThrows) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    EXPECT_EQ(messageOf([&] { root->getMaterialNodeByUID(12345); }), "Failed to find node with UID 12345");
}

} // namespace

} // namespace SceneNodeMaterialTests
