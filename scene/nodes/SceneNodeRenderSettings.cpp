#include "scene/nodes/SceneNodeRenderSettings.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"

#include <cstddef>

namespace Velmar {

using Settings = SceneNodeRenderSettings;

namespace {

template <class T>
struct Option {
    std::string_view element;
    Optional<T> Settings::*field;
    T default_value;
};

// In the order of writing, which isn't that of the fields: the last two of the fields precede the channels.
constexpr Option<bool> bool_options[] = {
    {"bidirectional", &Settings::bidirectional, true},
    {"verbose", &Settings::verbose, false},
    {"write_aperture_preview", &Settings::write_aperture_preview, false},
    {"save_tonemapped_exr", &Settings::save_tonemapped_exr, false},
    {"save_untonemapped_exr", &Settings::save_untonemapped_exr, false},
    {"save_render_channels_exr", &Settings::save_render_channels_exr, false},
    {"save_vmi", &Settings::save_vmi, false},
    {"save_png", &Settings::save_png, true},
    {"auto_choose_num_threads", &Settings::auto_choose_num_threads, true},
    {"metropolis", &Settings::metropolis, true},
    {"logging", &Settings::logging, true},
    {"watermark", &Settings::watermark, false},
    {"aperture_diffraction", &Settings::aperture_diffraction, false},
    {"post_process_diffraction", &Settings::post_process_diffraction, true},
    {"render_foreground_alpha", &Settings::render_foreground_alpha, false},
    {"shadow_pass", &Settings::shadow_pass, false},
    {"info_overlay", &Settings::info_overlay, false},
    {"wait_for_slave_frames_on_stop", &Settings::wait_for_slave_frames_on_stop, false},
    {"close_gui_on_halt", &Settings::close_gui_on_halt, false},
    {"save_images_on_close", &Settings::save_images_on_close, false},
    {"vignetting", &Settings::vignetting, true},
    {"merging", &Settings::merging, true},
    {"dithering", &Settings::dithering, true},
    {"zero_alpha_outside_region", &Settings::zero_alpha_outside_region, false},
    {"receiver_quad", &Settings::receiver_quad, false},
    {"far_field_receiver", &Settings::far_field_receiver, false},
    {"clamp_contributions", &Settings::clamp_contributions, false},
    {"gpu", &Settings::gpu, false},
    {"allow_high_quality_bvh", &Settings::allow_high_quality_bvh, true},
    {"save_subdivided_meshes", &Settings::save_subdivided_meshes, false},
    {"normals_channel", &Settings::normals_channel, false},
    {"normals_pre_bump_channel", &Settings::normals_pre_bump_channel, false},
    {"position_channel", &Settings::position_channel, false},
    {"depth_channel", &Settings::depth_channel, false},
    {"material_id_channel", &Settings::material_id_channel, false},
    {"object_id_channel", &Settings::object_id_channel, false},
    {"foreground_channel", &Settings::foreground_channel, false},
    {"material_masks", &Settings::material_masks, false},
    {"object_masks", &Settings::object_masks, false},
    {"direct_lighting_channel", &Settings::direct_lighting_channel, false},
    {"indirect_lighting_channel", &Settings::indirect_lighting_channel, false},
    {"specular_reflection_lighting_channel", &Settings::specular_reflection_lighting_channel, false},
    {"refraction_lighting_channel", &Settings::refraction_lighting_channel, false},
    {"transmission_lighting_channel", &Settings::transmission_lighting_channel, false},
    {"emission_lighting_channel", &Settings::emission_lighting_channel, false},
    {"participating_media_lighting_channel", &Settings::participating_media_lighting_channel, false},
    {"sss_lighting_channel", &Settings::sss_lighting_channel, false},
};

constexpr Option<std::int32_t> integer_options[] = {
    {"max_depth", &Settings::max_depth, 10000},
    {"gpu_max_depth", &Settings::gpu_max_depth, 8},
    {"max_num_consec_rejections", &Settings::max_num_consec_rejections, 10000},
    {"num_threads", &Settings::num_threads, 1},
    {"width", &Settings::width, 800},
    {"height", &Settings::height, 600},
    {"super_sample_factor", &Settings::super_sample_factor, 2},
    {"receiver_num_wavelength_buckets", &Settings::receiver_num_wavelength_buckets, 16},
};

constexpr Option<double> real_options[] = {
    {"halt_time", &Settings::halt_time, -1.0},
    {"halt_samples_per_pixel", &Settings::halt_samples_per_pixel, -1.0},
    {"large_mutation_prob", &Settings::large_mutation_prob, 0.4},
    {"max_change", &Settings::max_change, 0.01},
    {"image_save_period", &Settings::image_save_period, 1800.0},
    {"max_contribution", &Settings::max_contribution, 10.0},
};

constexpr Option<Vec3d> vector_options[] = {
    {"receiver_quad_pos", &Settings::receiver_quad_pos, {0, 0, 0}},
    {"receiver_quad_i", &Settings::receiver_quad_i, {1, 0, 0}},
    {"receiver_quad_j", &Settings::receiver_quad_j, {0, 1, 0}},
};

/// Calls `visit` with every option that has an element, in the order of writing.
template <class Visit>
void forEachOption(Visit visit) {
    for (const auto& option : bool_options)
        visit(option);
    for (const auto& option : integer_options)
        visit(option);
    for (const auto& option : real_options)
        visit(option);
    for (const auto& option : vector_options)
        visit(option);
}

void writeOption(OStream& stream, std::uint32_t depth, std::string_view element, bool value) {
    writeBoolElement(stream, depth, element, value);
}

void writeOption(OStream& stream, std::uint32_t depth, std::string_view element, std::int32_t value) {
    writeInt32Element(stream, depth, element, value);
}

void writeOption(OStream& stream, std::uint32_t depth, std::string_view element, double value) {
    writeDoubleElement(stream, depth, element, value);
}

void writeOption(OStream& stream, std::uint32_t depth, std::string_view element, const Vec3d& value) {
    writeVec3Element(stream, depth, element, value);
}

void writeRegion(OStream& stream, std::uint32_t depth, const RenderRegion& region) {
    writeOpenTag(stream, depth, "render_region");
    writeInt32Element(stream, depth + 1, "x1", region.x1);
    writeInt32Element(stream, depth + 1, "y1", region.y1);
    writeInt32Element(stream, depth + 1, "x2", region.x2);
    writeInt32Element(stream, depth + 1, "y2", region.y2);
    writeCloseTag(stream, depth, "render_region");
}

void writeCurves(OStream& stream, std::uint32_t depth, const ColourCurves& curves) {
    const XMLWriteOptions options{};
    writeOpenTag(stream, depth, "colour_curves");
    curves.overall->writeXML(stream, depth + 1, options);
    curves.red->writeXML(stream, depth + 1, options);
    curves.green->writeXML(stream, depth + 1, options);
    curves.blue->writeXML(stream, depth + 1, options);
    writeCloseTag(stream, depth, "colour_curves");
}

} // namespace

SceneNodeRenderSettings::SceneNodeRenderSettings() : Destroyable(NodeType::RenderSettings) {
    name = "Render Settings";
}

SceneNodeRenderSettings::~SceneNodeRenderSettings() = default;

Reference<SceneNodeRenderSettings> SceneNodeRenderSettings::getDefaults() {
    constexpr double third = 1.0 / 3.0;

    Reference<SceneNodeRenderSettings> settings(new SceneNodeRenderSettings);
    forEachOption([&](const auto& option) { ((*settings).*option.field).set(option.default_value); });
    settings->splat_filter = new SplatFilterFastBox;
    settings->downsize_filter = new DownsizeFilterMNCubic;
    settings->white_point = new WhitePoint(third, third);
    settings->colour_curves = makeIdentityColourCurves();
    return settings;
}

Reference<SceneNode>* SceneNodeRenderSettings::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeRenderSettings> copy(new SceneNodeRenderSettings);
    copyBaseFields(*this, *copy);
    forEachOption([&](const auto& option) { (*copy).*option.field = this->*option.field; });
    copy->render_regions = render_regions;
    if (splat_filter) copy->splat_filter = splat_filter->clone();
    if (downsize_filter) copy->downsize_filter = downsize_filter->clone();
    if (white_point) copy->white_point = new WhitePoint(white_point->x, white_point->y);
    if (colour_curves) copy->colour_curves = cloneColourCurves(*colour_curves);
    copy->layer_settings.resize(layer_settings.size());
    for (std::size_t i = 0; i < layer_settings.size(); ++i)
        copy->layer_settings[i] = layer_settings[i]->clone();
    return constructResult(result, copy);
}

void SceneNodeRenderSettings::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "renderer_settings");
    writeNodeIdentity(stream, depth + 1, *this);
    forEachOption([&](const auto& option) {
        const auto& setting = this->*option.field;
        if (setting.has_value) writeOption(stream, depth + 1, option.element, setting.value);
    });
    for (const RenderRegion& region : render_regions)
        writeRegion(stream, depth + 1, region);
    if (splat_filter) splat_filter->writeXML(stream, depth + 1);
    if (downsize_filter) downsize_filter->writeXML(stream, depth + 1);
    if (white_point) white_point->writeXML(stream, depth + 1);
    for (const Reference<LayerSetting>& layer : layer_settings)
        layer->writeXML(stream, depth + 1);
    if (colour_curves) writeCurves(stream, depth + 1, *colour_curves);
    writeCloseTag(stream, depth, "renderer_settings");
}

} // namespace Velmar
