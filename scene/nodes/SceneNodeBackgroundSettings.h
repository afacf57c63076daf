#pragma once

#include "scene/Material.h"
#include "scene/SceneNode.h"
#include "scene/nodes/LightRecords.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// What lies around the scene: a material of its own, which is no node, and an optional amount of light.
class SceneNodeBackgroundSettings : public Destroyable<SceneNodeBackgroundSettings, PlainSceneNode> {
  public:
    SceneNodeBackgroundSettings();

    /// The copy has neither material nor emission scale.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    void traverse(TraversalState& state) override;
    std::uint32_t getMaxLayerIndex() const override;

    Reference<EmissionScale> emission_scale;
    Reference<Material> background_material;
};

static_assert(offsetof(SceneNodeBackgroundSettings, emission_scale) == 96);
static_assert(offsetof(SceneNodeBackgroundSettings, background_material) == 104);
static_assert(sizeof(SceneNodeBackgroundSettings) == 112);

} // namespace Velmar
