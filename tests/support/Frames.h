#pragma once

#include "scene/nodes/TransformPath.h"

#include <cmath>
#include <vector>

/// Matrices, frames and lists of key frames for tests of motion.
namespace TestSupport {

inline Velmar::Matrix4f identityMatrix() {
    Velmar::Matrix4f m;
    Velmar::identity(m);
    return m;
}

inline Velmar::Matrix4f diagonal(float x, float y, float z) {
    return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}};
}

/// By the matrix convention: a positive angle takes x to y.
inline Velmar::Vec4f aboutZ(double angle) {
    return {0, 0, static_cast<float>(std::sin(angle / 2)), static_cast<float>(std::cos(angle / 2))};
}

/// A frame that is at `x` on the first axis and turned about the third.
inline Velmar::TransformFrame frameAt(double time, float x, double angle = 0.0) {
    return {{x, 0, 0, 0}, aboutZ(angle), identityMatrix(), time};
}

inline Velmar::Vector<Velmar::KeyFrame> asVector(const std::vector<Velmar::KeyFrame>& keyframes) {
    Velmar::Vector<Velmar::KeyFrame> result;
    for (const Velmar::KeyFrame& key : keyframes)
        result.push_back(key);
    return result;
}

using Frames = std::vector<Velmar::TransformFrame>;

} // namespace TestSupport
