#include "scene/SceneNodeTonemapping.h"

#include "tests/support/Documents.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>

namespace SceneNodeTonemappingTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<SceneNodeTonemapping> tonemapping(std::uint32_t kind = SceneNodeTonemapping::linear) {
    Reference<SceneNodeTonemapping> node(new SceneNodeTonemapping);
    node->setUID(1);
    node->tone_mapper_kind = kind;
    return node;
}

} // namespace

TEST(SceneNodeTonemapping, ANewNodeIsLinear) {
    EXPECT_EQ(elementOf(*tonemapping()), golden("tonemapping/linear"));
}

TEST(SceneNodeTonemapping, ReinhardHasThreeSettings) {
    EXPECT_EQ(elementOf(*tonemapping(1001)), golden("tonemapping/reinhard"));
}

TEST(SceneNodeTonemapping, TheCamerasPathStaysRelative) {
    XMLWriteOptions options;
    options.scene_dir = "D:\\work";
    EXPECT_EQ(elementOf(*tonemapping(1002), 0, options), golden("tonemapping/camera"));
}

TEST(SceneNodeTonemapping, FilmicHasTheScale) {
    const auto node = tonemapping(1003);
    node->scale = 0.5;
    EXPECT_EQ(elementOf(*node),
              replaced(golden("tonemapping/linear"), {{"linear", "filmic"}, {"<scale>1<", "<scale>0.5<"}}));
}

TEST(SceneNodeTonemapping, AnUnknownKindWritesTheIdentityOnly) {
    EXPECT_EQ(elementOf(*tonemapping(999)),
              replaced(golden("tonemapping/linear"), {{"\t<linear>\n\t\t<scale>1</scale>\n\t</linear>\n", ""}}));
}

TEST(SceneNodeTonemapping, ACloneHasAllFields) {
    const auto node = tonemapping(1001);
    node->setName("n");
    node->scale = 2.0;
    node->pre_scale = 3.0;
    node->post_scale = 5.0;
    node->burn = 7.0;
    node->response_function_path = "other/path/that/is/longer/than/the/inline/buffer";
    node->film_iso = 11.0;
    node->ev_adjust = 13.0;
    const Reference<SceneNode> copy = node->clone();
    EXPECT_TRUE(copy->isEqual(node.getPointer()));
    EXPECT_NE(copy.getPointer(), static_cast<SceneNode*>(node.getPointer()));
}

TEST(SceneNodeTonemapping, EveryFieldCountsForEqualityWhateverTheKind) {
    const auto node = tonemapping();
    EXPECT_TRUE(node->isEqual(tonemapping().getPointer()));
    void (*const changes[])(SceneNodeTonemapping&) = {
        [](SceneNodeTonemapping& n) { n.scale = 9.0; },
        [](SceneNodeTonemapping& n) { n.pre_scale = 9.0; },
        [](SceneNodeTonemapping& n) { n.post_scale = 9.0; },
        [](SceneNodeTonemapping& n) { n.burn = 9.0; },
        [](SceneNodeTonemapping& n) { n.response_function_path = "9"; },
        [](SceneNodeTonemapping& n) { n.film_iso = 9.0; },
        [](SceneNodeTonemapping& n) { n.ev_adjust = 9.0; },
        [](SceneNodeTonemapping& n) { n.tone_mapper_kind = 9; },
    };
    for (const auto change : changes) {
        const auto other = tonemapping();
        change(*other);
        EXPECT_FALSE(node->isEqual(other.getPointer()));
    }
}

TEST(SceneNodeTonemapping, ItsPathIsNoDependency) {
    const auto node = tonemapping(1002);
    TraversalState state(TraversalKind::GetDependencies, "", "");
    node->traverse(state);
    EXPECT_TRUE(state.dependencies.empty());
}

} // namespace SceneNodeTonemappingTests
