#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/TraversalState.h"
#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

class SceneNode;

/// A property of a material that depends on the wavelength: constant here, or one of the kinds of the renderer library,
/// which calls these operations by slot number.
class WavelengthDependentParam : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 2.
    virtual std::uint32_t getType() const = 0;
    /// Slot 3. Does the part of a pass that concerns this parameter of `owner`.
    virtual void traverse(TraversalState& state, SceneNode* owner) = 0;
    /// Slot 4. Feeds what the parameter adds to a material's hash to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;
    /// Slot 5. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const = 0;

    /// The natural form of slot 5.
    Reference<WavelengthDependentParam> clone() const;

  protected:
    WavelengthDependentParam() = default;
    ~WavelengthDependentParam() = default;
};

static_assert(sizeof(WavelengthDependentParam) == 16);

} // namespace Velmar
