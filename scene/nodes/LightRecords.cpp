#include "scene/nodes/LightRecords.h"

#include "scene/NumberText.h"
#include "scene/XMLPrimitives.h"

#include <array>
#include <string_view>

namespace Velmar {

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

void IESProfile::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeOpenTag(stream, depth, "ies_profile");
    writeStringElement(stream, depth + 1, "material_uid",
                       NumberText(material ? material->getUID() : material_uid).view());
    writePathElement(stream, depth + 1, "path", path, options);
    writeCloseTag(stream, depth, "ies_profile");
}

Reference<IESProfile> IESProfile::copy() const {
    const Reference<IESProfile> result(new IESProfile);
    result->path = path;
    result->material = material;
    if (!material) result->material_uid = material_uid;
    return result;
}

} // namespace Velmar
