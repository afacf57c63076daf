#pragma once

#include "scene/ElementWriter.h"
#include "scene/MaterialElements.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/LightRecords.h"
#include "scene/nodes/RenderOptions.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/nodes/TransformPath.h"

/// The elements of the nodes of this folder and of what they hold. See `ElementWriter.h` for what a description says.

namespace Velmar {

template <>
inline constexpr std::string_view element_of<KeyFrame> = "keyframe";
template <>
inline constexpr std::string_view element_of<ApertureCircular> = "aperture_shape";
template <>
inline constexpr std::string_view element_of<SceneNodeCamera> = "camera";
template <>
inline constexpr std::string_view element_of<EmissionScale> = "emission_scale";
template <>
inline constexpr std::string_view element_of<IESProfile> = "ies_profile";
template <>
inline constexpr std::string_view element_of<SceneNodeBackgroundSettings> = "background_settings";
template <>
inline constexpr std::string_view element_of<SceneNodeMesh> = "mesh";
template <>
inline constexpr std::string_view element_of<SceneNodeModel> = "model2";
template <>
inline constexpr std::string_view element_of<SceneNodeSphere> = "sphere";
template <>
inline constexpr std::string_view element_of<SceneNodeCurve1D> = "curve1d";
template <>
inline constexpr std::string_view element_of<SplatFilterFastBox> = "splat_filter";
template <>
inline constexpr std::string_view element_of<DownsizeFilterMNCubic> = "downsize_filter";
template <>
inline constexpr std::string_view element_of<WhitePoint> = "white_point";
template <>
inline constexpr std::string_view element_of<LayerSetting> = "layer_setting";
template <>
inline constexpr std::string_view element_of<RenderRegion> = "render_region";
template <>
inline constexpr std::string_view element_of<SceneNodeRenderSettings> = "renderer_settings";

/// The element inside the one of a family that names the class.
template <class Object>
inline constexpr std::string_view kind_of{};
template <>
inline constexpr std::string_view kind_of<ApertureCircular> = "circular";
template <>
inline constexpr std::string_view kind_of<SplatFilterFastBox> = "fastbox";
template <>
inline constexpr std::string_view kind_of<DownsizeFilterMNCubic> = "mn_cubic";

// ---- motion

/// A rotation is left out when its angle is 0, whatever its axis.
template <class Elements>
void describe(Elements& elements, Described<Elements, KeyFrame>& frame) {
    elements.required("time", frame.time);
    elements.required("pos", frame.pos);
    // The element is called a quaternion but holds axis and angle: readers rely on both.
    if (elements.has("rotation_quaternion", frame.angle != 0.0))
        elements.group("rotation_quaternion", [&](Elements& inside) {
            inside.value("axis", frame.axis);
            inside.value("angle", frame.angle);
        });
    if (elements.has("S", !frame.hasIdentityS())) elements.value("S", frame.S);
}

inline const KeyFrame& firstFrame(const Vector<KeyFrame>& frames) {
    return frames[0];
}

/// For a reader, which has found one.
inline KeyFrame& firstFrame(Vector<KeyFrame>& frames) {
    frames.resize(1);
    return frames[0];
}

/// A single frame that does nothing but place the object.
inline bool isBarePosition(const Vector<KeyFrame>& frames) {
    return frames.size() == 1 && frames[0].time == 0.0 && frames[0].angle == 0.0 && frames[0].hasIdentityS();
}

// ---- the camera

template <class Elements>
void describeWhole(Elements& elements, Described<Elements, ApertureCircular>&) {
    elements.group(element_of<ApertureCircular>, [](Elements& inside) { inside.kind(kind_of<ApertureCircular>); });
}

inline constexpr std::string_view camera_types[] = {"thin-lens-perspective", "orthographic", "spherical"};
static_assert(SceneNodeCamera::thin_lens_perspective == 0 && SceneNodeCamera::spherical == 2);

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeCamera>& camera) {
    elements.identity(camera);
    elements.value("aperture_radius", camera.aperture_radius);
    elements.value("focus_distance", camera.focus_distance);
    elements.value("sensor_width", camera.sensor_width);
    elements.value("lens_sensor_dist", camera.lens_sensor_dist);
    elements.value("exposure_duration", camera.exposure_duration);
    elements.value("lens_shift_up_distance", camera.lens_shift_up_distance);
    elements.value("lens_shift_right_distance", camera.lens_shift_right_distance);
    elements.flag("autofocus", camera.autofocus);
    if (elements.has("obstacle_map", !camera.obstacle_map.empty()))
        elements.group("obstacle_map", [&](Elements& inside) { inside.path("path", camera.obstacle_map); });
    elements.part(camera.aperture_shape);
    elements.list(element_of<KeyFrame>, camera.keyframes);
    elements.value("up", camera.up);
    elements.value("forwards", camera.forwards);
    elements.word("camera_type", camera.camera_type, camera_types);
}

// ---- light

inline constexpr std::string_view emission_measures[] = {"luminous_flux", "luminous_intensity", "luminance",
                                                         "luminous_emittance"};
static_assert(EmissionScale::luminous_flux == 0 && EmissionScale::luminous_emittance == 3);

template <class Elements>
void describe(Elements& elements, Described<Elements, EmissionScale>& scale) {
    elements.word("measure", scale.measure, emission_measures);
    elements.required("value", scale.value);
    elements.reference("material_uid", scale.material, scale.material_uid);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, IESProfile>& profile) {
    elements.reference("material_uid", profile.material, profile.material_uid);
    elements.requiredPath("path", profile.path);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeBackgroundSettings>& background) {
    elements.identity(background);
    elements.record(element_of<EmissionScale>, background.emission_scale);
    auto& material = background.background_material;
    if (!elements.has("background_material", static_cast<bool>(material))) return;
    elements.group("background_material", [&](Elements& inside) {
        // Without a UID: this material is no node.
        inside.group(element_of<SceneNodeMaterial>, [&](Elements& content) {
            describeNamed(content, material, [&] {
                if (material) content.value("name", material->name);
            });
        });
    });
}

// ---- what is seen

/// What readers take for granted isn't in every case what the constructor sets, and a NaN counts as it.
template <class Elements>
void describeSettings(Elements& elements, Described<Elements, SceneNodeMesh>& mesh) {
    const auto numberOr = [&](std::string_view element, auto& field, double default_value) {
        elements.valueIf(field < default_value || field > default_value, element, field, default_value);
    };
    elements.identity(mesh);
    elements.valueOr("normal_smoothing", mesh.normal_smoothing, true);
    elements.valueOr("max_num_subdivisions", mesh.max_num_subdivisions, 0);
    elements.valueOr("num_smoothings", mesh.num_smoothings, 2);
    numberOr("subdivide_pixel_threshold", mesh.subdivide_pixel_threshold, 0.0);
    elements.valueOr("subdivision_smoothing", mesh.subdivision_smoothing, true);
    numberOr("subdivide_curvature_threshold", mesh.subdivide_curvature_threshold, 0.0);
    elements.valueOr("view_dependent_subdivision", mesh.view_dependent_subdivision, false);
    numberOr("displacement_error_threshold", mesh.displacement_error_threshold, 0.0);
    numberOr("scale", mesh.scale, 1.0);
}

/// The last element of a mesh.
template <class Elements>
void describeFile(Elements& elements, Described<Elements, String>& path) {
    elements.group("external", [&](Elements& inside) { inside.requiredPath("path", path); });
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeModel>& model) {
    elements.identity(model);
    elements.reference("geometry_uid", model.geometry, model.geometry_uid);
    elements.valueOr("scale", model.scale, 1.0);
    elements.valueOr("invisible_to_camera", model.invisible_to_camera, false);
    if (elements.has("rotation", !model.rotation->isIdentity()))
        elements.group("rotation", [&](Elements& inside) { inside.part(model.rotation); });
    if (elements.has("pos", isBarePosition(model.keyframes)))
        elements.value("pos", firstFrame(model.keyframes).pos);
    else
        elements.list(element_of<KeyFrame>, model.keyframes);
    // Written even when empty: readers rely on the element.
    elements.references("materials", "uid", model.materials, model.material_uids);
    elements.records(element_of<IESProfile>, model.ies_profiles);
    elements.records(element_of<EmissionScale>, model.emission_scales);
    elements.valueIf(!model.mask_name.empty(), "mask_name", model.mask_name, String());
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeSphere>& sphere) {
    elements.identity(sphere);
    elements.list(element_of<KeyFrame>, sphere.keyframes);
    elements.value("radius", sphere.radius);
    elements.reference("material_uid", sphere.material, sphere.material_uid);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeCurve1D>& curve) {
    elements.name(curve);
    elements.numbers("knots", curve.knots);
    elements.numbers("values", curve.values);
}

// ---- the image

template <class Elements>
void describeWhole(Elements& elements, Described<Elements, SplatFilterFastBox>&) {
    elements.group(element_of<SplatFilterFastBox>, [](Elements& inside) { inside.kind(kind_of<SplatFilterFastBox>); });
}

template <class Elements>
void describeWhole(Elements& elements, Described<Elements, DownsizeFilterMNCubic>& filter) {
    elements.group(element_of<DownsizeFilterMNCubic>, [&](Elements& inside) {
        inside.group(kind_of<DownsizeFilterMNCubic>, [&](Elements& content) {
            content.value("blur", filter.blur);
            content.value("ring", filter.ring);
            content.value("radius", filter.radius);
        });
    });
}

template <class Elements>
void describe(Elements& elements, Described<Elements, LayerSetting>& layer) {
    elements.required("name", layer.name);
    elements.value("enabled", layer.enabled);
    elements.group("layer_scale", [&](Elements& inside) { inside.part(layer.layer_scale); });
}

template <class Elements>
void describe(Elements& elements, Described<Elements, RenderRegion>& region) {
    elements.value("x1", region.x1);
    elements.value("y1", region.y1);
    elements.value("x2", region.x2);
    elements.value("y2", region.y2);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, ColourCurves>& curves) {
    elements.node(curves.overall);
    elements.node(curves.red);
    elements.node(curves.green);
    elements.node(curves.blue);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeRenderSettings>& settings) {
    elements.identity(settings);
    forEachRenderOption([&](const auto& option) {
        auto& setting = settings.*option.field;
        elements.option(option.element, setting.value, setting.has_value);
    });
    elements.list(element_of<RenderRegion>, settings.render_regions);
    elements.part(settings.splat_filter);
    elements.part(settings.downsize_filter);
    elements.part(settings.white_point);
    elements.records(element_of<LayerSetting>, settings.layer_settings);
    elements.record("colour_curves", settings.colour_curves);
}

} // namespace Velmar
