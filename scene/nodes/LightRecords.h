#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/XMLPrimitives.h"
#include "utils/OStream.h"

#include <cstddef>
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

    bool isWritten() const { return measure != none; }

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

static_assert(offsetof(EmissionScale, measure) == 16);
static_assert(offsetof(EmissionScale, value) == 24);
static_assert(offsetof(EmissionScale, material_name) == 32);
static_assert(offsetof(EmissionScale, material) == 72);
static_assert(offsetof(EmissionScale, material_uid) == 80);
static_assert(sizeof(EmissionScale) == 88);

/// Gives a material of a model the distribution of light in an IES file. The material is named as in `EmissionScale`.
class IESProfile : public Destroyable<IESProfile, ThreadSafeRefCounted> {
  public:
    /// Writes the element `ies_profile` at `depth` tabs.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const;

    /// A copy for a copied model. It has no `material_name`, and a UID only when the material isn't bound.
    Reference<IESProfile> copy() const;

    String material_name;
    /// Of the IES file, on which the scene depends.
    String path;
    Reference<SceneNodeMaterial> material;
    UID material_uid = invalid_uid;
};

static_assert(offsetof(IESProfile, material_name) == 16);
static_assert(offsetof(IESProfile, path) == 56);
static_assert(offsetof(IESProfile, material) == 96);
static_assert(offsetof(IESProfile, material_uid) == 104);
static_assert(sizeof(IESProfile) == 112);

} // namespace Velmar
