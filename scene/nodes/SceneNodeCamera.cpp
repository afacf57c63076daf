#include "scene/nodes/SceneNodeCamera.h"

#include "velmarexceptions.h"

#include "scene/DependencyPaths.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/WorldBounds.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(SceneNodeCamera, aperture_radius) == 96);
static_assert(offsetof(SceneNodeCamera, focus_distance) == 104);
static_assert(offsetof(SceneNodeCamera, sensor_width) == 112);
static_assert(offsetof(SceneNodeCamera, lens_sensor_dist) == 120);
static_assert(offsetof(SceneNodeCamera, exposure_duration) == 128);
static_assert(offsetof(SceneNodeCamera, lens_shift_up_distance) == 136);
static_assert(offsetof(SceneNodeCamera, lens_shift_right_distance) == 144);
static_assert(offsetof(SceneNodeCamera, autofocus) == 152);
static_assert(offsetof(SceneNodeCamera, obstacle_map) == 160);
static_assert(offsetof(SceneNodeCamera, aperture_shape) == 200);
static_assert(offsetof(SceneNodeCamera, keyframes) == 208);
static_assert(offsetof(SceneNodeCamera, up) == 232);
static_assert(offsetof(SceneNodeCamera, forwards) == 256);
static_assert(offsetof(SceneNodeCamera, camera_type) == 280);
static_assert(sizeof(SceneNodeCamera) == 288);

namespace {

std::string_view cameraTypeName(std::uint32_t camera_type) {
    switch (camera_type) {
    case SceneNodeCamera::thin_lens_perspective:
        return "thin-lens-perspective";
    case SceneNodeCamera::orthographic:
        return "orthographic";
    case SceneNodeCamera::spherical:
        return "spherical";
    default:
        return "";
    }
}

} // namespace

SceneNodeCamera::SceneNodeCamera() : Destroyable(NodeType::Camera), aperture_shape(new ApertureCircular) {
    name = "Camera";
}

void SceneNodeCamera::setPosition(const Vec3d& pos) {
    if (keyframes.empty())
        keyframes.push_back({.pos = pos});
    else
        keyframes[0].pos = pos;
}

Reference<SceneNode>* SceneNodeCamera::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeCamera> copy(new SceneNodeCamera);
    copyBaseFields(*this, *copy);
    copy->aperture_radius = aperture_radius;
    copy->focus_distance = focus_distance;
    copy->sensor_width = sensor_width;
    copy->lens_sensor_dist = lens_sensor_dist;
    copy->exposure_duration = exposure_duration;
    copy->lens_shift_up_distance = lens_shift_up_distance;
    copy->lens_shift_right_distance = lens_shift_right_distance;
    copy->autofocus = autofocus;
    copy->obstacle_map = obstacle_map;
    copy->aperture_shape = aperture_shape->clone();
    copy->keyframes = keyframes;
    copy->up = up;
    copy->forwards = forwards;
    return new (static_cast<void*>(result)) Reference<SceneNode>(copy);
}

void SceneNodeCamera::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeOpenTag(stream, depth, "camera");
    writeNodeIdentity(stream, depth + 1, *this);
    writeDoubleElement(stream, depth + 1, "aperture_radius", aperture_radius);
    writeDoubleElement(stream, depth + 1, "focus_distance", focus_distance);
    writeDoubleElement(stream, depth + 1, "sensor_width", sensor_width);
    writeDoubleElement(stream, depth + 1, "lens_sensor_dist", lens_sensor_dist);
    writeDoubleElement(stream, depth + 1, "exposure_duration", exposure_duration);
    writeDoubleElement(stream, depth + 1, "lens_shift_up_distance", lens_shift_up_distance);
    writeDoubleElement(stream, depth + 1, "lens_shift_right_distance", lens_shift_right_distance);
    if (autofocus) writeEmptyTag(stream, depth + 1, "autofocus");
    if (!obstacle_map.empty()) {
        writeOpenTag(stream, depth + 1, "obstacle_map");
        writePathElement(stream, depth + 2, "path", obstacle_map, options);
        writeCloseTag(stream, depth + 1, "obstacle_map");
    }
    aperture_shape->writeXML(stream, depth + 1, options);
    for (const KeyFrame& frame : keyframes)
        writeKeyFrame(frame, stream, depth + 1);
    writeVec3Element(stream, depth + 1, "up", up);
    writeVec3Element(stream, depth + 1, "forwards", forwards);
    writeStringElement(stream, depth + 1, "camera_type", cameraTypeName(camera_type));
    writeCloseTag(stream, depth, "camera");
}

template <class Visit>
void SceneNodeCamera::forEachPath(Visit visit) {
    if (!obstacle_map.empty()) visit(obstacle_map);
    if (aperture_shape && aperture_shape->getType() == ApertureShape::image_kind)
        visit(static_cast<ApertureImage&>(*aperture_shape).path);
}

void SceneNodeCamera::traverse(TraversalState& state) {
    switch (state.kind) {
    case TraversalKind::GetDependencies:
        forEachPath([&](const String& path) { state.dependencies.push_back(path); });
        break;
    case TraversalKind::UpdateDependencies:
        forEachPath([&](String& path) { path = mapDependencyPath(state.path_map, path); });
        break;
    case TraversalKind::GetBounds:
        try {
            widenBoundsAlongKeyFrames(state, keyframes, aperture_radius);
        } catch (const TransformPathExcep&) {
            // A camera that was never placed is no part of what is seen.
        }
        break;
    case TraversalKind::OffsetUIDs:
        traverseOwnUID(state);
        break;
    default:
        break;
    }
}

bool SceneNodeCamera::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::Camera) return false;
    const auto& node = static_cast<const SceneNodeCamera&>(*other);
    return aperture_radius == node.aperture_radius && focus_distance == node.focus_distance &&
           sensor_width == node.sensor_width && lens_sensor_dist == node.lens_sensor_dist &&
           exposure_duration == node.exposure_duration && lens_shift_up_distance == node.lens_shift_up_distance &&
           lens_shift_right_distance == node.lens_shift_right_distance && autofocus == node.autofocus &&
           obstacle_map == node.obstacle_map && up == node.up && forwards == node.forwards;
}

} // namespace Velmar
