#include "scene/Material.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

#include <algorithm>
#include <string_view>

namespace Velmar {

std::uint32_t Material::getMaxLayerIndex() const {
    return 0;
}

bool Material::refersToNode(const SceneNode*) const {
    return false;
}

Vector<UID>* Material::getDependencyUIDsInto(Vector<UID>* result) const {
    return constructResult(result, Vector<UID>());
}

String Material::getTypeName() const {
    return valueOfSlot<String>([this](String* place) { return getTypeNameInto(place); });
}

Vector<UID> Material::getDependencyUIDs() const {
    return valueOfSlot<Vector<UID>>([this](Vector<UID>* place) { return getDependencyUIDsInto(place); });
}

void Material::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    const String element = getTypeName();
    writeOpenTag(stream, depth + 1, element.view());
    if (shared_shader_info && shared_shader_info->isWritten()) shared_shader_info->writeXML(stream, depth + 1, options);
    writeFieldsXML(stream, depth + 1, options);
    writeCloseTag(stream, depth + 1, element.view());

    if (backface_emit) writeBoolElement(stream, depth + 1, "backface_emit", true);
    if (shadow_catcher) writeBoolElement(stream, depth + 1, "shadow_catcher", true);
    if (delta_emission) writeBoolElement(stream, depth + 1, "delta_emission", true);
    if (emission_sampling_factor != 1.0)
        writeDoubleElement(stream, depth + 1, "emission_sampling_factor", emission_sampling_factor);
    if (!mask_name.empty()) writeStringElement(stream, depth + 1, "mask_name", mask_name);
}

void Material::traverseMaterial(TraversalState& state, SceneNode* owner) {
    const auto traverseIfSet = [&](const auto& param) {
        if (param) param->traverse(state, owner);
    };
    if (shared_shader_info) shared_shader_info->traverse(state);
    traverseIfSet(bump);
    traverseIfSet(displacement);
    traverseIfSet(base_emission);
    traverseIfSet(emission);
    traverseIfSet(normal_map);
    traverseFields(state, owner);
}

namespace {

/// The mode in which a parameter that reads a texture is preceded by the texture's record.
constexpr std::uint32_t mode_with_textures = 3;

/// The codes of `getType` of parameters with a `Texture` directly after their base's fields.
constexpr std::uint32_t texture_param = 2;
constexpr std::uint32_t texture_normal_map = 1;

template <class Param>
void writeParam(OStream& stream, std::uint32_t depth, std::string_view element, const Reference<Param>& param,
                const XMLWriteOptions& options, std::uint32_t textured_type = texture_param) {
    if (!param) return;
    if (options.write_mode == mode_with_textures && param->getType() == textured_type) {
        const char* const behind_base = reinterpret_cast<const char*>(param.getPointer()) + sizeof(Param);
        writeTexture(*reinterpret_cast<const Texture*>(behind_base), stream, depth, options);
    }
    writeOpenTag(stream, depth, element);
    param->writeXML(stream, depth + 1, options);
    writeCloseTag(stream, depth, element);
}

} // namespace

String* DiffuseMaterial::getTypeNameInto(String* result) const {
    return constructResult(result, "diffuse");
}

std::uint32_t DiffuseMaterial::getMaterialKind() const {
    return 1;
}

std::uint32_t DiffuseMaterial::getMaxLayerIndex() const {
    return layer;
}

void DiffuseMaterial::traverseFields(TraversalState& state, SceneNode* owner) {
    if (albedo) albedo->traverse(state, owner);
}

void DiffuseMaterial::updateHash(XXH64_state_t* state) const {
    const auto updateIfSet = [&](const auto& param) {
        if (param) param->updateHash(state);
    };
    updateIfSet(albedo);
    updateIfSet(bump);
    updateIfSet(displacement);
    updateIfSet(base_emission);
    updateIfSet(emission);
    updateIfSet(normal_map);
}

bool DiffuseMaterial::hasDisplacement() const {
    return static_cast<bool>(displacement);
}

void DiffuseMaterial::writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeParam(stream, depth + 1, "albedo", albedo, options);
    writeParam(stream, depth + 1, "bump", bump, options);
    writeParam(stream, depth + 1, "displacement", displacement, options);
    writeParam(stream, depth + 1, "base_emission", base_emission, options);
    writeParam(stream, depth + 1, "emission", emission, options);
    writeParam(stream, depth + 1, "normal_map", normal_map, options, texture_normal_map);
    if (random_triangle_colours) writeBoolElement(stream, depth + 1, "random_triangle_colours", true);
    if (layer != 0) writeInt32Element(stream, depth + 1, "layer", static_cast<std::int32_t>(layer));
}

String* SunSkyMaterial::getTypeNameInto(String* result) const {
    return constructResult(result, "sunsky");
}

std::uint32_t SunSkyMaterial::getMaterialKind() const {
    return 10;
}

std::uint32_t SunSkyMaterial::getMaxLayerIndex() const {
    return std::max(sun_layer, sky_layer);
}

void SunSkyMaterial::traverseFields(TraversalState&, SceneNode*) {}

void SunSkyMaterial::updateHash(XXH64_state_t*) const {}

bool SunSkyMaterial::hasDisplacement() const {
    return false;
}

void SunSkyMaterial::writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeVec3Element(stream, depth + 1, "sundir", sundir);
    writeDoubleElement(stream, depth + 1, "turbidity", turbidity);
    writeBoolElement(stream, depth + 1, "extra_atmospheric", extra_atmospheric);
    writeBoolElement(stream, depth + 1, "enable_sky", enable_sky);
    writeInt32Element(stream, depth + 1, "sun_layer", static_cast<std::int32_t>(sun_layer));
    writeInt32Element(stream, depth + 1, "sky_layer", static_cast<std::int32_t>(sky_layer));
    writeStringElement(stream, depth + 1, "model", model);
}

} // namespace Velmar
