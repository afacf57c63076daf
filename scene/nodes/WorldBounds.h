#pragma once

#include "scene/TraversalState.h"
#include "scene/nodes/TransformPath.h"

#include <algorithm>

namespace Velmar {

/// Widens the bounds that a pass gathers, so that they enclose `box` too. A lane of `box` that is NaN changes nothing.
inline void widenBounds(TraversalState& state, const Box4f& box) {
    const float box_min[] = {box.min.x, box.min.y, box.min.z};
    const float box_max[] = {box.max.x, box.max.y, box.max.z};
    for (int axis = 0; axis < 3; ++axis) {
        state.bounds_min[axis] = std::min(state.bounds_min[axis], box_min[axis]);
        state.bounds_max[axis] = std::max(state.bounds_max[axis], box_max[axis]);
    }
}

/// Widens them by a box of half-size `radius` around the origin, moved along `keyframes`.
/// Throws `TransformPathExcep` and then leaves the bounds as they were.
inline void widenBoundsAlongKeyFrames(TraversalState& state, const Vector<KeyFrame>& keyframes, double radius) {
    const auto r = static_cast<float>(radius);
    Matrix4f base;
    identity(base);
    widenBounds(state, boundsAlongKeyFrames(keyframes, base, {{-r, -r, -r, 1.0f}, {r, r, r, 1.0f}}));
}

} // namespace Velmar
