#include "scene/nodes/SceneNodeCamera.h"

#include "velmarexceptions.h"

#include "scene/ClassSupport.h"
#include "scene/TraversalState.h"
#include "scene/nodes/NodeElements.h"
#include "scene/nodes/TransformPath.h"

namespace Velmar {

Reference<ApertureShape> ApertureShape::clone() const {
    return valueOfSlot<Reference<ApertureShape>>([this](auto* place) { return cloneInto(place); });
}

void ApertureCircular::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    ElementWriter elements(stream, depth, &options);
    describeWhole(elements, *this);
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
    writeDescribed(stream, depth, *this, &options);
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
