#pragma once

#include "scene/Material.h"
#include "scene/SceneNode.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// Gives a material its place in a scene: models and spheres name it by its UID. The node's name is that of the
/// material. Carries the guard against loops of references.
class SceneNodeMaterial : public Destroyable<SceneNodeMaterial, PlainSceneNode> {
  public:
    /// How many visits of material nodes may be nested in a pass.
    static constexpr std::int32_t max_nested_visits = 100;

    /// With a new `DiffuseMaterial` named "Material".
    SceneNodeMaterial();

    /// Names the material. Without one the name is lost.
    void setName(const String& new_name) override;
    /// The material's name; without a material that of the node itself, which is empty.
    const String& getName() const override;

    /// The copy has the UID and the name, but a fresh default material and no scatter nodes.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;

    void updateNodeReferences(const NodeUIDMap& map) override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    /// Throws `VelmarException` when visits are nested too deep, when a scatter node isn't found or is another kind of
    /// node, and when a path has no new one.
    void traverse(TraversalState& state) override;

    /// That of the material, which must be set.
    std::uint32_t getMaxLayerIndex() const override;
    void getMaterialMaskNames(MaskNameMap& map) const override;
    bool refersToNode(const SceneNode* node) const override;
    Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const override;

    Reference<Material> material;
    /// As stored; nothing on this side fills it.
    Vector<UID> scatter_uids;
    /// What `scatter_uids` were bound to, in the same order. Not counted: the scene holds them. Each pass that binds
    /// appends them anew.
    Vector<SceneNode*> scatter_nodes;

  private:
    void bindScatterNodes();
};

static_assert(offsetof(SceneNodeMaterial, material) == 96);
static_assert(offsetof(SceneNodeMaterial, scatter_uids) == 104);
static_assert(offsetof(SceneNodeMaterial, scatter_nodes) == 128);
static_assert(sizeof(SceneNodeMaterial) == 152);

} // namespace Velmar
