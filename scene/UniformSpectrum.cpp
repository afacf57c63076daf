#include "scene/UniformSpectrum.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(UniformSpectrum, value) == 16);
static_assert(sizeof(UniformSpectrum) == 24);

void UniformSpectrum::writeXML(OStream& stream, std::uint32_t depth) const {
    writeOpenTag(stream, depth, "uniform");
    writeDoubleElement(stream, depth + 1, "value", value);
    writeCloseTag(stream, depth, "uniform");
}

std::uint32_t UniformSpectrum::getType() const {
    return 4;
}

Reference<Spectrum>* UniformSpectrum::cloneInto(Reference<Spectrum>* result) const {
    return new (static_cast<void*>(result)) Reference<Spectrum>(new UniformSpectrum(value));
}

void UniformSpectrum::updateHash(XXH64_state_t* state) const {
    XXH64_update(state, &value, sizeof value);
}

} // namespace Velmar
