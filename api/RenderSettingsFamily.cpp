#include "api/Handles.h"

#include <atomic>

using namespace Velmar;

namespace {

/// Keeps `node` until the process ends. The kept nodes are linked by their parent pointers, which nodes outside of
/// scenes don't use, so that leak checkers find them.
void keepForever(SceneNode& node) {
    static std::atomic<SceneNode*> last_kept{nullptr};
    node.increment();
    node.setParent(last_kept.exchange(&node));
}

} // namespace

VelmarRenderSettings* VelmarRenderSettings_Create() {
    // Hosts get an empty node. The node of defaults stays allocated, as after every earlier call.
    const Reference<SceneNodeRenderSettings> defaults = SceneNodeRenderSettings::getDefaults();
    auto* const node = new SceneNodeRenderSettings;
    keepForever(*defaults);
    return toHandle<VelmarRenderSettings>(node);
}

void VelmarRenderSettings_Width(VelmarRenderSettings* settings, int32_t width) {
    fromHandle(settings)->width.set(width);
}

void VelmarRenderSettings_Height(VelmarRenderSettings* settings, int32_t height) {
    fromHandle(settings)->height.set(height);
}

void VelmarRenderSettings_SuperSampleFactor(VelmarRenderSettings* settings, int32_t factor) {
    fromHandle(settings)->super_sample_factor.set(factor);
}

void VelmarRenderSettings_HaltTime(VelmarRenderSettings* settings, double seconds) {
    fromHandle(settings)->halt_time.set(seconds);
}

void VelmarRenderSettings_HaltSamplesPerPixel(VelmarRenderSettings* settings, double samples) {
    fromHandle(settings)->halt_samples_per_pixel.set(samples);
}

void VelmarRenderSettings_ImageSavePeriod(VelmarRenderSettings* settings, double seconds) {
    fromHandle(settings)->image_save_period.set(seconds);
}

void VelmarRenderSettings_Metropolis(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->metropolis.set(on != 0);
}

void VelmarRenderSettings_Bidirectional(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->bidirectional.set(on != 0);
}

void VelmarRenderSettings_Dithering(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->dithering.set(on != 0);
}

void VelmarRenderSettings_Vignetting(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->vignetting.set(on != 0);
}

void VelmarRenderSettings_ShadowPass(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->shadow_pass.set(on != 0);
}

void VelmarRenderSettings_RenderForegroundAlpha(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->render_foreground_alpha.set(on != 0);
}

void VelmarRenderSettings_InfoOverlay(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->info_overlay.set(on != 0);
}

void VelmarRenderSettings_DepthPass(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->depth_channel.set(on != 0);
}

void VelmarRenderSettings_MaterialIdTracer(VelmarRenderSettings* settings, VelmarBool on) {
    fromHandle(settings)->material_id_channel.set(on != 0);
}
