#pragma once

#include "scene/Spectrum.h"
#include "scene/WavelengthDependentParam.h"

namespace Velmar {

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
    /// Adds nothing, not even the spectrum: only what varies over a surface tells materials apart by hash.
    void updateHash(XXH64_state_t* state) const override;
    /// Copies the spectrum too, which must be set.
    Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const override;

    Reference<Spectrum> spectrum;
};

} // namespace Velmar
