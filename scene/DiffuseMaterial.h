#pragma once

#include "scene/Material.h"

namespace Velmar {

/// A surface that scatters light evenly, and the base of uniform light.
class DiffuseMaterial : public Destroyable<DiffuseMaterial, Material> {
  public:
    String* getTypeNameInto(String* result) const override;
    std::uint32_t getMaterialKind() const override;
    std::uint32_t getMaxLayerIndex() const override;
    void traverseFields(TraversalState& state, SceneNode* owner) override;
    void updateHash(XXH64_state_t* state) const override;
    bool hasDisplacement() const override;
    void writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    Reference<WavelengthDependentParam> albedo;
    bool random_triangle_colours = false;
};

} // namespace Velmar
