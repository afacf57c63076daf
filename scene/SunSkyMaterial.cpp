#include "scene/SunSkyMaterial.h"

#include "scene/XMLPrimitives.h"

#include <algorithm>
#include <cstddef>

namespace Velmar {

static_assert(offsetof(SunSkyMaterial, sundir) == 160);
static_assert(offsetof(SunSkyMaterial, turbidity) == 184);
static_assert(offsetof(SunSkyMaterial, extra_atmospheric) == 192);
static_assert(offsetof(SunSkyMaterial, enable_sky) == 193);
static_assert(offsetof(SunSkyMaterial, sun_layer) == 196);
static_assert(offsetof(SunSkyMaterial, sky_layer) == 200);
static_assert(offsetof(SunSkyMaterial, model) == 208);
static_assert(sizeof(SunSkyMaterial) == 248);

String* SunSkyMaterial::getTypeNameInto(String* result) const {
    return new (static_cast<void*>(result)) String("sunsky");
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
