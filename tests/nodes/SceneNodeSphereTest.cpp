#include "scene/nodes/SceneNodeSphere.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/SharedShaderInfo.h"
#include "tests/nodes/ModelSupport.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/PlainNode.h"
#include "tests/support/SpecialFloats.h"

#include <gtest/gtest.h>

namespace SceneNodeSphereTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<SceneNodeSphere> sphere() {
    Reference<SceneNodeSphere> node(new SceneNodeSphere);
    node->setUID(3);
    return node;
}

std::string messageOf(SceneNode& node, TraversalKind kind) {
    try {
        pass(node, kind, 10);
    } catch (const VelmarException& exception) {
        return toStdString(exception.getMessage());
    }
    return "nothing was thrown";
}

UID onlyDependencyOf(const SceneNode& node) {
    const Vector<UID> uids = node.getDependencyUIDs();
    EXPECT_EQ(uids.size(), 1u);
    return uids[0];
}

} // namespace

TEST(SceneNodeSphere, ANewSphereNamesNoMaterial) {
    expectGolden(elementOf(*sphere(), 1), indented(golden("sphere/new")));
}

TEST(SceneNodeSphere, KeyFramesStandBeforeTheRadius) {
    const auto node = sphere();
    node->keyframes.push_back({.pos = {1, 2, 3}});
    node->radius = 0.5;
    node->material_uid = 7;
    expectGolden(elementOf(*node), golden("sphere/moving"));
}

TEST(SceneNodeSphere, ABoundSphereWritesItsMaterialsUID) {
    const auto node = sphere();
    node->material = materialNode(8);
    node->material_uid = 9;
    EXPECT_NE(elementOf(*node).find("<material_uid>8</material_uid>"), std::string::npos);
}

TEST(SceneNodeSphere, BindsItsMaterialByUID) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const auto node = sphere();
    const auto bound = materialNode(8);
    root->addChildNode(node);
    root->addChildNode(bound);
    node->material_uid = 8;
    pass(*node, TraversalKind::BindReferences, 10);
    EXPECT_EQ(node->material, bound);
    EXPECT_TRUE(node->refersToNode(bound.getPointer()));
}

TEST(SceneNodeSphere, BindingLeavesABoundMaterial) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const auto node = sphere();
    const auto bound = materialNode(8);
    root->addChildNode(node);
    node->material = bound;
    node->material_uid = 99;
    pass(*node, TraversalKind::BindReferences, 10);
    EXPECT_EQ(node->material, bound);
}

TEST(SceneNodeSphere, BindingFailsWhenTheMaterialIsMissing) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const auto node = sphere();
    root->addChildNode(node);
    node->material_uid = 8;
    EXPECT_EQ(messageOf(*node, TraversalKind::BindReferences), "Failed to find node with UID 8");
}

TEST(SceneNodeSphere, BindingFailsWhenTheUIDIsAnotherKindOfNode) {
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const auto node = sphere();
    root->addChildNode(node);
    node->material_uid = 3;
    EXPECT_EQ(messageOf(*node, TraversalKind::BindReferences), "Node with UID 3 was not a material node.");
}

TEST(SceneNodeSphere, DependsOnTheStoredUIDUntilBound) {
    const auto node = sphere();
    node->material_uid = 7;
    EXPECT_EQ(onlyDependencyOf(*node), 7u);
    node->material = materialNode(8);
    node->material_uid = 9;
    EXPECT_EQ(onlyDependencyOf(*node), 8u);
}

TEST(SceneNodeSphere, RefersToItsMaterialAlone) {
    const auto node = sphere();
    const auto bound = materialNode(8);
    EXPECT_FALSE(node->refersToNode(bound.getPointer()));
    node->material = bound;
    EXPECT_TRUE(node->refersToNode(bound.getPointer()));
    EXPECT_FALSE(node->refersToNode(node.getPointer()));
}

TEST(SceneNodeSphere, ACloneIsUnbound) {
    const auto node = sphere();
    node->setName("Ball");
    node->keyframes.push_back({.pos = {1, 2, 3}});
    node->radius = 2.5;
    node->material = materialNode(8);
    node->material_uid = 9;
    const Reference<SceneNode> copy = node->clone();
    EXPECT_FALSE(static_cast<SceneNodeSphere&>(*copy).material);
    EXPECT_EQ(elementOf(*copy), "<sphere>\n"
                                "\t<uid>3</uid>\n"
                                "\t<name>Ball</name>\n"
                                "\t<keyframe>\n"
                                "\t\t<time>0</time>\n"
                                "\t\t<pos>1 2 3</pos>\n"
                                "\t</keyframe>\n"
                                "\t<radius>2.5</radius>\n"
                                "\t<material_uid>9</material_uid>\n"
                                "</sphere>\n");
}

TEST(SceneNodeSphere, UpdateNodeReferencesFindsTheMaterialOfEqualUID) {
    const auto node = sphere();
    const auto replacement = materialNode(8);
    NodeUIDMap map;
    map.insert(8, replacement.getPointer());
    node->updateNodeReferences(map);
    EXPECT_FALSE(node->material) << "a sphere that isn't bound stays so";
    node->material = materialNode(8);
    node->updateNodeReferences(map);
    EXPECT_EQ(node->material, replacement);
}

TEST(SceneNodeSphere, UpdateNodeReferencesKeepsTheMaterialWhenThereIsNoOther) {
    const auto bound = materialNode(8);
    const auto node = sphere();
    const Reference<SceneNode> other(new TestSupport::PlainNode);
    node->material = bound;

    NodeUIDMap map;
    node->updateNodeReferences(map);
    EXPECT_EQ(node->material, bound);
    map.insert(8, nullptr);
    node->updateNodeReferences(map);
    EXPECT_EQ(node->material, bound);
    *map.find(8) = other.getPointer();
    node->updateNodeReferences(map);
    EXPECT_EQ(node->material, bound);
}

TEST(SceneNodeSphere, ItsDependenciesAreThoseOfItsMaterial) {
    const auto node = sphere();
    TraversalState state(TraversalKind::GetDependencies, "", "");
    node->traverse(state);
    EXPECT_TRUE(state.dependencies.empty());

    node->material = materialNode(8);
    const Reference<SharedShaderInfo> shader(new SharedShaderInfo);
    shader->includes.push_back("common.inc");
    node->material->material->shared_shader_info = shader;
    node->traverse(state);
    ASSERT_EQ(state.dependencies.size(), 1u);
    EXPECT_EQ(state.dependencies[0], "common.inc");
}

TEST(SceneNodeSphere, UpdateDependenciesStopsAtTheSphere) {
    const auto node = sphere();
    node->material = materialNode(8);
    const Reference<SharedShaderInfo> shader(new SharedShaderInfo);
    shader->includes.push_back("common.inc");
    node->material->material->shared_shader_info = shader;
    EXPECT_NO_THROW(pass(*node, TraversalKind::UpdateDependencies, 10));
    EXPECT_EQ(shader->includes[0], "common.inc");
}

TEST(SceneNodeSphere, BoundsEncloseItWhereItStands) {
    const auto node = sphere();
    node->keyframes.push_back({.pos = {1, 2, 3}});
    node->radius = 2.0;
    TraversalState state(TraversalKind::GetBounds, "", "");
    node->traverse(state);
    EXPECT_EQ(state.bounds_min[0], -1.0f);
    EXPECT_EQ(state.bounds_min[1], 0.0f);
    EXPECT_EQ(state.bounds_min[2], 1.0f);
    EXPECT_EQ(state.bounds_max[0], 3.0f);
    EXPECT_EQ(state.bounds_max[1], 4.0f);
    EXPECT_EQ(state.bounds_max[2], 5.0f);
}

TEST(SceneNodeSphere, BoundsEncloseTheWholeMotion) {
    const auto node = sphere();
    node->keyframes.push_back({.pos = {0, 0, 0}, .time = 0.0});
    node->keyframes.push_back({.pos = {10, 0, 0}, .time = 1.0});
    TraversalState state(TraversalKind::GetBounds, "", "");
    node->traverse(state);
    EXPECT_LE(state.bounds_min[0], -1.0f);
    EXPECT_GE(state.bounds_max[0], 11.0f);
    EXPECT_GT(state.bounds_min[0], -1.1f);
    EXPECT_LT(state.bounds_max[0], 11.1f);
}

TEST(SceneNodeSphere, BoundsWithoutKeyFramesFail) {
    EXPECT_EQ(messageOf(*sphere(), TraversalKind::GetBounds), "Must be at least one frame.");
}

TEST(SceneNodeSphere, BoundsThatFailStayAsTheyWere) {
    TraversalState state(TraversalKind::GetBounds, "", "");
    EXPECT_THROW(sphere()->traverse(state), VelmarException);
    EXPECT_EQ(state.bounds_min[0], infinity);
    EXPECT_EQ(state.bounds_max[0], -infinity);
}

TEST(SceneNodeSphere, OffsetUIDsMovesBothUIDs) {
    const auto node = sphere();
    node->material_uid = 7;
    pass(*node, TraversalKind::OffsetUIDs, 10);
    EXPECT_EQ(node->getUID(), 13u);
    EXPECT_EQ(node->material_uid, 17u);
}

TEST(SceneNodeSphere, OffsetUIDsLeavesTheInvalidOne) {
    const auto node = sphere();
    pass(*node, TraversalKind::OffsetUIDs, 10);
    EXPECT_EQ(node->material_uid, invalid_uid);
}

TEST(SceneNodeSphere, EqualityIsOfUIDAndName) {
    const auto node = sphere();
    const auto other = sphere();
    other->radius = 9.0;
    EXPECT_TRUE(node->isEqual(other.getPointer()));
    other->setUID(4);
    EXPECT_FALSE(node->isEqual(other.getPointer()));
}

TEST(SceneNodeSphere, ReleasesItsMaterial) {
    const auto bound = materialNode(8);
    {
        const auto node = sphere();
        node->material = bound;
        EXPECT_EQ(bound->getRefCount(), 2);
    }
    EXPECT_EQ(bound->getRefCount(), 1);
}

} // namespace SceneNodeSphereTests
