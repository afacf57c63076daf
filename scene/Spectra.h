#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvec.h"

#include "utils/OStream.h"

#include <cstddef>
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
    /// Slot 3. A copy.
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

static_assert(offsetof(UniformSpectrum, value) == 16);
static_assert(sizeof(UniformSpectrum) == 24);

/// A colour given by red, green and blue.
class RGBSpectrum : public Destroyable<RGBSpectrum, Spectrum> {
  public:
    RGBSpectrum(const Vec3d& rgb_, double gamma_) : rgb(rgb_), gamma(gamma_) {}
    ~RGBSpectrum() { assertUnreferenced(); }

    void writeXML(OStream& stream, std::uint32_t depth) const override;
    std::uint32_t getType() const override;
    Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const override;
    void updateHash(XXH64_state_t* state) const override;

    Vec3d rgb;
    double gamma;
};

static_assert(offsetof(RGBSpectrum, rgb) == 16);
static_assert(offsetof(RGBSpectrum, gamma) == 40);
static_assert(sizeof(RGBSpectrum) == 48);

} // namespace Velmar
