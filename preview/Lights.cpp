#include "preview/Lights.h"

#include "preview/Sampler.h"
#include "preview/SceneNodes.h"

#include "scene/Material.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Preview {

namespace {

constexpr std::uint32_t sun_sky_material = 10;

/// For choosing alone: an image counts as white.
float brightnessOf(const Surface& surface) {
    if (!surface.emits) return 0.0f;
    const Vec3 base = surface.emission.image == nullptr ? surface.emission.constant : Vec3{1.0f, 1.0f, 1.0f};
    return luminance(base * surface.emission_scale);
}

} // namespace

Vec3 emissionOf(const Surface& surface, const Vec2& uv) {
    return surface.emission.at(uv) * surface.emission_scale;
}

Background::Background(const Velmar::SceneNodeBackgroundSettings* node) {
    if (node == nullptr) return;
    const Velmar::Material* const material = node->background_material.getPointer();
    if (material == nullptr) return;
    switch (material->getMaterialKind()) {
    case diffuse_material: {
        layer = material->layer;
        if (!material->emission && !material->base_emission) break;
        uniform = constantColourOf(material->emission.getPointer(), {1.0f, 1.0f, 1.0f}) *
                  constantColourOf(material->base_emission.getPointer(), {1.0f, 1.0f, 1.0f});
        const Velmar::EmissionScale* const scale = node->emission_scale.getPointer();
        if (scale == nullptr || isBlack(uniform)) break;
        const double wanted = luminanceOf(*scale, 0.0, false);
        if (wanted >= 0.0)
            uniform = uniform * static_cast<float>(wanted / candelas_per_unit / double{luminance(uniform)});
        else
            report("an emission scale of the background that asks for a flux or an intensity isn't rendered");
        break;
    }
    case sun_sky_material: {
        const auto* const sun_sky = static_cast<const Velmar::SunSkyMaterial*>(material);
        const Vec3 direction = {static_cast<float>(sun_sky->sundir.x), static_cast<float>(sun_sky->sundir.y),
                                static_cast<float>(sun_sky->sundir.z)};
        if (!isFinite(direction) || isBlack(direction)) report("the sun's direction makes no sense; taken as up");
        sky.emplace(Sky::Settings{direction, sun_sky->turbidity, sun_sky->extra_atmospheric, sun_sky->enable_sky});
        layer = sun_sky->sky_layer;
        sun_layer = sun_sky->sun_layer;
        break;
    }
    default:
        report("a background of an unknown kind is black");
    }
}

Vec3 Background::sunRadiance(const Vec3& direction) const {
    if (!sky || dot(direction, sky->getSunDirection()) < Sky::cosineOfSunEdge()) return {};
    return sky->getSunRadiance();
}

Lights::Lights(const World& world_) : world(&world_) {
    const std::vector<Instance>& instances = world->getInstances();
    for (std::uint32_t i = 0; i < instances.size(); ++i) {
        const Instance& instance = instances[i];
        bool emits = false;
        for (std::uint32_t m = 0; m < instance.surface_count; ++m)
            emits = emits || world->surfaceOf(instance, m).emits;
        if (!emits) continue;
        const MeshGeometry& geometry = *instance.geometry;
        const std::size_t vertex_count = geometry.getMesh().verts.size();
        for (const MeshGeometry::FaceKind kind : {MeshGeometry::triangle_kind, MeshGeometry::quad_kind}) {
            for (std::uint32_t face = 0; face < geometry.countFaces(kind); ++face) {
                for (const bool second : {false, true}) {
                    if (second && kind == MeshGeometry::triangle_kind) continue;
                    const float at = second ? 1.0f : 0.0f;
                    const MeshGeometry::Corners corners = geometry.cornersAt(kind, face, at, at);
                    if (*std::max_element(corners.vertices.begin(), corners.vertices.end()) >= vertex_count) continue;
                    const Vec3 a = geometry.vertex(corners.vertices[0]);
                    const Vec3 doubled =
                        cross(instance.placement.to_world.vector(geometry.vertex(corners.vertices[1]) - a),
                              instance.placement.to_world.vector(geometry.vertex(corners.vertices[2]) - a));
                    add({i, face, static_cast<std::uint8_t>(kind), second}, 0.5 * double{length(doubled)},
                        world->surfaceOf(instance, corners.material));
                }
            }
        }
    }
    const std::vector<SphereShape>& spheres = world->getSpheres();
    for (std::uint32_t i = 0; i < spheres.size(); ++i)
        add({i, 0, sphere_kind, false}, 4 * std::numbers::pi * double{spheres[i].radius} * double{spheres[i].radius},
            world->surfaceOf(spheres[i]));
}

void Lights::add(const Light& light, double area, const Surface& surface) {
    const double weight = area * double{brightnessOf(surface)};
    if (!(weight > 0.0) || !std::isfinite(weight)) return;
    lights.push_back(light);
    sums.push_back((sums.empty() ? 0.0 : sums.back()) + weight);
}

LightSample Lights::sample(float choice, const Vec2& place, float time) const {
    const double at = double{choice} * sums.back();
    const auto found = std::upper_bound(sums.begin(), sums.end(), at);
    const std::size_t index = std::min(static_cast<std::size_t>(found - sums.begin()), lights.size() - 1);
    const Light& light = lights[index];
    const auto total = static_cast<float>(sums.back());
    LightSample sample;
    if (light.kind == sphere_kind) {
        const SphereShape& sphere = world->getSpheres()[light.object];
        // Archimedes: uniform by height and by longitude.
        const float height = 1.0f - 2.0f * place.x;
        const float r = std::sqrt(std::max(0.0f, 1.0f - height * height));
        float sine = 0.0f;
        float cosine = 0.0f;
        sinCosOfTurn(place.y, sine, cosine);
        sample.normal = {r * cosine, r * sine, height};
        sample.position = sphere.centreAt(time) + sample.normal * sphere.radius;
        sample.surface = &world->surfaceOf(sphere);
        sample.emission = emissionOf(*sample.surface, {});
        sample.density = brightnessOf(*sample.surface) / total;
        return sample;
    }
    const Instance& instance = world->getInstances()[light.object];
    const MeshGeometry& geometry = *instance.geometry;
    // Uniform over a triangle (Turk, "Generating Random Points in Triangles", Graphics Gems, 1990).
    const float root = std::sqrt(place.x);
    const float u = root * (1.0f - place.y);
    const float v = root * place.y;
    const float from = light.second_half ? 1.0f : 0.0f;
    MeshGeometry::Corners corners = geometry.cornersAt(light.kind, light.face, from, from);
    corners.u = u;
    corners.v = v;
    const Vec3 a = geometry.vertex(corners.vertices[0]);
    const Vec3 ab = geometry.vertex(corners.vertices[1]) - a;
    const Vec3 ac = geometry.vertex(corners.vertices[2]) - a;
    const Affine to_world = world->placementAt(instance, time);
    sample.position = to_world.point(a + ab * u + ac * v);
    const Vec3 normal = to_world.normal(cross(ab, ac));
    const float size = length(normal);
    sample.normal = normal * (1.0f / size);
    sample.surface = &world->surfaceOf(instance, corners.material);
    sample.emission = emissionOf(*sample.surface, geometry.uvAt(corners, sample.surface->emission.uv_set));
    sample.density = brightnessOf(*sample.surface) / total;
    if (instance.path >= 0) sample.density *= length(instance.placement.for_normals.vector(cross(ab, ac))) / size;
    return sample;
}

float Lights::densityAt(const SurfacePoint& point) const {
    if (lights.empty()) return 0.0f;
    return brightnessOf(*point.surface) / (static_cast<float>(sums.back()) * point.stretch);
}

} // namespace Preview
