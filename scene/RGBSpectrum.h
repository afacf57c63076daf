#pragma once

#include "velmarvec.h"

#include "scene/Spectrum.h"

namespace Velmar {

/// A colour given by red, green and blue.
class RGBSpectrum : public Destroyable<RGBSpectrum, Spectrum> {
  public:
    RGBSpectrum(const Vec3d& rgb_, double gamma_) : rgb(rgb_), gamma(gamma_) {}
    ~RGBSpectrum() { assertUnreferenced(); }

    /// The inner element has the name of the outer one.
    void writeXML(OStream& stream, std::uint32_t depth) const override;
    std::uint32_t getType() const override;
    Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const override;
    void updateHash(XXH64_state_t* state) const override;

    Vec3d rgb;
    double gamma;
};

} // namespace Velmar
