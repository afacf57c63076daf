#include "preview/Camera.h"

#include "preview/SceneNodes.h"

#include <cmath>
#include <string>

namespace Preview {

namespace {

using Node = Velmar::SceneNodeCamera;

float positiveOr(double value, double otherwise, const char* name) {
    const auto single = static_cast<float>(value);
    if (std::isfinite(single) && single > 0.0f) return single;
    report(std::string("the camera's ") + name + " isn't above 0; taken as " + std::to_string(otherwise));
    return static_cast<float>(otherwise);
}

float finiteOr0(double value, const char* name) {
    const auto single = static_cast<float>(value);
    if (std::isfinite(single)) return single;
    report(std::string("the camera's ") + name + " isn't finite; taken as 0");
    return 0.0f;
}

Vec3 toVec3(const Velmar::Vec3d& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

} // namespace

/// `lens` is a place on the disc of radius 1.
inline Ray Camera::Optics::throughLens(const Frame& frame, float x, float y, const Vec2& lens) const {
    const float s = rightOf(x);
    const float t = aboveOf(y);
    const float lens_right = lens.x * lens_radius;
    const float lens_up = lens.y * lens_radius;
    // From the place on the lens to where the ray through its middle meets the plane in focus, relative to the distance
    // of that.
    const float across = s * inverse_lens_sensor_dist - lens_right * inverse_focus_distance;
    const float along = t * inverse_lens_sensor_dist - lens_up * inverse_focus_distance;
    return {frame.position + frame.right * lens_right + frame.up * lens_up,
            normalised(frame.right * across + frame.up * along + frame.forwards)};
}

/// The fraction of light that arrives there.
inline float Camera::Optics::vignettingAt(float x, float y) const {
    const float s = rightOf(x);
    const float t = aboveOf(y);
    const float cosine2 = squared_lens_sensor_dist / (squared_lens_sensor_dist + s * s + t * t);
    return cosine2 * cosine2;
}

Camera::Camera(const Node& node, std::uint32_t width, std::uint32_t height, bool vignetting)
    : type(node.camera_type), focus_distance(positiveOr(node.focus_distance, 20.0, "focus distance")),
      autofocus(node.autofocus) {
    const float lens_sensor_dist = positiveOr(node.lens_sensor_dist, 0.036, "distance from lens to sensor");
    optics.lens_radius = std::max(finiteOr0(node.aperture_radius, "aperture radius"), 0.0f);
    optics.inverse_focus_distance = 1.0f / focus_distance;
    optics.inverse_lens_sensor_dist = 1.0f / lens_sensor_dist;
    optics.squared_lens_sensor_dist = lens_sensor_dist * lens_sensor_dist;
    optics.shift_right = finiteOr0(node.lens_shift_right_distance, "lens shift");
    optics.shift_up = finiteOr0(node.lens_shift_up_distance, "lens shift");
    optics.pixel_size = positiveOr(node.sensor_width, 0.036, "sensor width") / static_cast<float>(width);
    optics.middle_x = static_cast<float>(width) * 0.5f;
    optics.middle_y = static_cast<float>(height) * 0.5f;
    optics.vignetting = vignetting;
    if (type > Node::spherical) {
        report("a camera of an unknown type is drawn with a thin lens");
        type = Node::thin_lens_perspective;
    }
    if (!node.obstacle_map.empty()) report("obstacle maps of cameras aren't rendered");
    if (node.aperture_shape && node.aperture_shape->getType() != 0)
        report("apertures other than circular ones are drawn circular");
    forwards = normalised(toVec3(node.forwards));
    right = normalised(cross(forwards, toVec3(node.up)));
    if (!isFinite(forwards) || !isFinite(right)) {
        report("the camera's directions make no sense; taken as forwards (0, 1, 0) and up (0, 0, 1)");
        forwards = {0.0f, 1.0f, 0.0f};
        right = {1.0f, 0.0f, 0.0f};
    }
    up = cross(right, forwards);
    std::string complaint;
    motion = Motion({node.keyframes.data(), node.keyframes.size()}, identity_matrix, complaint);
    if (!complaint.empty()) report("the camera: " + complaint + "; taken at rest");
    if (!isFinite(motion.at(0.0)) || !isFinite(motion.at(1.0))) {
        report("the camera's position isn't finite; taken as the origin");
        motion = Motion();
    }
    at_rest = frameAt(0.5f);
}

Camera::Frame Camera::frameAt(float time) const {
    const Affine placement = motion.at(double{time});
    return {placement.vector(right), placement.vector(up), placement.vector(forwards), placement.p};
}

Ray Camera::makeRay(const Frame& frame, float x, float y, const Vec2& lens, float time, float& weight) const {
    Ray ray;
    weight = 1.0f;
    switch (type) {
    case Node::orthographic:
        ray.origin = frame.position + frame.right * optics.rightOf(x) + frame.up * optics.aboveOf(y);
        ray.direction = normalised(frame.forwards);
        break;
    case Node::spherical: {
        const float longitude = x / (2.0f * optics.middle_x) - 0.5f;
        const float latitude = 0.25f - y / (4.0f * optics.middle_y);
        float sine = 0.0f;
        float cosine = 0.0f;
        float height = 0.0f;
        float width = 0.0f;
        sinCosOfTurn(longitude - std::floor(longitude), sine, cosine);
        sinCosOfTurn(latitude - std::floor(latitude), height, width);
        ray.origin = frame.position;
        ray.direction =
            normalised(frame.right * (sine * width) + frame.forwards * (cosine * width) + frame.up * height);
        break;
    }
    default:
        ray = optics.throughLens(frame, x, y, lens);
        if (optics.vignetting) weight = optics.vignettingAt(x, y);
    }
    ray.time = time;
    return ray;
}

Ray Camera::sampleRay(float x, float y, bool moving, Sampler& sampler, float& weight) const {
    const float time = sampleTime(moving, sampler);
    const Vec2 lens = hasOpenLens() ? sampleDisc(sampler.next2()) : Vec2{};
    if (motion.isMoving()) return makeRay(frameAt(time), x, y, lens, time, weight);
    return makeRay(at_rest, x, y, lens, time, weight);
}

void Camera::sampleRow(std::uint32_t count, bool moving, SamplerRow& samplers, RayRow& rays) const {
    const bool open = hasOpenLens();
    if (motion.isMoving() || type == Node::orthographic || type == Node::spherical) {
        for (std::uint32_t i = 0; i < count; ++i) {
            Sampler sampler = samplers[i];
            float weight = 0.0f;
            const Ray ray = sampleRay(rays.x[i], rays.y[i], moving, sampler, weight);
            rays.set(i, ray, weight);
            samplers.set(i, sampler);
        }
        return;
    }
    RayRow::Numbers lens_x = {};
    RayRow::Numbers lens_y = {};
    std::fill(std::begin(rays.time), std::end(rays.time), 0.5f);
    if (moving || open) {
        for (std::uint32_t i = 0; i < count; ++i) {
            Sampler sampler = samplers[i];
            rays.time[i] = sampleTime(moving, sampler);
            const Vec2 lens = open ? sampleDisc(sampler.next2()) : Vec2{};
            lens_x[i] = lens.x;
            lens_y[i] = lens.y;
            samplers.set(i, sampler);
        }
    }
    // Copies, which compilers see that the loop doesn't change.
    const Optics constant_optics = optics;
    const Frame frame = at_rest;
    for (std::uint32_t i = 0; i < count; ++i) {
        Ray ray = constant_optics.throughLens(frame, rays.x[i], rays.y[i], {lens_x[i], lens_y[i]});
        ray.time = rays.time[i];
        rays.set(i, ray, constant_optics.vignettingAt(rays.x[i], rays.y[i]));
    }
    if (!optics.vignetting) std::fill(std::begin(rays.weight), std::end(rays.weight), 1.0f);
}

Ray Camera::centralRay(float x, float y) const {
    float weight = 0.0f;
    return makeRay(at_rest, x, y, {}, 0.5f, weight);
}

void Camera::focusOn(const World& world) {
    if (!autofocus || type != Node::thin_lens_perspective) return;
    const Ray ray = centralRay(optics.middle_x, optics.middle_y);
    RTCRayHit hit;
    if (!world.intersect(ray, RayKind::camera, hit)) return;
    const float depth = dot(ray.direction * hit.ray.tfar, normalised(at_rest.forwards));
    if (!(depth > 0.0f) || !std::isfinite(depth)) return;
    focus_distance = depth;
    optics.inverse_focus_distance = 1.0f / depth;
}

} // namespace Preview
