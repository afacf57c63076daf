#include "scene/WavelengthDependentParam.h"

#include "scene/ClassValuedSlot.h"

namespace Velmar {

Reference<WavelengthDependentParam> WavelengthDependentParam::clone() const {
    return valueOfSlot<Reference<WavelengthDependentParam>>([this](auto* place) { return cloneInto(place); });
}

} // namespace Velmar
