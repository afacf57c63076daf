#include "scene/nodes/SceneNodeCurve1D.h"

#include "scene/ClassSupport.h"
#include "scene/nodes/NodeElements.h"

#include <algorithm>

namespace Velmar {

SceneNodeCurve1D::SceneNodeCurve1D(const Vector<float>& knots_, const Vector<float>& values_)
    : Destroyable(NodeType::Curve1D), knots(knots_), values(values_) {}

Reference<SceneNode>* SceneNodeCurve1D::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeCurve1D> copy(new SceneNodeCurve1D(knots, values));
    copyBaseFields(*this, *copy);
    return constructResult(result, copy);
}

void SceneNodeCurve1D::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

bool SceneNodeCurve1D::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::Curve1D) return false;
    const auto& node = static_cast<const SceneNodeCurve1D&>(*other);
    return std::ranges::equal(knots, node.knots) && std::ranges::equal(values, node.values);
}

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
