#include "scene/MaterialParams.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

namespace Velmar {

Reference<WavelengthDependentParam> WavelengthDependentParam::clone() const {
    return valueOfSlot<Reference<WavelengthDependentParam>>([this](auto* place) { return cloneInto(place); });
}

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
    return constructResult(result, new ConstantWavelengthDependentParam(spectrum->clone()));
}

} // namespace Velmar
