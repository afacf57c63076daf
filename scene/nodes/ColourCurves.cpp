#include "scene/nodes/ColourCurves.h"

#include "scene/nodes/SceneNodeCurve1D.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(ColourCurves, overall) == 16);
static_assert(offsetof(ColourCurves, red) == 24);
static_assert(offsetof(ColourCurves, green) == 32);
static_assert(offsetof(ColourCurves, blue) == 40);
static_assert(sizeof(ColourCurves) == 48);

ColourCurves::ColourCurves() = default;

ColourCurves::~ColourCurves() = default;

Reference<ColourCurves> makeIdentityColourCurves() {
    static constexpr float knots[] = {0.0f, 0.25f, 0.5f, 0.75f, 1.0f};
    Vector<float> list;
    list.append(knots);

    const auto makeCurve = [&list](const char* name) {
        const Reference<SceneNodeCurve1D> curve(new SceneNodeCurve1D(list, list));
        curve->setName(name);
        return curve;
    };
    Reference<ColourCurves> curves(new ColourCurves);
    curves->overall = makeCurve("overall");
    curves->red = makeCurve("red");
    curves->green = makeCurve("green");
    curves->blue = makeCurve("blue");
    return curves;
}

Reference<ColourCurves> cloneColourCurves(const ColourCurves& curves) {
    const auto cloneCurve = [](const Reference<SceneNodeCurve1D>& curve) {
        const Reference<SceneNode> copy = curve->clone();
        return Reference<SceneNodeCurve1D>(static_cast<SceneNodeCurve1D*>(copy.getPointer()));
    };
    Reference<ColourCurves> copies(new ColourCurves);
    copies->overall = cloneCurve(curves.overall);
    copies->red = cloneCurve(curves.red);
    copies->green = cloneCurve(curves.green);
    copies->blue = cloneCurve(curves.blue);
    return copies;
}

} // namespace Velmar
