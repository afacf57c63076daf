#pragma once

#include "velmarvec.h"

#include "scene/nodes/SceneNodeRenderSettings.h"

#include <cstdint>
#include <string_view>

/// The options of a render that have an element.

namespace Velmar {

/// An option of a render: its element, and the value in a node of defaults.
template <class T>
struct RenderOption {
    std::string_view element;
    Optional<T> SceneNodeRenderSettings::*field;
    T default_value;
};

// In the order of writing, which isn't that of the fields: the last two of the fields precede the channels.
inline constexpr RenderOption<bool> bool_render_options[] = {
    {"bidirectional", &SceneNodeRenderSettings::bidirectional, true},
    {"verbose", &SceneNodeRenderSettings::verbose, false},
    {"write_aperture_preview", &SceneNodeRenderSettings::write_aperture_preview, false},
    {"save_tonemapped_exr", &SceneNodeRenderSettings::save_tonemapped_exr, false},
    {"save_untonemapped_exr", &SceneNodeRenderSettings::save_untonemapped_exr, false},
    {"save_render_channels_exr", &SceneNodeRenderSettings::save_render_channels_exr, false},
    {"save_vmi", &SceneNodeRenderSettings::save_vmi, false},
    {"save_png", &SceneNodeRenderSettings::save_png, true},
    {"auto_choose_num_threads", &SceneNodeRenderSettings::auto_choose_num_threads, true},
    {"metropolis", &SceneNodeRenderSettings::metropolis, true},
    {"logging", &SceneNodeRenderSettings::logging, true},
    {"watermark", &SceneNodeRenderSettings::watermark, false},
    {"aperture_diffraction", &SceneNodeRenderSettings::aperture_diffraction, false},
    {"post_process_diffraction", &SceneNodeRenderSettings::post_process_diffraction, true},
    {"render_foreground_alpha", &SceneNodeRenderSettings::render_foreground_alpha, false},
    {"shadow_pass", &SceneNodeRenderSettings::shadow_pass, false},
    {"info_overlay", &SceneNodeRenderSettings::info_overlay, false},
    {"wait_for_slave_frames_on_stop", &SceneNodeRenderSettings::wait_for_slave_frames_on_stop, false},
    {"close_gui_on_halt", &SceneNodeRenderSettings::close_gui_on_halt, false},
    {"save_images_on_close", &SceneNodeRenderSettings::save_images_on_close, false},
    {"vignetting", &SceneNodeRenderSettings::vignetting, true},
    {"merging", &SceneNodeRenderSettings::merging, true},
    {"dithering", &SceneNodeRenderSettings::dithering, true},
    {"zero_alpha_outside_region", &SceneNodeRenderSettings::zero_alpha_outside_region, false},
    {"receiver_quad", &SceneNodeRenderSettings::receiver_quad, false},
    {"far_field_receiver", &SceneNodeRenderSettings::far_field_receiver, false},
    {"clamp_contributions", &SceneNodeRenderSettings::clamp_contributions, false},
    {"gpu", &SceneNodeRenderSettings::gpu, false},
    {"allow_high_quality_bvh", &SceneNodeRenderSettings::allow_high_quality_bvh, true},
    {"save_subdivided_meshes", &SceneNodeRenderSettings::save_subdivided_meshes, false},
    {"normals_channel", &SceneNodeRenderSettings::normals_channel, false},
    {"normals_pre_bump_channel", &SceneNodeRenderSettings::normals_pre_bump_channel, false},
    {"position_channel", &SceneNodeRenderSettings::position_channel, false},
    {"depth_channel", &SceneNodeRenderSettings::depth_channel, false},
    {"material_id_channel", &SceneNodeRenderSettings::material_id_channel, false},
    {"object_id_channel", &SceneNodeRenderSettings::object_id_channel, false},
    {"foreground_channel", &SceneNodeRenderSettings::foreground_channel, false},
    {"material_masks", &SceneNodeRenderSettings::material_masks, false},
    {"object_masks", &SceneNodeRenderSettings::object_masks, false},
    {"direct_lighting_channel", &SceneNodeRenderSettings::direct_lighting_channel, false},
    {"indirect_lighting_channel", &SceneNodeRenderSettings::indirect_lighting_channel, false},
    {"specular_reflection_lighting_channel", &SceneNodeRenderSettings::specular_reflection_lighting_channel, false},
    {"refraction_lighting_channel", &SceneNodeRenderSettings::refraction_lighting_channel, false},
    {"transmission_lighting_channel", &SceneNodeRenderSettings::transmission_lighting_channel, false},
    {"emission_lighting_channel", &SceneNodeRenderSettings::emission_lighting_channel, false},
    {"participating_media_lighting_channel", &SceneNodeRenderSettings::participating_media_lighting_channel, false},
    {"sss_lighting_channel", &SceneNodeRenderSettings::sss_lighting_channel, false},
};

inline constexpr RenderOption<std::int32_t> integer_render_options[] = {
    {"max_depth", &SceneNodeRenderSettings::max_depth, 10000},
    {"gpu_max_depth", &SceneNodeRenderSettings::gpu_max_depth, 8},
    {"max_num_consec_rejections", &SceneNodeRenderSettings::max_num_consec_rejections, 10000},
    {"num_threads", &SceneNodeRenderSettings::num_threads, 1},
    {"width", &SceneNodeRenderSettings::width, 800},
    {"height", &SceneNodeRenderSettings::height, 600},
    {"super_sample_factor", &SceneNodeRenderSettings::super_sample_factor, 2},
    {"receiver_num_wavelength_buckets", &SceneNodeRenderSettings::receiver_num_wavelength_buckets, 16},
};

inline constexpr RenderOption<double> real_render_options[] = {
    {"halt_time", &SceneNodeRenderSettings::halt_time, -1.0},
    {"halt_samples_per_pixel", &SceneNodeRenderSettings::halt_samples_per_pixel, -1.0},
    {"large_mutation_prob", &SceneNodeRenderSettings::large_mutation_prob, 0.4},
    {"max_change", &SceneNodeRenderSettings::max_change, 0.01},
    {"image_save_period", &SceneNodeRenderSettings::image_save_period, 1800.0},
    {"max_contribution", &SceneNodeRenderSettings::max_contribution, 10.0},
};

inline constexpr RenderOption<Vec3d> vector_render_options[] = {
    {"receiver_quad_pos", &SceneNodeRenderSettings::receiver_quad_pos, {0, 0, 0}},
    {"receiver_quad_i", &SceneNodeRenderSettings::receiver_quad_i, {1, 0, 0}},
    {"receiver_quad_j", &SceneNodeRenderSettings::receiver_quad_j, {0, 1, 0}},
};

/// Calls `visit` with every option that has an element, in the order of writing.
template <class Visit>
void forEachRenderOption(Visit visit) {
    for (const auto& option : bool_render_options)
        visit(option);
    for (const auto& option : integer_render_options)
        visit(option);
    for (const auto& option : real_render_options)
        visit(option);
    for (const auto& option : vector_render_options)
        visit(option);
}

} // namespace Velmar
