#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

/// The static rotation of a model. Called by slot number from the renderer library, which has kinds of its own.
class Rotation : public ThreadSafeRefCounted {
  public:
    /// What `getType` returns.
    enum Kind : std::uint32_t { matrix_kind = 0, axis_and_angle_kind = 1 };

    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 2. One of `Kind`, or a code that this library doesn't know.
    virtual std::uint32_t getType() const = 0;
    /// Slot 3. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<Rotation>* cloneInto(Reference<Rotation>* result) const = 0;
    /// Slot 4. Feeds the bytes of the values to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;
    /// Slot 5.
    virtual bool isIdentity() const = 0;

    /// The natural form of slot 3.
    Reference<Rotation> clone() const;

  protected:
    Rotation() = default;
    ~Rotation() = default;
};

static_assert(sizeof(Rotation) == 16);

} // namespace Velmar
