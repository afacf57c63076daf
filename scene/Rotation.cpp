#include "scene/Rotation.h"

#include "scene/ClassValuedSlot.h"

namespace Velmar {

Reference<Rotation> Rotation::clone() const {
    return valueOfSlot<Reference<Rotation>>([this](auto* place) { return cloneInto(place); });
}

} // namespace Velmar
