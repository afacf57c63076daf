#pragma once

#include "scene/ElementWriter.h"
#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/Rotations.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/SharedShaderInfo.h"
#include "scene/Spectra.h"

/// The elements of materials and of what they are made of, of rotations, and of the tone mapping. See
/// `ElementWriter.h` for what a description says.

namespace Velmar {

template <>
inline constexpr std::string_view element_of<UniformSpectrum> = "uniform";
template <>
inline constexpr std::string_view element_of<RGBSpectrum> = "rgb";
template <>
inline constexpr std::string_view element_of<ConstantWavelengthDependentParam> = "constant";
template <>
inline constexpr std::string_view element_of<MatrixRotation> = "matrix";
template <>
inline constexpr std::string_view element_of<Texture> = "texture";
template <>
inline constexpr std::string_view element_of<SharedShaderInfo> = "shared_shader_info";
template <>
inline constexpr std::string_view element_of<DiffuseMaterial> = "diffuse";
template <>
inline constexpr std::string_view element_of<SunSkyMaterial> = "sunsky";
template <>
inline constexpr std::string_view element_of<SceneNodeMaterial> = "material";
template <>
inline constexpr std::string_view element_of<SceneNodeTonemapping> = "tonemapping";

// ---- spectra, rotations

template <class Elements>
void describe(Elements& elements, Described<Elements, UniformSpectrum>& spectrum) {
    elements.value("value", spectrum.value);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, RGBSpectrum>& spectrum) {
    // The inner element has the name of the outer one.
    elements.value("rgb", spectrum.rgb);
    elements.value("gamma", spectrum.gamma);
}

/// The element is a value itself.
template <class Elements>
void describeWhole(Elements& elements, Described<Elements, MatrixRotation>& rotation) {
    elements.value(element_of<MatrixRotation>, rotation.matrix);
}

// ---- parameters

template <class Elements>
void describe(Elements& elements, Described<Elements, ConstantWavelengthDependentParam>& param) {
    elements.part(param.spectrum);
}

/// The code of `getType` of parameters with a `Texture` directly after their base's fields.
constexpr std::uint32_t texture_param = 2;
constexpr std::uint32_t texture_normal_map = 1;

/// The texture of a parameter that has one, in the mode in which it precedes the parameter.
template <class Param>
void writeTextureOfParam(ElementWriter& elements, const Param& param, std::uint32_t textured_type) {
    constexpr std::uint32_t mode_with_textures = 3;
    if (elements.options->write_mode != mode_with_textures || param.getType() != textured_type) return;
    const char* const after_base = reinterpret_cast<const char*>(&param) + sizeof(Param);
    writeTexture(*reinterpret_cast<const Texture*>(after_base), elements.stream, elements.depth, *elements.options);
}

template <class Elements, class Param>
void describeParam(Elements& elements, std::string_view element, Param& param,
                   std::uint32_t textured_type = texture_param) {
    if (!elements.has(element, static_cast<bool>(param))) return;
    if constexpr (Elements::writes) writeTextureOfParam(elements, *param, textured_type);
    elements.group(element, [&](Elements& inside) { inside.part(param); });
}

// ---- shader programs

template <class Elements>
void describe(Elements& elements, Described<Elements, Texture>& texture) {
    elements.requiredPath("path", texture.path);
    elements.valueOr("a", texture.a, 0.0);
    elements.valueOr("b", texture.b, 1.0);
    elements.valueOr("c", texture.c, 0.0);
    elements.valueOr("uv_set_index", texture.uv_set_index, 0);
    elements.option("exponent", texture.exponent, texture.has_exponent);
    const auto& generation = texture.tex_coord_generation;
    if (elements.has("tex_coord_generation", generation && !generation->isNeutral()))
        elements.group("tex_coord_generation", [&](Elements& inside) { inside.part(texture.tex_coord_generation); });
    elements.valueOr("smooth", texture.smooth, false);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SharedShaderInfo>& info) {
    elements.parts(info.parameters);
    elements.list("include", info.includes);
    elements.list(element_of<Texture>, info.textures);
    elements.verbatim("shader", info.shader);
}

// ---- materials

/// What comes first in the element of every material.
template <class Elements>
void describeShader(Elements& elements, Described<Elements, Material>& material) {
    const auto& info = material.shared_shader_info;
    if (elements.has(element_of<SharedShaderInfo>, info && info->isWritten()))
        elements.part(material.shared_shader_info);
}

/// What comes after the element of every material.
template <class Elements>
void describeSettings(Elements& elements, Described<Elements, Material>& material) {
    elements.valueOr("backface_emit", material.backface_emit, false);
    elements.valueOr("shadow_catcher", material.shadow_catcher, false);
    elements.valueOr("delta_emission", material.delta_emission, false);
    elements.valueOr("emission_sampling_factor", material.emission_sampling_factor, 1.0);
    elements.valueIf(!material.mask_name.empty(), "mask_name", material.mask_name, String());
}

template <class Elements>
void describe(Elements& elements, Described<Elements, DiffuseMaterial>& material) {
    describeParam(elements, "albedo", material.albedo);
    describeParam(elements, "bump", material.bump);
    describeParam(elements, "displacement", material.displacement);
    describeParam(elements, "base_emission", material.base_emission);
    describeParam(elements, "emission", material.emission);
    describeParam(elements, "normal_map", material.normal_map, texture_normal_map);
    elements.valueOr("random_triangle_colours", material.random_triangle_colours, false);
    elements.signedValueOr("layer", material.layer, 0);
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SunSkyMaterial>& material) {
    elements.value("sundir", material.sundir);
    elements.value("turbidity", material.turbidity);
    elements.value("extra_atmospheric", material.extra_atmospheric);
    elements.value("enable_sky", material.enable_sky);
    elements.signedValue("sun_layer", material.sun_layer);
    elements.signedValue("sky_layer", material.sky_layer);
    elements.value("model", material.model);
}

/// A material with the name that precedes it.
template <class Elements, class Name>
void describeNamed(Elements& elements, Described<Elements, Reference<Material>>& material, Name describeName) {
    if constexpr (Elements::reads) {
        // It must be there before it can be named.
        elements.part(material);
        describeName();
    } else if constexpr (!Elements::writes) {
        describeName();
        elements.part(material);
    } else {
        describeName();
        if (material) material->writeXML(elements.stream, elements.depth - 1, *elements.options);
    }
}

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeMaterial>& node) {
    elements.materialUID(node);
    describeNamed(elements, node.material, [&] { elements.name(node); });
    elements.boundReferences("scatter_uids", "uid", node.scatter_nodes, node.scatter_uids);
}

// ---- tone mapping

template <class Elements>
void describe(Elements& elements, Described<Elements, SceneNodeTonemapping>& tonemapping) {
    using Tonemapping = SceneNodeTonemapping;
    elements.identity(tonemapping);
    auto& kind = tonemapping.tone_mapper_kind;
    if (elements.variant("linear", kind, Tonemapping::linear)) {
        elements.group("linear", [&](Elements& inside) { inside.value("scale", tonemapping.scale); });
    } else if (elements.variant("reinhard", kind, Tonemapping::reinhard)) {
        elements.group("reinhard", [&](Elements& inside) {
            inside.value("pre_scale", tonemapping.pre_scale);
            inside.value("post_scale", tonemapping.post_scale);
            inside.value("burn", tonemapping.burn);
        });
    } else if (elements.variant("camera", kind, Tonemapping::camera)) {
        elements.group("camera", [&](Elements& inside) {
            // A text and not a path: it is looked up in the renderer's own data folder and must stay relative.
            inside.value("response_function_path", tonemapping.response_function_path);
            inside.value("film_iso", tonemapping.film_iso);
            inside.value("ev_adjust", tonemapping.ev_adjust);
        });
    } else if (elements.variant("filmic", kind, Tonemapping::filmic)) {
        elements.group("filmic", [&](Elements& inside) { inside.value("scale", tonemapping.scale); });
    } else {
        elements.noVariant(kind);
    }
}

} // namespace Velmar
