#include "scene/nodes/SceneNodeCurve1D.h"

#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/PlainNode.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <vector>

namespace SceneNodeCurve1DTests {

using namespace Velmar;
using TestSupport::elementOf;
using TestSupport::expectGolden;
using TestSupport::golden;
using TestSupport::indented;

namespace {

Vector<float> list(std::initializer_list<float> numbers) {
    Vector<float> result;
    result.append(numbers);
    return result;
}

Reference<SceneNodeCurve1D> curve(std::initializer_list<float> knots, std::initializer_list<float> values) {
    return new SceneNodeCurve1D(list(knots), list(values));
}

} // namespace

TEST(SceneNodeCurve1D, WritesItsListsAndNoUID) {
    const auto node = curve({0.0f, 0.25f, 0.5f, 0.75f, 1.0f}, {0.0f, 1.0f});
    node->setName("red");
    node->setUID(7);
    expectGolden(elementOf(*node, 1), indented(golden("curve/full")));
}

TEST(SceneNodeCurve1D, AnEmptyCurveHasEmptyElements) {
    expectGolden(elementOf(*curve({}, {})), golden("curve/empty"));
}

TEST(SceneNodeCurve1D, NumbersHaveTheShortestDigitsOfTheFloat) {
    expectGolden(elementOf(*curve({-0.0f}, {0.1f})), golden("curve/shortest_digits"));
}

TEST(SceneNodeCurve1D, HasNoTypeName) {
    EXPECT_EQ(getNodeTypeName(curve({}, {})->getType()), "Unknown type");
}

TEST(SceneNodeCurve1D, KeepsCopiesOfTheListsItIsGiven) {
    auto knots = list({1.0f});
    const Reference<SceneNodeCurve1D> node(new SceneNodeCurve1D(knots, knots));
    knots[0] = 2.0f;
    EXPECT_EQ(node->knots[0], 1.0f);
    EXPECT_EQ(node->values[0], 1.0f);
}

TEST(SceneNodeCurve1D, ACloneIsEqualAndApart) {
    const auto node = curve({0.0f, 1.0f}, {2.0f, 3.0f});
    node->setName("blue");
    node->setUID(9);
    const Reference<SceneNode> copy = node->clone();
    EXPECT_TRUE(copy->isEqual(node.getPointer()));
    node->values[1] = 4.0f;
    EXPECT_FALSE(copy->isEqual(node.getPointer()));
}

TEST(SceneNodeCurve1D, EqualityComparesEveryFloat) {
    const auto node = curve({0.0f, 1.0f}, {2.0f});
    EXPECT_TRUE(node->isEqual(curve({0.0f, 1.0f}, {2.0f}).getPointer()));
    EXPECT_FALSE(node->isEqual(curve({0.0f, 1.5f}, {2.0f}).getPointer()));
    EXPECT_FALSE(node->isEqual(curve({0.0f}, {2.0f}).getPointer()));
    EXPECT_FALSE(node->isEqual(curve({0.0f, 1.0f}, {2.0f, 2.0f}).getPointer()));
}

TEST(SceneNodeCurve1D, AnotherKindOfNodeIsNotEqual) {
    const Reference<SceneNode> other(new TestSupport::PlainNode);
    EXPECT_FALSE(curve({}, {})->isEqual(other.getPointer()));
}

TEST(SceneNodeCurve1D, OffsetUIDsMovesItsUID) {
    const auto node = curve({}, {});
    node->setUID(3);
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 10;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 13u);
}

} // namespace SceneNodeCurve1DTests

namespace ColourCurvesTests {

using namespace Velmar;

namespace {

std::vector<float> listOf(const Vector<float>& numbers) {
    return {numbers.begin(), numbers.end()};
}

} // namespace

TEST(ColourCurves, IdentityCurvesMapFiveKnotsToThemselves) {
    const Reference<ColourCurves> curves = makeIdentityColourCurves();
    for (const auto& curve : {curves->overall, curves->red, curves->green, curves->blue}) {
        EXPECT_EQ(listOf(curve->knots), (std::vector<float>{0.0f, 0.25f, 0.5f, 0.75f, 1.0f}));
        EXPECT_EQ(listOf(curve->values), (std::vector<float>{0.0f, 0.25f, 0.5f, 0.75f, 1.0f}));
    }
}

TEST(ColourCurves, IdentityCurvesAreNamedAndHaveNoUID) {
    const Reference<ColourCurves> curves = makeIdentityColourCurves();
    EXPECT_EQ(curves->overall->getName(), "overall");
    EXPECT_EQ(curves->red->getName(), "red");
    EXPECT_EQ(curves->green->getName(), "green");
    EXPECT_EQ(curves->blue->getName(), "blue");
    EXPECT_EQ(curves->blue->getUID(), invalid_uid);
}

TEST(ColourCurves, AClonesCurvesAreItsOwn) {
    const Reference<ColourCurves> curves = makeIdentityColourCurves();
    const Reference<ColourCurves> copies = cloneColourCurves(*curves);
    curves->red->values[4] = 0.5f;
    EXPECT_EQ(copies->red->values[4], 1.0f);
    EXPECT_EQ(copies->red->getName(), "red");
    EXPECT_TRUE(copies->blue->isEqual(curves->blue.getPointer()));
    EXPECT_NE(copies->blue, curves->blue);
}

} // namespace ColourCurvesTests
