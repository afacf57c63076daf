#include "scene/MaterialParams.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"

namespace Velmar {

Reference<WavelengthDependentParam> WavelengthDependentParam::clone() const {
    return valueOfSlot<Reference<WavelengthDependentParam>>([this](auto* place) { return cloneInto(place); });
}

void ConstantWavelengthDependentParam::writeXML(OStream& stream, std::uint32_t depth,
                                                const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
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
