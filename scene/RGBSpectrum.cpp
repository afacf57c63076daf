#include "scene/RGBSpectrum.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(RGBSpectrum, rgb) == 16);
static_assert(offsetof(RGBSpectrum, gamma) == 40);
static_assert(sizeof(RGBSpectrum) == 48);

void RGBSpectrum::writeXML(OStream& stream, std::uint32_t depth) const {
    writeOpenTag(stream, depth, "rgb");
    writeVec3Element(stream, depth + 1, "rgb", rgb);
    writeDoubleElement(stream, depth + 1, "gamma", gamma);
    writeCloseTag(stream, depth, "rgb");
}

std::uint32_t RGBSpectrum::getType() const {
    return 2;
}

Reference<Spectrum>* RGBSpectrum::cloneInto(Reference<Spectrum>* result) const {
    return new (static_cast<void*>(result)) Reference<Spectrum>(new RGBSpectrum(rgb, gamma));
}

void RGBSpectrum::updateHash(XXH64_state_t* state) const {
    XXH64_update(state, &rgb, sizeof rgb);
    XXH64_update(state, &gamma, sizeof gamma);
}

} // namespace Velmar
