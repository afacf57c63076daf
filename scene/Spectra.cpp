#include "scene/Spectra.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"

namespace Velmar {

Reference<Spectrum> Spectrum::clone() const {
    return valueOfSlot<Reference<Spectrum>>([this](auto* place) { return cloneInto(place); });
}

void UniformSpectrum::writeXML(OStream& stream, std::uint32_t depth) const {
    writeDescribed(stream, depth, *this, nullptr);
}

std::uint32_t UniformSpectrum::getType() const {
    return 4;
}

Reference<Spectrum>* UniformSpectrum::cloneInto(Reference<Spectrum>* result) const {
    return constructResult(result, new UniformSpectrum(value));
}

void UniformSpectrum::updateHash(XXH64_state_t* state) const {
    XXH64_update(state, &value, sizeof value);
}

void RGBSpectrum::writeXML(OStream& stream, std::uint32_t depth) const {
    writeDescribed(stream, depth, *this, nullptr);
}

std::uint32_t RGBSpectrum::getType() const {
    return 2;
}

Reference<Spectrum>* RGBSpectrum::cloneInto(Reference<Spectrum>* result) const {
    return constructResult(result, new RGBSpectrum(rgb, gamma));
}

void RGBSpectrum::updateHash(XXH64_state_t* state) const {
    XXH64_update(state, &rgb, sizeof rgb);
    XXH64_update(state, &gamma, sizeof gamma);
}

} // namespace Velmar
