#pragma once

#include "velmarvector.h"

#include "scene/nodes/KeyFrame.h"
#include "scene/nodes/Matrix4f.h"
#include "scene/nodes/TransformFrames.h"

#include <span>

namespace Velmar {

/// An axis-aligned box; w is 1 in both corners.
struct Box4f {
    Vec4f min;
    Vec4f max;
};

/// Fills `frames` with the single-precision form of `keyframes`, in their order. The quaternion of a frame stands for
/// the rotation by minus its angle. An axis of length 0 gives NaN; nothing refuses it.
/// Throws `BadAlloc`.
void convertKeyFrames(const Vector<KeyFrame>& keyframes, TransformFrames& frames);

/// The motion of an object through the exposure, from which boxes can be bounded. A path that doesn't move collapses
/// into two matrices; one that moves keeps frames that span exactly the times 0 to 1.
class TransformPath {
  public:
    /// Marks `max_scale` of a path that moves.
    static constexpr float no_max_scale = -666.0f;

    /// Builds the path of an object that is first transformed by `base`, which should be a rotation and a scale: its
    /// translation is lost on a path that doesn't move. A path of one frame, or of frames that differ in their times
    /// only, doesn't move and may have any times.
    /// Throws `TransformPathExcep`, after which the path is not to be used, and `BadAlloc`.
    void build(const Matrix4f& base, std::span<const TransformFrame> all);

    /// The box that encloses the given box, with w 1 in both corners, over the whole exposure. A path that moves is
    /// sampled, and a small margin makes up for what lies between the samples.
    Box4f getBounds(const Vec4f& box_min, const Vec4f& box_max) const;

    /// These two are written only for a path that doesn't move.
    Matrix4f world_to_local;
    Matrix4f local_to_world;
    /// Empty for a path that doesn't move.
    TransformFrames frames;
    bool is_static = false;
    /// The columns of `local_to_world` have nearly one length and it doesn't mirror. False for a path that moves.
    bool is_uniform_scale = false;
    /// The length of the longest column of `local_to_world`, or `no_max_scale`.
    float max_scale = no_max_scale;
    /// Absolute determinants of the upper 3 by 3, written only for a path that doesn't move.
    float world_to_local_det = 0.0f;
    float local_to_world_det = 0.0f;

  private:
    void buildStatic(const Matrix4f& base, const Matrix4f& base_inverse, const TransformFrame& frame);
    void buildAnimated(const Matrix4f& base, std::span<const TransformFrame> all);
    void clipToExposure();
    void foldIn(const Matrix4f& base);
};

/// The box that encloses the given box, transformed by `base` and moved along `keyframes`, over the whole exposure.
/// Throws as `TransformPath::build` does.
Box4f boundsAlongKeyFrames(const Vector<KeyFrame>& keyframes, const Matrix4f& base, const Box4f& box);

} // namespace Velmar
