#pragma once

#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/SceneNode.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// A setting that may be absent: only what was set reaches a document. The value of one that wasn't is zero. Its layout
/// is shared with the renderer library.
template <class T>
struct Optional {
    T value{};
    bool has_value = false;

    void set(const T& new_value) {
        value = new_value;
        has_value = true;
    }

    bool operator==(const Optional&) const = default;
};

static_assert(sizeof(Optional<bool>) == 2 && offsetof(Optional<bool>, has_value) == 1);
static_assert(sizeof(Optional<std::int32_t>) == 8 && offsetof(Optional<std::int32_t>, has_value) == 4);
static_assert(sizeof(Optional<double>) == 16 && offsetof(Optional<double>, has_value) == 8);
static_assert(sizeof(Optional<Vec3d>) == 32 && offsetof(Optional<Vec3d>, has_value) == 24);

class ColourCurves;
class DownsizeFilter;
class LayerSetting;
class SplatFilter;
class WhitePoint;

/// A part of the image, in pixels. Its fields have another order than its elements.
struct RenderRegion {
    std::int32_t x1 = 0;
    std::int32_t x2 = 0;
    std::int32_t y1 = 0;
    std::int32_t y2 = 0;

    bool operator==(const RenderRegion&) const = default;
};

static_assert(offsetof(RenderRegion, x1) == 0);
static_assert(offsetof(RenderRegion, x2) == 4);
static_assert(offsetof(RenderRegion, y1) == 8);
static_assert(offsetof(RenderRegion, y2) == 12);
static_assert(sizeof(RenderRegion) == 16);

/// Every option of a render. Only what is set reaches the document; what is absent falls to the renderer's defaults.
/// The renderer library reads the fields by their offsets, and nothing checks their values.
class SceneNodeRenderSettings : public Destroyable<SceneNodeRenderSettings, PlainSceneNode> {
  public:
    /// With every option unset but `reserved_option_1`.
    SceneNodeRenderSettings();
    ~SceneNodeRenderSettings();

    /// A new node with every option set to its default, and with filters, white point and curves.
    static Reference<SceneNodeRenderSettings> getDefaults();

    /// Filters, white point, curves and layer settings are copied too.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    Optional<bool> bidirectional;
    Optional<bool> verbose;
    Optional<bool> write_aperture_preview;
    Optional<bool> save_tonemapped_exr;
    Optional<bool> save_untonemapped_exr;
    Optional<bool> save_render_channels_exr;
    Optional<bool> save_vmi;
    Optional<bool> save_png;
    Optional<bool> auto_choose_num_threads;
    Optional<bool> metropolis;
    Optional<bool> logging;
    Optional<bool> watermark;
    Optional<bool> aperture_diffraction;
    Optional<bool> post_process_diffraction;
    Optional<bool> render_foreground_alpha;
    Optional<bool> shadow_pass;
    Optional<bool> info_overlay;
    Optional<bool> wait_for_slave_frames_on_stop;
    Optional<bool> close_gui_on_halt;
    Optional<bool> save_images_on_close;
    Optional<bool> vignetting;
    Optional<bool> merging;
    Optional<bool> dithering;
    Optional<bool> zero_alpha_outside_region;
    Optional<bool> receiver_quad;
    Optional<bool> far_field_receiver;
    Optional<bool> clamp_contributions;
    Optional<bool> gpu;
    /// The two without an element keep their place for the renderer library and aren't copied.
    Optional<bool> reserved_option_0;
    Optional<bool> reserved_option_1{true, true};
    Optional<bool> normals_channel;
    Optional<bool> normals_pre_bump_channel;
    Optional<bool> position_channel;
    Optional<bool> depth_channel;
    Optional<bool> material_id_channel;
    Optional<bool> object_id_channel;
    Optional<bool> foreground_channel;
    Optional<bool> material_masks;
    Optional<bool> object_masks;
    Optional<bool> direct_lighting_channel;
    Optional<bool> indirect_lighting_channel;
    Optional<bool> specular_reflection_lighting_channel;
    Optional<bool> refraction_lighting_channel;
    Optional<bool> transmission_lighting_channel;
    Optional<bool> emission_lighting_channel;
    Optional<bool> participating_media_lighting_channel;
    Optional<bool> sss_lighting_channel;
    Optional<bool> allow_high_quality_bvh;
    Optional<bool> save_subdivided_meshes;
    Optional<std::int32_t> max_depth;
    Optional<std::int32_t> gpu_max_depth;
    Optional<std::int32_t> max_num_consec_rejections;
    Optional<std::int32_t> num_threads;
    /// In pixels.
    Optional<std::int32_t> width;
    /// In pixels.
    Optional<std::int32_t> height;
    Optional<std::int32_t> super_sample_factor;
    Optional<std::int32_t> receiver_num_wavelength_buckets;
    /// In seconds.
    Optional<double> halt_time;
    Optional<double> halt_samples_per_pixel;
    Optional<double> large_mutation_prob;
    Optional<double> max_change;
    /// In seconds.
    Optional<double> image_save_period;
    Optional<double> max_contribution;
    Optional<Vec3d> receiver_quad_pos;
    Optional<Vec3d> receiver_quad_i;
    Optional<Vec3d> receiver_quad_j;

    Reference<SplatFilter> splat_filter;
    Reference<DownsizeFilter> downsize_filter;
    Reference<WhitePoint> white_point;
    Reference<ColourCurves> colour_curves;
    Vector<RenderRegion> render_regions;
    Vector<Reference<LayerSetting>> layer_settings;
};

static_assert(offsetof(SceneNodeRenderSettings, bidirectional) == 96);
static_assert(offsetof(SceneNodeRenderSettings, verbose) == 98);
static_assert(offsetof(SceneNodeRenderSettings, write_aperture_preview) == 100);
static_assert(offsetof(SceneNodeRenderSettings, save_tonemapped_exr) == 102);
static_assert(offsetof(SceneNodeRenderSettings, save_untonemapped_exr) == 104);
static_assert(offsetof(SceneNodeRenderSettings, save_render_channels_exr) == 106);
static_assert(offsetof(SceneNodeRenderSettings, save_vmi) == 108);
static_assert(offsetof(SceneNodeRenderSettings, save_png) == 110);
static_assert(offsetof(SceneNodeRenderSettings, auto_choose_num_threads) == 112);
static_assert(offsetof(SceneNodeRenderSettings, metropolis) == 114);
static_assert(offsetof(SceneNodeRenderSettings, logging) == 116);
static_assert(offsetof(SceneNodeRenderSettings, watermark) == 118);
static_assert(offsetof(SceneNodeRenderSettings, aperture_diffraction) == 120);
static_assert(offsetof(SceneNodeRenderSettings, post_process_diffraction) == 122);
static_assert(offsetof(SceneNodeRenderSettings, render_foreground_alpha) == 124);
static_assert(offsetof(SceneNodeRenderSettings, shadow_pass) == 126);
static_assert(offsetof(SceneNodeRenderSettings, info_overlay) == 128);
static_assert(offsetof(SceneNodeRenderSettings, wait_for_slave_frames_on_stop) == 130);
static_assert(offsetof(SceneNodeRenderSettings, close_gui_on_halt) == 132);
static_assert(offsetof(SceneNodeRenderSettings, save_images_on_close) == 134);
static_assert(offsetof(SceneNodeRenderSettings, vignetting) == 136);
static_assert(offsetof(SceneNodeRenderSettings, merging) == 138);
static_assert(offsetof(SceneNodeRenderSettings, dithering) == 140);
static_assert(offsetof(SceneNodeRenderSettings, zero_alpha_outside_region) == 142);
static_assert(offsetof(SceneNodeRenderSettings, receiver_quad) == 144);
static_assert(offsetof(SceneNodeRenderSettings, far_field_receiver) == 146);
static_assert(offsetof(SceneNodeRenderSettings, clamp_contributions) == 148);
static_assert(offsetof(SceneNodeRenderSettings, gpu) == 150);
static_assert(offsetof(SceneNodeRenderSettings, reserved_option_0) == 152);
static_assert(offsetof(SceneNodeRenderSettings, reserved_option_1) == 154);
static_assert(offsetof(SceneNodeRenderSettings, normals_channel) == 156);
static_assert(offsetof(SceneNodeRenderSettings, normals_pre_bump_channel) == 158);
static_assert(offsetof(SceneNodeRenderSettings, position_channel) == 160);
static_assert(offsetof(SceneNodeRenderSettings, depth_channel) == 162);
static_assert(offsetof(SceneNodeRenderSettings, material_id_channel) == 164);
static_assert(offsetof(SceneNodeRenderSettings, object_id_channel) == 166);
static_assert(offsetof(SceneNodeRenderSettings, foreground_channel) == 168);
static_assert(offsetof(SceneNodeRenderSettings, material_masks) == 170);
static_assert(offsetof(SceneNodeRenderSettings, object_masks) == 172);
static_assert(offsetof(SceneNodeRenderSettings, direct_lighting_channel) == 174);
static_assert(offsetof(SceneNodeRenderSettings, indirect_lighting_channel) == 176);
static_assert(offsetof(SceneNodeRenderSettings, specular_reflection_lighting_channel) == 178);
static_assert(offsetof(SceneNodeRenderSettings, refraction_lighting_channel) == 180);
static_assert(offsetof(SceneNodeRenderSettings, transmission_lighting_channel) == 182);
static_assert(offsetof(SceneNodeRenderSettings, emission_lighting_channel) == 184);
static_assert(offsetof(SceneNodeRenderSettings, participating_media_lighting_channel) == 186);
static_assert(offsetof(SceneNodeRenderSettings, sss_lighting_channel) == 188);
static_assert(offsetof(SceneNodeRenderSettings, allow_high_quality_bvh) == 190);
static_assert(offsetof(SceneNodeRenderSettings, save_subdivided_meshes) == 192);
static_assert(offsetof(SceneNodeRenderSettings, max_depth) == 196);
static_assert(offsetof(SceneNodeRenderSettings, gpu_max_depth) == 204);
static_assert(offsetof(SceneNodeRenderSettings, max_num_consec_rejections) == 212);
static_assert(offsetof(SceneNodeRenderSettings, num_threads) == 220);
static_assert(offsetof(SceneNodeRenderSettings, width) == 228);
static_assert(offsetof(SceneNodeRenderSettings, height) == 236);
static_assert(offsetof(SceneNodeRenderSettings, super_sample_factor) == 244);
static_assert(offsetof(SceneNodeRenderSettings, receiver_num_wavelength_buckets) == 252);
static_assert(offsetof(SceneNodeRenderSettings, halt_time) == 264);
static_assert(offsetof(SceneNodeRenderSettings, halt_samples_per_pixel) == 280);
static_assert(offsetof(SceneNodeRenderSettings, large_mutation_prob) == 296);
static_assert(offsetof(SceneNodeRenderSettings, max_change) == 312);
static_assert(offsetof(SceneNodeRenderSettings, image_save_period) == 328);
static_assert(offsetof(SceneNodeRenderSettings, max_contribution) == 344);
static_assert(offsetof(SceneNodeRenderSettings, receiver_quad_pos) == 360);
static_assert(offsetof(SceneNodeRenderSettings, receiver_quad_i) == 392);
static_assert(offsetof(SceneNodeRenderSettings, receiver_quad_j) == 424);
static_assert(offsetof(SceneNodeRenderSettings, splat_filter) == 456);
static_assert(offsetof(SceneNodeRenderSettings, downsize_filter) == 464);
static_assert(offsetof(SceneNodeRenderSettings, white_point) == 472);
static_assert(offsetof(SceneNodeRenderSettings, colour_curves) == 480);
static_assert(offsetof(SceneNodeRenderSettings, render_regions) == 488);
static_assert(offsetof(SceneNodeRenderSettings, layer_settings) == 512);
static_assert(sizeof(SceneNodeRenderSettings) == 536);

} // namespace Velmar
