#include "scene/Material.h"

#include "scene/ClassValuedSlot.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(Material, name) == 16);
static_assert(offsetof(Material, shared_shader_info) == 56);
static_assert(offsetof(Material, bump) == 64);
static_assert(offsetof(Material, displacement) == 72);
static_assert(offsetof(Material, base_emission) == 80);
static_assert(offsetof(Material, emission) == 88);
static_assert(offsetof(Material, normal_map) == 96);
static_assert(offsetof(Material, layer) == 104);
static_assert(offsetof(Material, backface_emit) == 108);
static_assert(offsetof(Material, shadow_catcher) == 109);
static_assert(offsetof(Material, delta_emission) == 110);
static_assert(offsetof(Material, emission_sampling_factor) == 112);
static_assert(offsetof(Material, mask_name) == 120);

std::uint32_t Material::getMaxLayerIndex() const {
    return 0;
}

bool Material::refersToNode(const SceneNode*) const {
    return false;
}

Vector<UID>* Material::getDependencyUIDsInto(Vector<UID>* result) const {
    return new (static_cast<void*>(result)) Vector<UID>();
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

} // namespace Velmar
