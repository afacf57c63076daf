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

Camera::Camera(const Node& node, std::uint32_t width, std::uint32_t height, bool vignetting_)
    : type(node.camera_type), lens_radius(std::max(finiteOr0(node.aperture_radius, "aperture radius"), 0.0f)),
      focus_distance(positiveOr(node.focus_distance, 20.0, "focus distance")),
      lens_sensor_dist(positiveOr(node.lens_sensor_dist, 0.036, "distance from lens to sensor")),
      shift_right(finiteOr0(node.lens_shift_right_distance, "lens shift")),
      shift_up(finiteOr0(node.lens_shift_up_distance, "lens shift")),
      pixel_size(positiveOr(node.sensor_width, 0.036, "sensor width") / static_cast<float>(width)),
      middle_x(static_cast<float>(width) * 0.5f), middle_y(static_cast<float>(height) * 0.5f),
      autofocus(node.autofocus), vignetting(vignetting_) {
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
    inverse_focus_distance = 1.0f / focus_distance;
    inverse_lens_sensor_dist = 1.0f / lens_sensor_dist;
}

Camera::Frame Camera::frameAt(float time) const {
    const Affine placement = motion.at(double{time});
    return {placement.vector(right), placement.vector(up), placement.vector(forwards), placement.p};
}

Ray Camera::makeRay(const Frame& frame, float x, float y, const Vec2& lens, float time, float& weight) const {
    Ray ray;
    ray.time = time;
    weight = 1.0f;
    const float s = (x - middle_x) * pixel_size + shift_right;
    const float t = (middle_y - y) * pixel_size + shift_up;
    switch (type) {
    case Node::orthographic:
        ray.origin = frame.position + frame.right * s + frame.up * t;
        ray.direction = normalised(frame.forwards);
        break;
    case Node::spherical: {
        const float longitude = x / (2.0f * middle_x) - 0.5f;
        const float latitude = 0.25f - y / (4.0f * middle_y);
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
    default: {
        const float lens_right = lens.x * lens_radius;
        const float lens_up = lens.y * lens_radius;
        // From the place on the lens to where the ray through its middle meets the plane in focus, relative to the
        // distance of that.
        const float across = s * inverse_lens_sensor_dist - lens_right * inverse_focus_distance;
        const float along = t * inverse_lens_sensor_dist - lens_up * inverse_focus_distance;
        ray.origin = frame.position + frame.right * lens_right + frame.up * lens_up;
        ray.direction = normalised(frame.right * across + frame.up * along + frame.forwards);
        if (vignetting) {
            const float cosine2 =
                lens_sensor_dist * lens_sensor_dist / (lens_sensor_dist * lens_sensor_dist + s * s + t * t);
            weight = cosine2 * cosine2;
        }
    }
    }
    return ray;
}

Ray Camera::sampleRay(float x, float y, bool moving, Sampler& sampler, float& weight) const {
    const float time = moving || motion.isMoving() ? sampler.next1() : 0.5f;
    const Vec2 lens = type == Node::thin_lens_perspective && lens_radius > 0.0f ? sampleDisc(sampler.next2()) : Vec2{};
    if (motion.isMoving()) return makeRay(frameAt(time), x, y, lens, time, weight);
    return makeRay(at_rest, x, y, lens, time, weight);
}

Ray Camera::centralRay(float x, float y) const {
    float weight = 0.0f;
    return makeRay(at_rest, x, y, {}, 0.5f, weight);
}

void Camera::focusOn(const World& world) {
    if (!autofocus || type != Node::thin_lens_perspective) return;
    const Ray ray = centralRay(middle_x, middle_y);
    RTCRayHit hit;
    if (!world.intersect(ray, RayKind::camera, hit)) return;
    const float depth = dot(ray.direction * hit.ray.tfar, normalised(at_rest.forwards));
    if (!(depth > 0.0f) || !std::isfinite(depth)) return;
    focus_distance = depth;
    inverse_focus_distance = 1.0f / depth;
}

} // namespace Preview
