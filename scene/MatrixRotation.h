#pragma once

#include "scene/Rotation.h"

#include <span>

namespace Velmar {

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

} // namespace Velmar
