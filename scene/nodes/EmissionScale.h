#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNodeMaterial.h"
#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// Gives a material of a model, or the background, an amount of light. The material is named by reference, by UID, or
/// by its name in the mesh's list; binding turns the last two into the first.
class EmissionScale : public Destroyable<EmissionScale, ThreadSafeRefCounted> {
  public:
    /// Codes of `measure`. The field may hold others, whose name is empty.
    enum Measure : std::uint32_t {
        luminous_flux = 0,
        luminous_intensity = 1,
        luminance = 2,
        luminous_emittance = 3,
        /// The record isn't written.
        none = 4,
    };

    /// Writes the element `emission_scale` at `depth` tabs, or nothing.
    void writeXML(OStream& stream, std::uint32_t depth) const;

    /// A copy for a copied model. It has no `material_name`, and a UID only when the material isn't bound.
    Reference<EmissionScale> copy() const;

    std::uint32_t measure = luminous_flux;
    /// In the unit of `measure`.
    double value = 0.0;
    String material_name;
    Reference<SceneNodeMaterial> material;
    UID material_uid = invalid_uid;
};

} // namespace Velmar
