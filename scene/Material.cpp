#include "scene/Material.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"

#include <algorithm>

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
    ElementWriter elements(stream, depth + 1, &options);
    writeOpenTag(stream, depth + 1, element.view());
    describeShader(elements, *this);
    writeFieldsXML(stream, depth + 1, options);
    writeCloseTag(stream, depth + 1, element.view());
    describeSettings(elements, *this);
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

String* DiffuseMaterial::getTypeNameInto(String* result) const {
    return constructResult(result, String(element_of<DiffuseMaterial>));
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
    ElementWriter elements(stream, depth + 1, &options);
    describe(elements, *this);
}

String* SunSkyMaterial::getTypeNameInto(String* result) const {
    return constructResult(result, String(element_of<SunSkyMaterial>));
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

void SunSkyMaterial::writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    ElementWriter elements(stream, depth + 1, &options);
    describe(elements, *this);
}

} // namespace Velmar
