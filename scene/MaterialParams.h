#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/Spectra.h"
#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"
#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

class SceneNode;

/// A property of a material that depends on the wavelength: constant here, or one of the kinds of the renderer library,
/// which calls these operations by slot number.
class WavelengthDependentParam : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 2.
    virtual std::uint32_t getType() const = 0;
    /// Slot 3. Does the part of a pass that concerns this parameter of `owner`.
    virtual void traverse(TraversalState& state, SceneNode* owner) = 0;
    /// Slot 4. Feeds what the parameter adds to a material's hash to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;
    /// Slot 5. A copy.
    virtual Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const = 0;

    /// The natural form of slot 5.
    Reference<WavelengthDependentParam> clone() const;

  protected:
    WavelengthDependentParam() = default;
    ~WavelengthDependentParam() = default;
};

static_assert(sizeof(WavelengthDependentParam) == 16);

/// One spectrum everywhere on the surface.
class ConstantWavelengthDependentParam
    : public Destroyable<ConstantWavelengthDependentParam, WavelengthDependentParam> {
  public:
    explicit ConstantWavelengthDependentParam(const Reference<Spectrum>& spectrum_) : spectrum(spectrum_) {}
    ~ConstantWavelengthDependentParam() { assertUnreferenced(); }

    /// Without a spectrum the element is empty.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    std::uint32_t getType() const override;
    void traverse(TraversalState& state, SceneNode* owner) override;
    /// Adds nothing, not even the spectrum: only what varies over a surface distinguishes materials by hash.
    void updateHash(XXH64_state_t* state) const override;
    /// Copies the spectrum too, which must be set.
    Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const override;

    Reference<Spectrum> spectrum;
};

static_assert(offsetof(ConstantWavelengthDependentParam, spectrum) == 16);
static_assert(sizeof(ConstantWavelengthDependentParam) == 24);

class SceneNode;

/// What shapes a surface finer than its geometry: the bump, displacement and normal map of a material. All its classes
/// live in the renderer library; this side calls them by slot number. The hash is one slot later than that of
/// `WavelengthDependentParam`.
class SurfaceParam : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 2.
    virtual std::uint32_t getType() const = 0;
    /// Slot 3. Does the part of a pass that concerns this parameter of `owner`.
    virtual void traverse(TraversalState& state, SceneNode* owner) = 0;
    /// Slot 4. The library's own; never called from here.
    virtual void reservedSlot4() = 0;
    /// Slot 5. Feeds what the parameter adds to a material's hash to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;

  protected:
    SurfaceParam() = default;
    ~SurfaceParam() = default;
};

static_assert(sizeof(SurfaceParam) == 16);

} // namespace Velmar
