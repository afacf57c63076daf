#pragma once

#include "velmarvector.h"

#include "scene/SceneNode.h"
#include "scene/nodes/TransformPath.h"

#include <cstddef>

namespace Velmar {

class SceneNodeMaterial;

/// A sphere that may move during the exposure, of one material.
class SceneNodeSphere : public Destroyable<SceneNodeSphere, PlainSceneNode> {
  public:
    SceneNodeSphere();
    ~SceneNodeSphere();

    /// The copy isn't bound to the material; it names it by `material_uid`.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void updateNodeReferences(const NodeUIDMap& map) override;
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    /// Binding needs a sphere that is in a scene. Throws `VelmarException` when the material isn't found or is
    /// another kind of node, and for the bounds of a motion that makes no sense.
    void traverse(TraversalState& state) override;
    bool refersToNode(const SceneNode* node) const override;
    Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const override;

    Vector<KeyFrame> keyframes;
    /// In metres.
    double radius = 1.0;
    /// Null while not bound.
    Reference<SceneNodeMaterial> material;
    /// The material's UID while it isn't bound.
    UID material_uid = invalid_uid;

  private:
    /// That of the bound material, else the stored one.
    UID currentMaterialUID() const;
};

static_assert(offsetof(SceneNodeSphere, keyframes) == 96);
static_assert(offsetof(SceneNodeSphere, radius) == 120);
static_assert(offsetof(SceneNodeSphere, material) == 128);
static_assert(offsetof(SceneNodeSphere, material_uid) == 136);
static_assert(sizeof(SceneNodeSphere) == 144);

} // namespace Velmar
