#include "scene/nodes/LightRecords.h"

#include "scene/nodes/NodeElements.h"

namespace Velmar {

void EmissionScale::writeXML(OStream& stream, std::uint32_t depth) const {
    if (isWritten()) writeDescribed(stream, depth, *this, nullptr);
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
    writeDescribed(stream, depth, *this, &options);
}

Reference<IESProfile> IESProfile::copy() const {
    const Reference<IESProfile> result(new IESProfile);
    result->path = path;
    result->material = material;
    if (!material) result->material_uid = material_uid;
    return result;
}

} // namespace Velmar
