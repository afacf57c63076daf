#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

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

} // namespace Velmar
