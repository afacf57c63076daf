#pragma once

#include "preview/Sky.h"
#include "preview/World.h"

#include "scene/nodes/SceneNodeBackgroundSettings.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Preview {

/// The light that comes from outside the scene.
class Background {
  public:
    /// Black.
    Background() = default;
    /// Black for null.
    explicit Background(const Velmar::SceneNodeBackgroundSettings* node);

    /// Without the sun's disc.
    Vec3 radiance(const Vec3& direction) const { return sky ? sky->radiance(direction) : uniform; }
    std::uint32_t getLayer() const { return layer; }

    bool hasSun() const { return sky && !isBlack(sky->getSunRadiance()); }
    /// Black beside the sun's disc. `direction` is a unit vector.
    Vec3 sunRadiance(const Vec3& direction) const;
    const Sky& getSky() const { return *sky; }
    std::uint32_t getSunLayer() const { return sun_layer; }

    bool isBlackEverywhere() const { return !sky && isBlack(uniform); }

  private:
    Vec3 uniform;
    std::optional<Sky> sky;
    std::uint32_t layer = 0;
    std::uint32_t sun_layer = 0;
};

/// A place on a light of the scene.
struct LightSample {
    Vec3 position;
    /// Unit vector, on the outer side.
    Vec3 normal;
    const Surface* surface = nullptr;
    Vec3 emission;
    /// Per unit of area.
    float density = 0.0f;
};

/// The emitting surfaces of a scene, of which places are chosen in proportion to area times luminance.
class Lights {
  public:
    Lights() = default;
    /// `world` must outlive this object. Throws `std::bad_alloc`.
    explicit Lights(const World& world_);

    bool empty() const { return lights.empty(); }
    std::size_t size() const { return lights.size(); }

    /// A place on a light at a moment of the exposure. `choice` and `place` are random numbers.
    LightSample sample(float choice, const Vec2& place, float time) const;

    /// The density with which `sample` chooses a place, per unit of area.
    float densityAt(const SurfacePoint& point) const;

  private:
    struct Light {
        /// Index of an instance, or of a sphere for `sphere_kind`.
        std::uint32_t object;
        std::uint32_t face;
        std::uint8_t kind;
        bool second_half;
    };
    static constexpr std::uint8_t sphere_kind = 2;

    void add(const Light& light, double area, const Surface& surface);

    const World* world = nullptr;
    std::vector<Light> lights;
    /// Sums of area times luminance, up to and including each light.
    std::vector<double> sums;
};

/// What a surface emits at a place, towards either side as it says.
Vec3 emissionOf(const Surface& surface, const Vec2& uv);

} // namespace Preview
