#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstddef>
#include <cstdint>
#include <span>
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
    /// Slot 3. A copy.
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

/// A rotation given by a 3 by 3 matrix, row after row. Nothing checks that it is one.
class MatrixRotation : public Destroyable<MatrixRotation, Rotation> {
  public:
    static constexpr double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    /// The identity.
    MatrixRotation() : MatrixRotation(identity) {}
    explicit MatrixRotation(std::span<const double, 9> values);

    void writeXML(OStream& stream, std::uint32_t depth) const override;
    std::uint32_t getType() const override;
    Reference<Rotation>* cloneInto(Reference<Rotation>* result) const override;
    void updateHash(XXH64_state_t* state) const override;
    /// An entry that is NaN counts as that of the identity.
    bool isIdentity() const override;

    double matrix[9];
};

static_assert(offsetof(MatrixRotation, matrix) == 16);
static_assert(sizeof(MatrixRotation) == 88);

} // namespace Velmar
