#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNode.h"

namespace Velmar {

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

/// Four curves of five knots that leave every colour as it is, named after their places.
Reference<ColourCurves> makeIdentityColourCurves();

/// Copies the four curves too.
Reference<ColourCurves> cloneColourCurves(const ColourCurves& curves);

} // namespace Velmar
