#include "scene/nodes/IESProfile.h"

#include "scene/NumberText.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(IESProfile, material_name) == 16);
static_assert(offsetof(IESProfile, path) == 56);
static_assert(offsetof(IESProfile, material) == 96);
static_assert(offsetof(IESProfile, material_uid) == 104);
static_assert(sizeof(IESProfile) == 112);

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
