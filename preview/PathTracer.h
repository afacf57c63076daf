#pragma once

#include "preview/Camera.h"
#include "preview/ImageStore.h"
#include "preview/Lights.h"
#include "preview/Sampler.h"
#include "preview/World.h"

#include <cstdint>
#include <limits>
#include <span>

namespace Preview {

/// What the render settings say about paths.
struct PathSettings {
    /// How often light may be reflected.
    std::uint32_t max_bounces = 10000;
    /// Luminance above which a contribution is reduced to it; infinite for none.
    float max_contribution = std::numeric_limits<float>::infinity();
    /// Leaves out the background where the camera sees it, as a picture with an alpha channel wants it.
    bool hide_background = false;
    std::uint64_t seed = 0;
};

/// Follows light from the camera back to where it comes from: unidirectional path tracing with a place on a light and
/// one on the sun chosen at each reflection, weighed against directions that meet a light by chance (Veach and Guibas,
/// "Optimally Combining Sampling Techniques", SIGGRAPH 1995, power heuristic). The expected value of a sample is
/// exact but for the light after `max_bounces` reflections.
///
/// Objects of this class are read only and may be used from any number of threads.
class PathTracer {
  public:
    /// All arguments must outlive this object.
    PathTracer(const World& world_, const Camera& camera_, const Lights& lights_, const Background& background_,
               const ImageStore& store_, const PathSettings& settings_);

    /// One sample of each of `count` pixels of a layer, from (x, y) to the right. `pixels` takes `floats_per_pixel`
    /// floats for each. Auxiliary channels are written with the sample 0 and left at 0 for others.
    void trace(std::uint32_t x, std::uint32_t y, std::uint32_t count, std::uint32_t sample,
               std::span<float> pixels) const;

  private:
    struct Path;
    struct Start;

    void follow(RTCRayHit& hit, Path& path) const;
    bool passShadowCatcher(const SurfacePoint& point, Path& path) const;
    void addSun(const Start& start, Path& path) const;
    void addLight(const Start& start, Path& path) const;
    void addBackground(const Vec3& direction, Path& path) const;
    void addEmission(const SurfacePoint& point, const Vec3& direction, float distance, Path& path) const;
    void add(std::uint32_t layer, Vec3 light, const Path& path, std::uint32_t reflections) const;
    void traceAuxiliary(float x, float y, std::span<float> pixel) const;

    const World& world;
    const Camera& camera;
    const Lights& lights;
    const Background& background;
    const Channels& channels;
    std::uint32_t layer_width;
    /// Of a layer's pixel in the picture's pixels, and where the picture begins in a layer.
    float scale;
    float margin;
    PathSettings settings;
    /// Larger contributions are looked at more closely.
    float max_luminance;
};

} // namespace Preview
