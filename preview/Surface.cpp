#include "preview/Surface.h"

#include "preview/SceneNodes.h"
#include "preview/Sky.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SharedShaderInfo.h"
#include "scene/Spectra.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Preview {

namespace {

constexpr Vec3 default_albedo = {0.8f, 0.8f, 0.8f};

// Kinds of parameters, spectra and materials by the codes of their slots.
constexpr std::uint32_t constant_param = 0;
constexpr std::uint32_t texture_param = 2;
constexpr std::uint32_t rgb_spectrum = 2;
constexpr std::uint32_t uniform_spectrum = 4;

/// A parameter that is backed by an image: its record follows the base.
struct TextureParam : Velmar::WavelengthDependentParam {
    Velmar::Texture texture;
};

/// The affine kind of texture coordinates.
struct AffineCoordinates : Velmar::TexCoordGeneration {
    double values[6];
};

Vec3 clampTo(const Vec3& colour, float max) {
    return {std::clamp(colour.x, 0.0f, max), std::clamp(colour.y, 0.0f, max), std::clamp(colour.z, 0.0f, max)};
}

Vec3 notNegative(const Vec3& colour) {
    return {std::max(colour.x, 0.0f), std::max(colour.y, 0.0f), std::max(colour.z, 0.0f)};
}

} // namespace

Vec3 ColourSource::at(const Vec2& uv) const {
    if (image == nullptr) return constant;
    const Vec3 v = image->lookUp(map[0] * uv.x + map[1] * uv.y + map[4], map[2] * uv.x + map[3] * uv.y + map[5]);
    const auto shape = [this](float x) {
        const float decoded = exponent == 1.0f ? x : std::pow(std::max(x, 0.0f), exponent);
        return std::max((a * decoded + b) * decoded + c, 0.0f);
    };
    return {shape(v.x), shape(v.y), shape(v.z)};
}

Vec3 colourOf(const Velmar::Spectrum* spectrum, const Vec3& if_unknown) {
    if (spectrum == nullptr) return if_unknown;
    Vec3 colour;
    switch (spectrum->getType()) {
    case rgb_spectrum: {
        const auto* const rgb = static_cast<const Velmar::RGBSpectrum*>(spectrum);
        const auto decode = [&](double value) {
            return static_cast<float>(std::pow(std::max(value, 0.0), rgb->gamma));
        };
        colour = {decode(rgb->rgb.x), decode(rgb->rgb.y), decode(rgb->rgb.z)};
        break;
    }
    case uniform_spectrum: {
        const auto value = static_cast<float>(static_cast<const Velmar::UniformSpectrum*>(spectrum)->value);
        colour = {value, value, value};
        break;
    }
    default:
        report("a spectrum of an unknown kind is taken as its default");
        return if_unknown;
    }
    if (!isFinite(colour)) {
        report("a spectrum whose values aren't finite is taken as its default");
        return if_unknown;
    }
    return notNegative(colour);
}

Vec3 constantColourOf(const Velmar::WavelengthDependentParam* param, const Vec3& if_unknown) {
    if (param == nullptr) return if_unknown;
    if (param->getType() != constant_param) {
        report("a parameter that isn't a constant is taken as its default here");
        return if_unknown;
    }
    return colourOf(static_cast<const Velmar::ConstantWavelengthDependentParam*>(param)->spectrum.getPointer(),
                    if_unknown);
}

double luminanceOf(const Velmar::EmissionScale& scale, double area, bool two_sided) {
    const double value = std::isfinite(scale.value) ? std::max(scale.value, 0.0) : 0.0;
    switch (scale.measure) {
    case Velmar::EmissionScale::luminous_flux:
        return area > 0.0 ? value / (std::numbers::pi * area * (two_sided ? 2.0 : 1.0)) : -1.0;
    case Velmar::EmissionScale::luminous_intensity:
        return area > 0.0 ? value / area : -1.0;
    case Velmar::EmissionScale::luminance:
        return value;
    case Velmar::EmissionScale::luminous_emittance:
        return value / std::numbers::pi;
    default:
        return -1.0;
    }
}

SurfaceTable::SurfaceTable(std::vector<std::string> mask_names_) {
    reset(std::move(mask_names_));
}

void SurfaceTable::reset(std::vector<std::string> mask_names_) {
    mask_names = std::move(mask_names_);
    surfaces.clear();
    index_of.clear();
    Surface grey;
    grey.albedo.constant = default_albedo;
    surfaces.push_back(grey);
    index_of[nullptr] = 0;
}

std::uint32_t SurfaceTable::indexOf(const Velmar::SceneNodeMaterial* node) {
    const auto known = index_of.find(node);
    if (known != index_of.end()) return known->second;
    surfaces.push_back(makeSurface(*node));
    const auto index = static_cast<std::uint32_t>(surfaces.size() - 1);
    index_of[node] = index;
    return index;
}

std::uint32_t SurfaceTable::addScaled(const Velmar::SceneNodeMaterial* node, const Velmar::EmissionScale& scale,
                                      double area) {
    const std::uint32_t original = indexOf(node);
    Surface surface = surfaces[original];
    const double wanted = luminanceOf(scale, area, surface.backface_emit);
    if (wanted < 0.0) return original;
    // A material without an emission of its own emits white.
    if (!surface.emits) {
        surface.emission = ColourSource();
        surface.emission.constant = {1.0f, 1.0f, 1.0f};
        surface.emission_scale = {1.0f, 1.0f, 1.0f};
    }
    const Vec3 base = surface.emission.image == nullptr ? surface.emission.constant : Vec3{1.0f, 1.0f, 1.0f};
    const float present = luminance(base * surface.emission_scale);
    if (!(present > 0.0f)) return original;
    surface.emission_scale = surface.emission_scale * static_cast<float>(wanted / candelas_per_unit / double{present});
    surface.emits = wanted > 0.0;
    surfaces.push_back(surface);
    return static_cast<std::uint32_t>(surfaces.size() - 1);
}

Surface SurfaceTable::makeSurface(const Velmar::SceneNodeMaterial& node) {
    Surface surface = surfaces[0];
    surface.uid = node.getUID();
    const Velmar::Material* const material = node.material.getPointer();
    if (material == nullptr) return surface;
    if (material->getMaterialKind() == diffuse_material) {
        const auto* const diffuse = static_cast<const Velmar::DiffuseMaterial*>(material);
        surface.albedo = makeColour(diffuse->albedo.getPointer(), {});
        surface.albedo.constant = clampTo(surface.albedo.constant, 1.0f);
        surface.random_triangle_colours = diffuse->random_triangle_colours;
    } else {
        report("materials other than diffuse ones are drawn as grey diffuse ones");
    }
    if (material->bump || material->displacement || material->normal_map)
        report("bump, displacement and normal maps aren't rendered");
    if (material->shared_shader_info && !material->shared_shader_info->shader.empty())
        report("shader programs aren't rendered");

    const Velmar::WavelengthDependentParam* const base = material->base_emission.getPointer();
    const Velmar::WavelengthDependentParam* const emission = material->emission.getPointer();
    if (base != nullptr || emission != nullptr) {
        surface.emission = makeColour(emission, {1.0f, 1.0f, 1.0f});
        surface.emission_scale = constantColourOf(base, {1.0f, 1.0f, 1.0f});
        surface.emits = surface.emission.isLit() && !isBlack(surface.emission_scale);
    }
    surface.layer = material->layer;
    surface.backface_emit = material->backface_emit;
    surface.shadow_catcher = material->shadow_catcher;
    const auto mask = std::find(mask_names.begin(), mask_names.end(), material->mask_name.view());
    if (mask != mask_names.end()) surface.mask = static_cast<std::int32_t>(mask - mask_names.begin());
    return surface;
}

ColourSource SurfaceTable::makeColour(const Velmar::WavelengthDependentParam* param, const Vec3& if_null) {
    ColourSource source;
    source.constant = if_null;
    if (param == nullptr) return source;
    if (param->getType() != texture_param) {
        source.constant = constantColourOf(param, default_albedo);
        return source;
    }
    const Velmar::Texture& texture = static_cast<const TextureParam*>(param)->texture;
    source.constant = default_albedo;
    source.image = loadImage(std::string(texture.path.view()));
    if (source.image == nullptr) return source;
    source.a = static_cast<float>(texture.a);
    source.b = static_cast<float>(texture.b);
    source.c = static_cast<float>(texture.c);
    source.uv_set = static_cast<std::uint32_t>(std::max(texture.uv_set_index, 0));
    // Files of 8 bits hold values encoded for displays.
    constexpr float display_gamma = 2.2f;
    source.exponent = source.image->isLinear() ? 1.0f : display_gamma;
    if (texture.has_exponent) source.exponent = static_cast<float>(texture.exponent);
    const Velmar::TexCoordGeneration* const coordinates = texture.tex_coord_generation.getPointer();
    if (coordinates == nullptr) return source;
    if (coordinates->getType() == Velmar::TexCoordGeneration::affine_kind) {
        for (std::size_t i = 0; i < 6; ++i)
            source.map[i] = static_cast<float>(static_cast<const AffineCoordinates*>(coordinates)->values[i]);
    } else {
        report("generated texture coordinates other than affine maps aren't rendered");
    }
    return source;
}

std::shared_ptr<const ImageTexture> SurfaceTable::loadImage(const std::string& path) {
    const auto known = images.find(path);
    if (known != images.end()) return known->second;
    std::string complaint;
    std::shared_ptr<const ImageTexture> image = ImageTexture::load(path, complaint);
    if (image == nullptr) report("texture '" + path + "': " + complaint + "; drawn grey");
    images[path] = image;
    return image;
}

} // namespace Preview
