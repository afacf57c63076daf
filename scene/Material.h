#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvec.h"
#include "velmarvector.h"

#include "scene/MaterialParams.h"
#include "scene/SceneTables.h"
#include "scene/SharedShaderInfo.h"
#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"
#include "utils/OStream.h"

#include <cstddef>
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

    /// Slot 1. The name of the material's element.
    virtual String* getTypeNameInto(String* result) const = 0;
    /// Slot 2. A code for the class.
    virtual std::uint32_t getMaterialKind() const = 0;
    /// Slot 3. The greatest light layer that this material names.
    virtual std::uint32_t getMaxLayerIndex() const;
    /// Slot 4. Does the part of a pass that concerns the fields of the derived class.
    virtual void traverseFields(TraversalState& state, SceneNode* owner) = 0;
    /// Slot 5. True when this material refers to `node`.
    virtual bool refersToNode(const SceneNode* node) const;
    /// Slot 6. The UIDs of the nodes that this material refers to.
    virtual Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const;
    /// Slot 7. Feeds what distinguishes this material from others to `state`.
    virtual void updateHash(XXH64_state_t* state) const = 0;
    /// Slot 8.
    virtual bool hasDisplacement() const = 0;
    /// Slot 9. Writes the content of the material's element, which has `depth` tabs.
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

static_assert(offsetof(Material, name) == 16);
static_assert(offsetof(Material, shared_shader_info) == 56);
static_assert(offsetof(Material, bump) == 64);
static_assert(offsetof(Material, displacement) == 72);
static_assert(offsetof(Material, base_emission) == 80);
static_assert(offsetof(Material, emission) == 88);
static_assert(offsetof(Material, normal_map) == 96);
static_assert(offsetof(Material, layer) == 104);
static_assert(offsetof(Material, backface_emit) == 108);
static_assert(offsetof(Material, shadow_catcher) == 109);
static_assert(offsetof(Material, delta_emission) == 110);
static_assert(offsetof(Material, emission_sampling_factor) == 112);
static_assert(offsetof(Material, mask_name) == 120);
static_assert(sizeof(Material) == 160);

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

static_assert(offsetof(DiffuseMaterial, albedo) == 160);
static_assert(offsetof(DiffuseMaterial, random_triangle_colours) == 168);
static_assert(sizeof(DiffuseMaterial) == 176);

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

    /// Towards the sun; used as given, whatever its length.
    Vec3d sundir{0.0, 0.0, 1.0};
    double turbidity = 2.0;
    bool extra_atmospheric = false;
    bool enable_sky = true;
    std::uint32_t sun_layer = 0;
    std::uint32_t sky_layer = 0;
    /// The name of the sky model, known to the renderer library.
    String model = "original";
};

static_assert(offsetof(SunSkyMaterial, sundir) == 160);
static_assert(offsetof(SunSkyMaterial, turbidity) == 184);
static_assert(offsetof(SunSkyMaterial, extra_atmospheric) == 192);
static_assert(offsetof(SunSkyMaterial, enable_sky) == 193);
static_assert(offsetof(SunSkyMaterial, sun_layer) == 196);
static_assert(offsetof(SunSkyMaterial, sky_layer) == 200);
static_assert(offsetof(SunSkyMaterial, model) == 208);
static_assert(sizeof(SunSkyMaterial) == 248);

} // namespace Velmar
