#include "preview/PathTracer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace Preview {

namespace {

constexpr float pi = std::numbers::pi_v<float>;
/// After so many reflections paths are ended by chance, the darker the sooner.
constexpr std::uint32_t certain_bounces = 3;
constexpr float max_survival = 0.95f;

/// The weight of a sample that was taken with density `mine` where another way had taken it with density `other`.
float powerHeuristic(float mine, float other) {
    const float ratio = other / mine;
    return 1.0f / (1.0f + ratio * ratio);
}

/// A colour for a face by its number.
Vec3 colourOfFace(std::uint32_t face) {
    std::uint32_t bits = (face + 1) * 0x9E3779B1u;
    bits ^= bits >> 15;
    bits *= 0x85EBCA77u;
    bits ^= bits >> 13;
    const auto part = [&](unsigned shift) { return 0.1f + 0.8f * static_cast<float>((bits >> shift) & 255u) / 255.0f; };
    return {part(0), part(8), part(16)};
}

Vec3 albedoOf(const SurfacePoint& point) {
    if (point.surface->random_triangle_colours) return colourOfFace(point.hit->hit.primID);
    const ColourSource& albedo = point.surface->albedo;
    if (albedo.image == nullptr) return albedo.constant;
    const Vec3 colour = albedo.at(point.uvOf(albedo.uv_set));
    return {std::min(colour.x, 1.0f), std::min(colour.y, 1.0f), std::min(colour.z, 1.0f)};
}

void put(std::span<float> pixel, std::int32_t offset, const Vec3& value) {
    if (offset < 0) return;
    const auto at = static_cast<std::size_t>(offset);
    pixel[at] = value.x;
    pixel[at + 1] = value.y;
    pixel[at + 2] = value.z;
}

void accumulate(std::span<float> pixel, std::int32_t offset, const Vec3& value) {
    if (offset < 0) return;
    const auto at = static_cast<std::size_t>(offset);
    pixel[at] += value.x;
    pixel[at + 1] += value.y;
    pixel[at + 2] += value.z;
}

/// A UID as a colour of three bytes, each divided by 255.
Vec3 colourOfUID(std::uint32_t uid) {
    const auto byte = [&](unsigned shift) { return static_cast<float>((uid >> shift) & 255u) / 255.0f; };
    return {byte(0), byte(8), byte(16)};
}

} // namespace

/// A path on its way.
struct PathTracer::Path {
    Sampler sampler;
    std::span<float> pixel;
    float time = 0.0f;
    /// What a unit of light adds to the pixel.
    Vec3 throughput{1.0f, 1.0f, 1.0f};
    std::uint32_t reflections = 0;
    /// With which the present direction was chosen, per steradian.
    float density = 0.0f;
    /// How much of the background is hidden.
    float alpha = 0.0f;
};

/// Where a path goes on after a reflection.
struct PathTracer::Start {
    Vec3 origin;
    /// The normals of the geometry and for shading, on the side that the path came from.
    Vec3 side;
    Vec3 shading;
    /// What a unit of light that is reflected here adds to the pixel, without the cosine.
    Vec3 reflected;
};

PathTracer::PathTracer(const World& world_, const Camera& camera_, const Lights& lights_, const Background& background_,
                       const ImageStore& store_, const PathSettings& settings_)
    : world(world_), camera(camera_), lights(lights_), background(background_), channels(store_.getChannels()),
      layer_width(store_.getLayerWidth()), scale(1.0f / static_cast<float>(store_.getFactor())),
      margin(static_cast<float>(store_.getMargin())), settings(settings_),
      max_luminance(std::min(settings_.max_contribution, std::numeric_limits<float>::max())) {}

inline void PathTracer::add(std::uint32_t layer, Vec3 light, const Path& path, std::uint32_t reflections) const {
    const float size = luminance(light);
    if (!(size <= max_luminance)) {
        if (!isFinite(light)) return;
        if (size > settings.max_contribution) light = light * (settings.max_contribution / size);
    }
    accumulate(path.pixel, channels.layers[std::min<std::size_t>(layer, channels.layers.size() - 1)], light);
    const std::int32_t pass = reflections == 0   ? channels.emission
                              : reflections == 1 ? channels.direct
                                                 : channels.indirect;
    accumulate(path.pixel, pass, light);
}

inline void PathTracer::addBackground(const Vec3& direction, Path& path) const {
    if (path.reflections == 0 && settings.hide_background) return;
    if (background.isBlackEverywhere()) return;
    add(background.getLayer(), path.throughput * background.radiance(direction), path, path.reflections);
    // Reflected sunlight has been added where it was reflected.
    if (path.reflections == 0 && background.hasSun())
        add(background.getSunLayer(), path.throughput * background.sunRadiance(direction), path, 0);
}

void PathTracer::trace(std::uint32_t x, std::uint32_t y, std::uint32_t count, std::uint32_t sample,
                       std::span<float> pixels) const {
    // The rays of a row are made together, since the processor works on several of them at once.
    constexpr std::uint32_t row_size = SamplerRow::capacity;
    RayRow rays;
    std::array<RTCRayHit, row_size> hits;
    const std::size_t n = channels.floats_per_pixel;
    std::fill(pixels.begin(), pixels.end(), 0.0f);
    const bool moving = world.hasMotion();
    for (std::uint32_t first = 0; first < count; first += row_size) {
        const std::uint32_t size = std::min(row_size, count - first);
        SamplerRow samplers(settings.seed, y * layer_width + x + first, size, sample);
        for (std::uint32_t i = 0; i < size; ++i) {
            rays.x[i] = (static_cast<float>(x + first + i) + samplers.x[i]) * scale - margin;
            rays.y[i] = (static_cast<float>(y) + samplers.y[i]) * scale - margin;
        }
        camera.sampleRow(size, moving, samplers, rays);
        for (std::uint32_t i = 0; i < size; ++i)
            world.intersect(rays[i], RayKind::camera, hits[i]);
        for (std::uint32_t i = 0; i < size; ++i) {
            const float weight = rays.weight[i];
            Path path{samplers[i], pixels.subspan((first + i) * n, n), rays.time[i], {weight, weight, weight}};
            if (World::isMiss(hits[i]))
                addBackground(rays[i].direction, path);
            else
                follow(hits[i], path);
            if (channels.alpha >= 0) path.pixel[static_cast<std::size_t>(channels.alpha)] = path.alpha;
        }
    }
    if (sample != 0 || !channels.hasAuxiliary()) return;
    for (std::uint32_t i = 0; i < count; ++i)
        traceAuxiliary((static_cast<float>(x + i) + 0.5f) * scale - margin,
                       (static_cast<float>(y) + 0.5f) * scale - margin, pixels.subspan(i * n, n));
}

/// `hit` is the record of the camera's ray, which hit something.
void PathTracer::follow(RTCRayHit& hit, Path& path) const {
    for (;;) {
        const Vec3 direction = {hit.ray.dir_x, hit.ray.dir_y, hit.ray.dir_z};
        if (World::isMiss(hit)) {
            addBackground(direction, path);
            return;
        }
        const SurfacePoint point = world.pointAt(hit);
        // A face that is too small for its normal to be computed.
        if (!isFinite(point.normal)) return;
        // The normals on the side that the ray comes from.
        const bool outside = dot(point.normal, direction) < 0.0f;
        const Vec3 side = outside ? point.normal : -point.normal;
        if (path.reflections == 0) {
            if (point.surface->shadow_catcher) {
                if (!passShadowCatcher(point, path)) return;
                const SurfacePlace place = world.placeOf(point);
                world.intersect({place.position - side * place.clearance, direction, path.time}, RayKind::camera, hit);
                continue;
            }
            path.alpha = 1.0f;
            if (point.mask >= 0 && static_cast<std::size_t>(point.mask) < channels.object_masks.size())
                path.pixel[static_cast<std::size_t>(channels.object_masks[static_cast<std::size_t>(point.mask)])] =
                    1.0f;
            const std::int32_t mask = point.surface->mask;
            if (mask >= 0 && static_cast<std::size_t>(mask) < channels.material_masks.size())
                path.pixel[static_cast<std::size_t>(channels.material_masks[static_cast<std::size_t>(mask)])] = 1.0f;
        }
        if (point.surface->emits && (outside || point.surface->backface_emit))
            addEmission(point, direction, hit.ray.tfar, path);
        if (path.reflections >= settings.max_bounces) return;

        const Vec3 albedo = albedoOf(point);
        if (isBlack(albedo)) return;
        const SurfacePlace place = world.placeOf(point);
        if (!isFinite(place.position)) return;
        const Vec3 shading = outside ? place.shading_normal : -place.shading_normal;
        const Start start{place.position + side * place.clearance, side, shading, path.throughput * albedo};
        if (background.hasSun()) addSun(start, path);
        if (!lights.empty()) addLight(start, path);

        const Vec3 next = normalised(sampleCosine(shading, path.sampler.next2()));
        // Below the face, as smooth normals can have it: light that the face itself would hold back.
        if (!(dot(next, side) > 0.0f)) return;
        path.throughput = start.reflected;
        path.density = dot(next, shading) / pi;
        ++path.reflections;
        if (path.reflections > certain_bounces) {
            const float survival = std::min(maxComponent(path.throughput), max_survival);
            if (path.sampler.next1() >= survival) return;
            path.throughput = path.throughput * (1.0f / survival);
        }
        world.intersect({start.origin, next, path.time}, RayKind::other, hit);
    }
}

/// What only catches shadows lets the ray through, darkened by the fraction of the light that doesn't arrive there.
bool PathTracer::passShadowCatcher(const SurfacePoint& point, Path& path) const {
    const SurfacePlace place = world.placeOf(point);
    float arriving = 0.0f;
    float without_shadows = 0.0f;
    const auto weigh = [&](const Vec3& direction, float light, float distance) {
        // Lit from either side.
        const Vec3 side = dot(point.normal, direction) < 0.0f ? -point.normal : point.normal;
        without_shadows += light;
        const Ray ray{place.position + side * place.clearance, direction, path.time, distance};
        if (light > 0.0f && !world.isOccluded(ray)) arriving += light;
    };
    constexpr float far = std::numeric_limits<float>::infinity();
    const Vec3 up = point.normal.z < 0.0f ? -point.normal : point.normal;
    const Vec3 direction = normalised(sampleCosine(up, path.sampler.next2()));
    weigh(direction, luminance(background.radiance(direction)) * pi, far);
    if (background.hasSun()) {
        const Vec3 to_sun =
            sampleCap(background.getSky().getSunDirection(), Sky::cosineOfSunEdge(), path.sampler.next2());
        weigh(to_sun,
              luminance(background.getSky().getSunRadiance()) * Sky::sunSolidAngle() *
                  std::abs(dot(to_sun, point.normal)),
              far);
    }
    if (!lights.empty()) {
        const LightSample light = lights.sample(path.sampler.next1(), path.sampler.next2(), path.time);
        const Vec3 between = light.position - place.position;
        const float distance = length(between);
        const Vec3 towards = between * (1.0f / distance);
        const float cosine = light.surface->backface_emit ? std::abs(dot(light.normal, towards))
                                                          : std::max(0.0f, -dot(light.normal, towards));
        const float value = luminance(light.emission) * cosine * std::abs(dot(point.normal, towards)) /
                            (distance * distance * light.density);
        if (std::isfinite(value)) weigh(towards, value, distance * 0.9999f);
    }
    const float fraction = without_shadows > 0.0f ? arriving / without_shadows : 1.0f;
    path.alpha = 1.0f - (1.0f - path.alpha) * fraction;
    path.throughput = path.throughput * fraction;
    return fraction > 0.0f;
}

void PathTracer::addSun(const Start& start, Path& path) const {
    const Sky& sky = background.getSky();
    const Vec3 direction = normalised(sampleCap(sky.getSunDirection(), Sky::cosineOfSunEdge(), path.sampler.next2()));
    const float cosine = dot(start.shading, direction);
    if (!(cosine > 0.0f) || !(dot(start.side, direction) > 0.0f)) return;
    if (world.isOccluded({start.origin, direction, path.time})) return;
    add(background.getSunLayer(), start.reflected * sky.getSunRadiance() * (cosine * Sky::sunSolidAngle() / pi), path,
        path.reflections + 1);
}

void PathTracer::addLight(const Start& start, Path& path) const {
    const float choice = path.sampler.next1();
    const LightSample light = lights.sample(choice, path.sampler.next2(), path.time);
    const Vec3 between = light.position - start.origin;
    const float distance2 = dot(between, between);
    const float distance = std::sqrt(distance2);
    const Vec3 direction = between * (1.0f / distance);
    const float cosine = dot(start.shading, direction);
    float cosine_there = -dot(light.normal, direction);
    if (light.surface->backface_emit) cosine_there = std::abs(cosine_there);
    if (!(cosine > 0.0f) || !(cosine_there > 0.0f) || !(dot(start.side, direction) > 0.0f)) return;
    // Per steradian.
    const float density = light.density * distance2 / cosine_there;
    if (!(density > 0.0f) || !std::isfinite(density)) return;
    // Ends short of the light itself.
    if (world.isOccluded({start.origin, direction, path.time, distance * 0.9999f})) return;
    const float weight = powerHeuristic(density, cosine / pi);
    add(light.surface->layer, start.reflected * light.emission * (cosine / pi / density * weight), path,
        path.reflections + 1);
}

void PathTracer::addEmission(const SurfacePoint& point, const Vec3& direction, float distance, Path& path) const {
    const Vec3 emission = emissionOf(*point.surface, point.uvOf(point.surface->emission.uv_set));
    float weight = 1.0f;
    if (path.reflections > 0) {
        const float by_light = lights.densityAt(point) * distance * distance / std::abs(dot(point.normal, direction));
        weight = powerHeuristic(path.density, by_light);
    }
    add(point.surface->layer, path.throughput * emission * weight, path, path.reflections);
}

void PathTracer::traceAuxiliary(float x, float y, std::span<float> pixel) const {
    const Ray ray = camera.centralRay(x, y);
    RTCRayHit hit;
    if (!world.intersect(ray, RayKind::camera, hit)) return;
    const SurfacePoint point = world.pointAt(hit);
    const SurfacePlace place = world.placeOf(point);
    const bool outside = dot(point.normal, ray.direction) < 0.0f;
    put(pixel, channels.normals_pre_bump, outside ? place.shading_normal : -place.shading_normal);
    put(pixel, channels.normals, outside ? place.shading_normal : -place.shading_normal);
    put(pixel, channels.position, place.position);
    put(pixel, channels.material_id, colourOfUID(point.surface->uid));
    put(pixel, channels.object_id, colourOfUID(point.uid));
    if (channels.depth >= 0) pixel[static_cast<std::size_t>(channels.depth)] = hit.ray.tfar;
}

} // namespace Preview
