#include "scene/nodes/TransformPath.h"

#include "velmarexceptions.h"

#include "scene/nodes/NodeElements.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Velmar {

void writeKeyFrame(const KeyFrame& frame, OStream& stream, std::uint32_t depth) {
    writeDescribed(stream, depth, frame, nullptr);
}

namespace {

constexpr Vec4f identity_rotation{0.0f, 0.0f, 0.0f, 1.0f};

bool moves(std::span<const TransformFrame> frames) {
    const TransformFrame& first = frames.front();
    return std::any_of(frames.begin() + 1, frames.end(), [&first](const TransformFrame& frame) {
        return !(frame.translation == first.translation && frame.rotation == first.rotation && frame.S == first.S);
    });
}

/// Written so that a time that is NaN passes or fails exactly where each comparison says so.
void checkTimes(std::span<const TransformFrame> frames) {
    if (!(frames.front().time <= 0.0)) throw TransformPathExcep("First frame must have time <= 0.0");
    if (1.0 > frames.back().time) throw TransformPathExcep("Last frame must have time >= 1.0");
    for (std::size_t i = 1; i < frames.size(); ++i)
        if (frames[i - 1].time >= frames[i].time) throw TransformPathExcep("Frame times must be strictly increasing.");
}

/// The frames from the last at or before the start of the exposure to the first at or after its end: at least two.
std::span<const TransformFrame> trimmed(std::span<const TransformFrame> frames) {
    std::size_t first = 0;
    while (first + 1 < frames.size() && frames[first + 1].time <= 0.0)
        ++first;
    std::size_t last = frames.size() - 1;
    while (last > 0 && frames[last - 1].time >= 1.0)
        --last;
    return frames.subspan(first, last - first + 1);
}

Matrix4f mix(const Matrix4f& a, const Matrix4f& b, float t) {
    Matrix4f result;
    for (std::size_t c = 0; c < 4; ++c)
        result.setColumn(c, mix(a.column(c), b.column(c), t));
    return result;
}

/// The frame between `a` and `b` at `t`, with the time `time`.
TransformFrame between(const TransformFrame& a, const TransformFrame& b, float t, double time) {
    return {mix(a.translation, b.translation, t), slerp(a.rotation, b.rotation, t), mix(a.S, b.S, t), time};
}

Box4f frameBox(const Vec4f& translation, const Vec4f& rotation, const Matrix4f& S, const Box4f& box) {
    Matrix4f linear;
    quaternionToMatrix(rotation, linear);
    mul(linear, S, linear);
    Box4f result;
    boxBounds(box.min, box.max, linear, result.min, result.max);
    result.min = result.min + translation;
    result.max = result.max + translation;
    return result;
}

Box4f frameBox(const TransformFrame& frame, const Box4f& box) {
    return frameBox(frame.translation, frame.rotation, frame.S, box);
}

Box4f enclosing(const Box4f& a, const Box4f& b) {
    return {min(a.min, b.min), max(a.max, b.max)};
}

/// How many parts the way between two rotations is sampled in: 256 for half a turn.
int samplingSteps(const Vec4f& a, const Vec4f& b) {
    constexpr float steps_per_radian = 81.4873275756836f;
    const float theta = std::acos(std::min(1.0f, std::fabs(dot(a, b))));
    const float steps = std::ceil(theta * steps_per_radian);
    return steps < 2.0f ? 1 : static_cast<int>(steps);
}

/// Widens `bounds` by the frames between `a` and `b`, without those two.
void addFramesBetween(const TransformFrame& a, const TransformFrame& b, const Box4f& box, Box4f& bounds) {
    const int steps = samplingSteps(a.rotation, b.rotation);
    const float step = 1.0f / static_cast<float>(steps);
    const Vec4f end = dot(a.rotation, b.rotation) < 0.0f ? -b.rotation : b.rotation;
    for (int j = 1; j < steps; ++j) {
        const float t = static_cast<float>(j) * step;
        bounds = enclosing(bounds, frameBox(mix(a.translation, b.translation, t), normalised(mix(a.rotation, end, t)),
                                            mix(a.S, b.S, t), box));
    }
}

float margin(float low, float high) {
    return std::max(0.0015f * (high - low), 0.00001f);
}

} // namespace

void convertKeyFrames(const Vector<KeyFrame>& keyframes, TransformFrames& frames) {
    frames.reset(keyframes.size());
    TransformFrame* out = frames.data();
    for (const KeyFrame& key : keyframes) {
        const auto x = static_cast<float>(key.axis.x);
        const auto y = static_cast<float>(key.axis.y);
        const auto z = static_cast<float>(key.axis.z);
        const float inv = 1.0f / std::sqrt(x * x + y * y + z * z);
        // The negated half angle makes it the rotation by minus the angle, which is what key frames mean.
        const auto [s, c] = sineAndCosine(static_cast<float>(key.angle) * -0.5f);
        out->rotation = {x * inv * s, y * inv * s, z * inv * s, c};
        out->translation = {static_cast<float>(key.pos.x), static_cast<float>(key.pos.y), static_cast<float>(key.pos.z),
                            0.0f};
        out->time = key.time;
        float S[9];
        std::transform(std::begin(key.S), std::end(key.S), S, [](double entry) { return static_cast<float>(entry); });
        fromMatrix3AndTranslation(S, {0.0f, 0.0f, 0.0f}, out->S);
        ++out;
    }
}

void TransformPath::build(const Matrix4f& base, std::span<const TransformFrame> all) {
    frames.reset(0);
    if (all.empty()) throw TransformPathExcep("Must be at least one frame.");
    Matrix4f base_inverse;
    if (!inverseAffine(base, base_inverse)) throw TransformPathExcep("base transformation matrix is not invertible");
    if (moves(all))
        buildAnimated(base, all);
    else
        buildStatic(base, base_inverse, all.front());
}

void TransformPath::buildStatic(const Matrix4f& base, const Matrix4f& base_inverse, const TransformFrame& frame) {
    is_static = true;
    const Vec4f& q = frame.rotation;
    const Vec4f& t = frame.translation;
    Matrix4f rotation;
    quaternionToMatrix(q, rotation);
    Matrix4f rotation_inverse;
    quaternionToMatrix(Vec4f{-q.x, -q.y, -q.z, q.w} / dot(q, q), rotation_inverse);

    mul(rotation, frame.S, local_to_world);
    mul(local_to_world, base, local_to_world);
    local_to_world.setColumn(3, {t.x, t.y, t.z, 1.0f});

    Matrix4f S_inverse;
    if (!inverseAffine(frame.S, S_inverse)) throw TransformPathExcep("frame 0 S matrix is not invertible");
    // Not the reverse of the order above: users of the field rely on this one.
    mul(S_inverse, base_inverse, world_to_local);
    mul(world_to_local, rotation_inverse, world_to_local);
    world_to_local.setColumn(3, mul(world_to_local, Vec4f{-t.x, -t.y, -t.z, 1.0f}));

    const auto squaredLength = [this](std::size_t c) {
        return dot(local_to_world.column(c), local_to_world.column(c));
    };
    const auto [smallest, greatest] = std::minmax({squaredLength(0), squaredLength(1), squaredLength(2)});
    max_scale = std::sqrt(greatest);
    const float det = upperDeterminant(local_to_world);
    local_to_world_det = std::fabs(det);
    is_uniform_scale = greatest - smallest < 0.0001f * greatest && det > 0.0f;
    world_to_local_det = std::fabs(upperDeterminant(world_to_local));
}

void TransformPath::buildAnimated(const Matrix4f& base, std::span<const TransformFrame> all) {
    checkTimes(all);
    const std::span<const TransformFrame> kept = trimmed(all);
    frames.reset(kept.size());
    std::copy(kept.begin(), kept.end(), frames.begin());
    clipToExposure();
    foldIn(base);
    is_static = false;
    is_uniform_scale = false;
    max_scale = no_max_scale;
}

void TransformPath::clipToExposure() {
    TransformFrame& first = frames[0];
    if (first.time < 0.0) {
        const TransformFrame& next = frames[1];
        first = between(first, next, static_cast<float>(first.time / (first.time - next.time)), 0.0);
    }
    TransformFrame& last = frames[frames.size() - 1];
    if (last.time > 1.0) {
        const TransformFrame& before = frames[frames.size() - 2];
        last = between(before, last, static_cast<float>((1.0 - before.time) / (last.time - before.time)), 1.0);
    }
}

void TransformPath::foldIn(const Matrix4f& base) {
    const bool rotates = std::any_of(frames.begin(), frames.end(),
                                     [](const TransformFrame& frame) { return frame.rotation != identity_rotation; });
    for (TransformFrame& frame : frames) {
        mul(frame.S, base, frame.S);
        if (rotates) continue;
        // The base may hold a rotation, which must be interpolated as one.
        Matrix4f rotation;
        if (!polarDecomposition(frame.S, rotation, frame.S)) throw TransformPathExcep("polarDecomposition failed");
        frame.rotation = matrixToQuaternion(rotation);
    }
}

Box4f TransformPath::getBounds(const Vec4f& box_min, const Vec4f& box_max) const {
    Box4f bounds{box_min, box_max};
    if (is_static) {
        boxBounds(box_min, box_max, local_to_world, bounds.min, bounds.max);
        return bounds;
    }
    const Box4f box{box_min, box_max};
    bounds = frameBox(frames[0], box);
    for (std::size_t i = 1; i < frames.size(); ++i) {
        addFramesBetween(frames[i - 1], frames[i], box, bounds);
        bounds = enclosing(bounds, frameBox(frames[i], box));
    }
    const Vec4f m{margin(bounds.min.x, bounds.max.x), margin(bounds.min.y, bounds.max.y),
                  margin(bounds.min.z, bounds.max.z), 0.0f};
    return {bounds.min - m, bounds.max + m};
}

Box4f boundsAlongKeyFrames(const Vector<KeyFrame>& keyframes, const Matrix4f& base, const Box4f& box) {
    TransformFrames frames;
    convertKeyFrames(keyframes, frames);
    TransformPath path;
    path.build(base, frames);
    return path.getBounds(box.min, box.max);
}

} // namespace Velmar
