#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

/// How light or reflectance depends on the wavelength. Called by slot number from the renderer library. Shared by
/// reference; only the count is safe across threads.
class Spectrum : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 2.
    virtual std::uint32_t getType() const = 0;
    /// Slot 3. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const = 0;
    /// Slot 4. Feeds the bytes of the values to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;

    /// The natural form of slot 3.
    Reference<Spectrum> clone() const;

  protected:
    Spectrum() = default;
    ~Spectrum() = default;
};

static_assert(sizeof(Spectrum) == 16);

} // namespace Velmar
