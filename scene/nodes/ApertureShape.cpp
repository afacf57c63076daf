#include "scene/nodes/ApertureShape.h"

#include "scene/ClassValuedSlot.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(ApertureImage, path) == 16);

Reference<ApertureShape> ApertureShape::clone() const {
    return valueOfSlot<Reference<ApertureShape>>([this](auto* place) { return cloneInto(place); });
}

void ApertureCircular::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "aperture_shape");
    writeEmptyTag(stream, depth + 1, "circular");
    writeCloseTag(stream, depth, "aperture_shape");
}

Reference<ApertureShape>* ApertureCircular::cloneInto(Reference<ApertureShape>* result) const {
    return new (static_cast<void*>(result)) Reference<ApertureShape>(new ApertureCircular);
}

} // namespace Velmar
