#include "scene/DiffuseMaterial.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>
#include <string_view>

namespace Velmar {

static_assert(offsetof(DiffuseMaterial, albedo) == 160);
static_assert(offsetof(DiffuseMaterial, random_triangle_colours) == 168);
static_assert(sizeof(DiffuseMaterial) == 176);

namespace {

/// The mode in which a parameter that reads a texture is preceded by the texture's record.
constexpr std::uint32_t mode_with_textures = 3;

/// The codes of `getType` of parameters that hold a `Texture` directly behind their base's fields.
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
    return new (static_cast<void*>(result)) String("diffuse");
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

} // namespace Velmar
