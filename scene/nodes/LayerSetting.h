#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/Spectrum.h"

#include <cstdint>

namespace Velmar {

/// How one layer of light takes part in an image. Called by slot number from the renderer library, which is also where
/// these objects come from.
class LayerSetting : public Destroyable<LayerSetting, ThreadSafeRefCounted> {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Constructs a reference to a copy, with a scale of its own, in `result` and returns that place.
    virtual Reference<LayerSetting>* cloneInto(Reference<LayerSetting>* result) const;

    /// The natural form of slot 1.
    Reference<LayerSetting> clone() const;

    /// Writes the element at `depth` tabs. That of the scale is there even without a scale.
    void writeXML(OStream& stream, std::uint32_t depth) const;

    String name;
    /// May be null.
    Reference<Spectrum> layer_scale;
    bool enabled = false;
};

} // namespace Velmar
