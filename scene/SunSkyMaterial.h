#pragma once

#include "velmarvec.h"

#include "scene/Material.h"

namespace Velmar {

/// The light of sun and sky.
class SunSkyMaterial : public Destroyable<SunSkyMaterial, Material> {
  public:
    String* getTypeNameInto(String* result) const override;
    std::uint32_t getMaterialKind() const override;
    std::uint32_t getMaxLayerIndex() const override;
    void traverseFields(TraversalState& state, SceneNode* owner) override;
    void updateHash(XXH64_state_t* state) const override;
    bool hasDisplacement() const override;
    void writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    /// Towards the sun; used as it stands, whatever its length.
    Vec3d sundir{0.0, 0.0, 1.0};
    double turbidity = 2.0;
    bool extra_atmospheric = false;
    bool enable_sky = true;
    std::uint32_t sun_layer = 0;
    std::uint32_t sky_layer = 0;
    /// The name of the sky model, known to the renderer library.
    String model = "original";
};

} // namespace Velmar
