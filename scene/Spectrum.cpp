#include "scene/Spectrum.h"

#include "scene/ClassValuedSlot.h"

namespace Velmar {

Reference<Spectrum> Spectrum::clone() const {
    return valueOfSlot<Reference<Spectrum>>([this](auto* place) { return cloneInto(place); });
}

} // namespace Velmar
