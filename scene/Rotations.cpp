#include "scene/Rotations.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"

#include <algorithm>

namespace Velmar {

Reference<Rotation> Rotation::clone() const {
    return valueOfSlot<Reference<Rotation>>([this](auto* place) { return cloneInto(place); });
}

MatrixRotation::MatrixRotation(std::span<const double, 9> values) {
    std::ranges::copy(values, matrix);
}

void MatrixRotation::writeXML(OStream& stream, std::uint32_t depth) const {
    ElementWriter elements(stream, depth, nullptr);
    describeWhole(elements, *this);
}

std::uint32_t MatrixRotation::getType() const {
    return matrix_kind;
}

Reference<Rotation>* MatrixRotation::cloneInto(Reference<Rotation>* result) const {
    return constructResult(result, new MatrixRotation(matrix));
}

void MatrixRotation::updateHash(XXH64_state_t* state) const {
    XXH64_update(state, matrix, sizeof matrix);
}

bool MatrixRotation::isIdentity() const {
    return std::ranges::equal(matrix, identity,
                              [](double entry, double expected) { return !(entry < expected || entry > expected); });
}

} // namespace Velmar
