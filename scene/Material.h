#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "scene/SceneTables.h"
#include "scene/SharedShaderInfo.h"
#include "scene/SurfaceParam.h"
#include "scene/TraversalState.h"
#include "scene/WavelengthDependentParam.h"
#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>
#include <xxhash.h>

namespace Velmar {

class SceneNode;

/// What a surface or the background is made of, apart from the node that carries it into a scene. The renderer library
/// calls the virtual operations by position and derives classes from this one, so their order and the layout must not
/// change. Only the reference count is safe across threads.
class Material : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Constructs the name of the material's element in `result` and returns that place.
    virtual String* getTypeNameInto(String* result) const = 0;
    /// Slot 2. A code for the class.
    virtual std::uint32_t getMaterialKind() const = 0;
    /// Slot 3. The greatest light layer that this material names.
    virtual std::uint32_t getMaxLayerIndex() const;
    /// Slot 4. Does the part of a pass that concerns the fields of the derived class.
    virtual void traverseFields(TraversalState& state, SceneNode* owner) = 0;
    /// Slot 5. True when this material refers to `node`.
    virtual bool refersToNode(const SceneNode* node) const;
    /// Slot 6. Constructs in `result` the UIDs of the nodes that this material refers to, and returns that place.
    virtual Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const;
    /// Slot 7. Feeds what tells this material from others to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;
    /// Slot 8.
    virtual bool hasDisplacement() const = 0;
    /// Slot 9. Writes the content of the material's element, which stands at `depth` tabs.
    virtual void writeFieldsXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;

    /// The natural forms of slots 1 and 6.
    String getTypeName() const;
    Vector<UID> getDependencyUIDs() const;

    /// Writes the material's element one level below `depth`, the depth of the enclosing element, and after it those
    /// settings of all materials that differ from their defaults.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const;

    /// The material's part of a pass over the node that carries it. Throws `VelmarException`.
    void traverseMaterial(TraversalState& state, SceneNode* owner);

    String name;
    Reference<SharedShaderInfo> shared_shader_info;
    Reference<SurfaceParam> bump;
    Reference<SurfaceParam> displacement;
    Reference<WavelengthDependentParam> base_emission;
    Reference<WavelengthDependentParam> emission;
    Reference<SurfaceParam> normal_map;
    /// Index of a light layer.
    std::uint32_t layer = 0;
    bool backface_emit = false;
    bool shadow_catcher = false;
    bool delta_emission = false;
    double emission_sampling_factor = 1.0;
    String mask_name;

  protected:
    Material() = default;
    ~Material() = default;
};

static_assert(sizeof(Material) == 160);

} // namespace Velmar
