#include "scene/ConstantWavelengthDependentParam.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(ConstantWavelengthDependentParam, spectrum) == 16);
static_assert(sizeof(ConstantWavelengthDependentParam) == 24);

void ConstantWavelengthDependentParam::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "constant");
    if (spectrum) spectrum->writeXML(stream, depth + 1);
    writeCloseTag(stream, depth, "constant");
}

std::uint32_t ConstantWavelengthDependentParam::getType() const {
    return 0;
}

void ConstantWavelengthDependentParam::traverse(TraversalState&, SceneNode*) {}

void ConstantWavelengthDependentParam::updateHash(XXH64_state_t*) const {}

Reference<WavelengthDependentParam>*
ConstantWavelengthDependentParam::cloneInto(Reference<WavelengthDependentParam>* result) const {
    return new (static_cast<void*>(result))
        Reference<WavelengthDependentParam>(new ConstantWavelengthDependentParam(spectrum->clone()));
}

} // namespace Velmar
