#pragma once

#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/SceneNode.h"
#include "scene/nodes/Optional.h"

#include <cstdint>

namespace Velmar {

class ColourCurves;
class DownsizeFilter;
class LayerSetting;
class SplatFilter;
class WhitePoint;

/// A part of the image, in pixels. Its fields stand in another order than its elements.
struct RenderRegion {
    std::int32_t x1 = 0;
    std::int32_t x2 = 0;
    std::int32_t y1 = 0;
    std::int32_t y2 = 0;

    bool operator==(const RenderRegion&) const = default;
};

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

} // namespace Velmar
