#include "scene/nodes/EmissionScale.h"

#include "scene/NumberText.h"
#include "scene/XMLPrimitives.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace Velmar {

static_assert(offsetof(EmissionScale, measure) == 16);
static_assert(offsetof(EmissionScale, value) == 24);
static_assert(offsetof(EmissionScale, material_name) == 32);
static_assert(offsetof(EmissionScale, material) == 72);
static_assert(offsetof(EmissionScale, material_uid) == 80);
static_assert(sizeof(EmissionScale) == 88);

namespace {

std::string_view measureName(std::uint32_t measure) {
    static constexpr std::array<std::string_view, 4> names = {"luminous_flux", "luminous_intensity", "luminance",
                                                              "luminous_emittance"};
    return measure < names.size() ? names[measure] : std::string_view();
}

} // namespace

void EmissionScale::writeXML(OStream& stream, std::uint32_t depth) const {
    if (measure == none) return;
    writeOpenTag(stream, depth, "emission_scale");
    writeStringElement(stream, depth + 1, "measure", measureName(measure));
    writeDoubleElement(stream, depth + 1, "value", value);
    writeStringElement(stream, depth + 1, "material_uid",
                       NumberText(material ? material->getUID() : material_uid).view());
    writeCloseTag(stream, depth, "emission_scale");
}

Reference<EmissionScale> EmissionScale::copy() const {
    const Reference<EmissionScale> result(new EmissionScale);
    result->measure = measure;
    result->value = value;
    result->material = material;
    if (!material) result->material_uid = material_uid;
    return result;
}

} // namespace Velmar
