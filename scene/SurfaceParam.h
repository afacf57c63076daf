#pragma once

#include "velmarthreadsaferefcounted.h"

#include "scene/TraversalState.h"
#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

class SceneNode;

/// What shapes a surface finer than its geometry: the bump, displacement and normal map of a material. All its classes
/// live in the renderer library; this side calls them by slot number. The hash stands one slot later than that of
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
    /// Slot 4. Keeps the place of an operation of the other side, which is never called from here.
    virtual void reservedSlot4() = 0;
    /// Slot 5. Feeds what the parameter adds to a material's hash to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;

  protected:
    SurfaceParam() = default;
    ~SurfaceParam() = default;
};

static_assert(sizeof(SurfaceParam) == 16);

} // namespace Velmar
