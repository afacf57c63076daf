#pragma once

#include "preview/ImageTexture.h"
#include "preview/Vec.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/Spectra.h"
#include "scene/nodes/LightRecords.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Preview {

/// The kind of a diffuse material, as its slot returns it.
constexpr std::uint32_t diffuse_material = 1;

/// A colour that is constant or comes from an image.
struct ColourSource {
    Vec3 constant;
    /// Null for a constant colour.
    std::shared_ptr<const ImageTexture> image;
    /// The image's values v become a v v + b v + c, raised to `exponent` first.
    float a = 0.0f;
    float b = 1.0f;
    float c = 0.0f;
    float exponent = 1.0f;
    std::uint32_t uv_set = 0;
    /// Texture coordinates become (m0 u + m1 v + m4, m2 u + m3 v + m5).
    std::array<float, 6> map = {1, 0, 0, 1, 0, 0};

    Vec3 at(const Vec2& uv) const;
    /// Not black everywhere, as far as is known without looking at an image.
    bool isLit() const { return image != nullptr || !isBlack(constant); }
};

/// What a surface does with light. Surfaces are diffuse.
struct Surface {
    /// Fraction of the light that is reflected, at most 1.
    ColourSource albedo;
    /// Radiance is the product of both.
    ColourSource emission;
    Vec3 emission_scale;
    std::uint32_t layer = 0;
    /// Index of the material's mask channel, or -1.
    std::int32_t mask = -1;
    /// Of the material's node; 0 for the surface of models without a material.
    std::uint32_t uid = 0;
    bool emits = false;
    bool backface_emit = false;
    bool shadow_catcher = false;
    bool random_triangle_colours = false;
};

/// The surfaces of a scene, made of its material nodes as they are met.
class SurfaceTable {
  public:
    /// `mask_names` are the material masks in the order of their channels.
    explicit SurfaceTable(std::vector<std::string> mask_names_);

    /// The index of the surface of a material node; of the default surface, a light grey, for null.
    std::uint32_t indexOf(const Velmar::SceneNodeMaterial* node);

    /// The index of a new surface: that of `node`, with an emission of `scale` on an area in square metres. A colour
    /// keeps its hue and gets the luminance that the measure asks for:
    ///   flux F: F / (pi area), intensity I: I / area, luminance L: L, emittance M: M / pi
    /// for Lambertian emitters, whose intensity is meant along the normal. A two-sided emitter has twice the area for
    /// its flux. Units are lumens, candelas and metres; 683 candelas per square metre are a radiance of 1.
    std::uint32_t addScaled(const Velmar::SceneNodeMaterial* node, const Velmar::EmissionScale& scale, double area);

    const Surface& operator[](std::uint32_t index) const { return surfaces[index]; }
    std::size_t size() const { return surfaces.size(); }

    /// Images stay loaded while the table is made anew for a changed scene.
    void reset(std::vector<std::string> mask_names_);

  private:
    Surface makeSurface(const Velmar::SceneNodeMaterial& node);
    ColourSource makeColour(const Velmar::WavelengthDependentParam* param, const Vec3& if_null);
    std::shared_ptr<const ImageTexture> loadImage(const std::string& path);

    std::vector<std::string> mask_names;
    std::vector<Surface> surfaces;
    std::map<const Velmar::SceneNodeMaterial*, std::uint32_t> index_of;
    std::map<std::string, std::shared_ptr<const ImageTexture>> images;
};

/// Linear colour of a spectrum: its value for red, green and blue, or red, green and blue to the power of its gamma.
/// `if_unknown` for null, numbers that aren't finite and kinds that aren't known, which are reported.
Vec3 colourOf(const Velmar::Spectrum* spectrum, const Vec3& if_unknown);

/// The constant part of a parameter; see `colourOf`.
Vec3 constantColourOf(const Velmar::WavelengthDependentParam* param, const Vec3& if_unknown);

/// Whether a background or a surface of this radiance is to have another luminance, and which: candelas per square
/// metre by the measure, or a negative number for measures that don't apply to an `area` of 0.
double luminanceOf(const Velmar::EmissionScale& scale, double area, bool two_sided);

} // namespace Preview
