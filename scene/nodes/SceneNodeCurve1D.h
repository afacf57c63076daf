#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "scene/SceneNode.h"

#include <cstddef>

namespace Velmar {

/// A function of one variable, given by knots. Nothing checks that there are as many values as knots or that the knots
/// ascend. Its name is empty until it is set.
class SceneNodeCurve1D : public Destroyable<SceneNodeCurve1D, PlainSceneNode> {
  public:
    SceneNodeCurve1D(const Vector<float>& knots_, const Vector<float>& values_);

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    /// The element has no UID, unlike that of every other node: a curve is part of another node's element.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    bool isEqual(const SceneNode* other) const override;

    Vector<float> knots;
    Vector<float> values;
};

static_assert(offsetof(SceneNodeCurve1D, knots) == 96);
static_assert(offsetof(SceneNodeCurve1D, values) == 120);
static_assert(sizeof(SceneNodeCurve1D) == 144);

class SceneNodeCurve1D;

/// The curves that an image's colours pass through. The four are nodes without a UID and belong to no scene. None is
/// null once built.
class ColourCurves : public Destroyable<ColourCurves, ThreadSafeRefCounted> {
  public:
    ColourCurves();
    ~ColourCurves();

    Reference<SceneNodeCurve1D> overall;
    Reference<SceneNodeCurve1D> red;
    Reference<SceneNodeCurve1D> green;
    Reference<SceneNodeCurve1D> blue;
};

static_assert(offsetof(ColourCurves, overall) == 16);
static_assert(offsetof(ColourCurves, red) == 24);
static_assert(offsetof(ColourCurves, green) == 32);
static_assert(offsetof(ColourCurves, blue) == 40);
static_assert(sizeof(ColourCurves) == 48);

/// Four curves of five knots that leave every colour as it is, named after their places.
Reference<ColourCurves> makeIdentityColourCurves();

/// Copies the four curves too.
Reference<ColourCurves> cloneColourCurves(const ColourCurves& curves);

} // namespace Velmar
