#include "scene/nodes/ColourCurves.h"

#include "scene/nodes/SceneNodeCurve1D.h"

#include <gtest/gtest.h>
#include <vector>

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
