#pragma once

#include "velmarmemory.h"
#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/TraversalState.h"
#include "scene/nodes/Matrix4f.h"
#include "utils/OStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <span>
#include <type_traits>

namespace Velmar {

/// One station of a motion during the exposure. Its layout is shared with the renderer library.
struct KeyFrame {
    static constexpr double identity_S[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    /// In metres.
    Vec3d pos{};
    /// 0 is the start of the exposure and 1 its end. Times outside are allowed.
    double time = 0.0;
    /// Of the rotation; need not be of unit length.
    Vec3d axis{0.0, 0.0, 1.0};
    /// In radians.
    double angle = 0.0;
    /// Scale and shear, row after row.
    double S[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    bool hasIdentityS() const { return std::equal(std::begin(S), std::end(S), std::begin(identity_S)); }

    bool operator==(const KeyFrame&) const = default;
};

static_assert(std::is_standard_layout_v<KeyFrame> && std::is_trivially_copyable_v<KeyFrame>);
static_assert(offsetof(KeyFrame, pos) == 0);
static_assert(offsetof(KeyFrame, time) == 24);
static_assert(offsetof(KeyFrame, axis) == 32);
static_assert(offsetof(KeyFrame, angle) == 56);
static_assert(offsetof(KeyFrame, S) == 64);
static_assert(sizeof(KeyFrame) == 136);

/// Writes the element `keyframe` with `depth` tabs before it. A rotation is left out when its angle is 0, whatever its
/// axis, and `S` when it is the identity.
void writeKeyFrame(const KeyFrame& frame, OStream& stream, std::uint32_t depth);

/// A key frame in the form that a `TransformPath` works on.
struct TransformFrame {
    /// w is 0.
    Vec4f translation;
    /// A quaternion.
    Vec4f rotation;
    /// Scale and shear, applied before the rotation.
    Matrix4f S;
    double time;
};

static_assert(std::is_trivially_copyable_v<TransformFrame>);

/// An array of frames, aligned to 16 bytes. Up to four lie in the object itself, as most paths have no more.
class TransformFrames {
  public:
    static constexpr std::size_t frames_inside = 4;

    TransformFrames() = default;
    TransformFrames(const TransformFrames&) = delete;
    TransformFrames& operator=(const TransformFrames&) = delete;
    ~TransformFrames() { sdkAlignedFree(heap); }

    /// Drops all frames and makes room for `count` new ones, all unwritten.
    void reset(std::size_t count) {
        if (count > capacity) {
            if (count > std::numeric_limits<std::size_t>::max() / sizeof(TransformFrame)) throw BadAlloc();
            void* const block = sdkAlignedMalloc(count * sizeof(TransformFrame), alignof(TransformFrame));
            sdkAlignedFree(heap);
            heap = static_cast<TransformFrame*>(block);
            capacity = count;
        }
        used = count;
    }

    std::size_t size() const { return used; }
    bool empty() const { return used == 0; }
    TransformFrame* data() { return heap != nullptr ? heap : inside; }
    const TransformFrame* data() const { return heap != nullptr ? heap : inside; }
    TransformFrame& operator[](std::size_t index) { return data()[index]; }
    const TransformFrame& operator[](std::size_t index) const { return data()[index]; }
    TransformFrame* begin() { return data(); }
    TransformFrame* end() { return data() + used; }
    const TransformFrame* begin() const { return data(); }
    const TransformFrame* end() const { return data() + used; }

  private:
    TransformFrame inside[frames_inside];
    TransformFrame* heap = nullptr;
    std::size_t used = 0;
    std::size_t capacity = frames_inside;
};

/// An axis-aligned box; w is 1 in both corners.
struct Box4f {
    Vec4f min;
    Vec4f max;
};

/// Fills `frames` with the single-precision form of `keyframes`, in their order. The quaternion of a frame is
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

    /// The box that encloses the given box, with w 1 in both corners, over the whole exposure. A moving path is
    /// sampled; a small margin covers the parts between the samples.
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
