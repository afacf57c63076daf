#pragma once

#include "scene/Spectrum.h"

namespace Velmar {

/// The same value at every wavelength.
class UniformSpectrum : public Destroyable<UniformSpectrum, Spectrum> {
  public:
    explicit UniformSpectrum(double value_) : value(value_) {}
    ~UniformSpectrum() { assertUnreferenced(); }

    void writeXML(OStream& stream, std::uint32_t depth) const override;
    std::uint32_t getType() const override;
    Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const override;
    void updateHash(XXH64_state_t* state) const override;

    double value;
};

} // namespace Velmar
