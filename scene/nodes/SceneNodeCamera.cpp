#include "scene/nodes/SceneNodeCamera.h"

#include "velmarexceptions.h"

#include "scene/ClassSupport.h"
#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/TransformPath.h"

namespace Velmar {

Reference<ApertureShape> ApertureShape::clone() const {
    return valueOfSlot<Reference<ApertureShape>>([this](auto* place) { return cloneInto(place); });
}

void ApertureCircular::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "aperture_shape");
    writeEmptyTag(stream, depth + 1, "circular");
    writeCloseTag(stream, depth, "aperture_shape");
}

Reference<ApertureShape>* ApertureCircular::cloneInto(Reference<ApertureShape>* result) const {
    return constructResult(result, new ApertureCircular);
}

namespace {

constexpr FieldList compared_fields(&SceneNodeCamera::aperture_radius, &SceneNodeCamera::focus_distance,
                                    &SceneNodeCamera::sensor_width, &SceneNodeCamera::lens_sensor_dist,
                                    &SceneNodeCamera::exposure_duration, &SceneNodeCamera::lens_shift_up_distance,
                                    &SceneNodeCamera::lens_shift_right_distance, &SceneNodeCamera::autofocus,
                                    &SceneNodeCamera::obstacle_map, &SceneNodeCamera::up, &SceneNodeCamera::forwards);

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
    compared_fields.copy(*this, *copy);
    copy->aperture_shape = aperture_shape->clone();
    copy->keyframes = keyframes;
    return constructResult(result, copy);
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
    return compared_fields.areEqual(*this, static_cast<const SceneNodeCamera&>(*other));
}

} // namespace Velmar
