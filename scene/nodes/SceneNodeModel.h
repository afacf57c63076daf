#pragma once

#include "velmarvector.h"

#include "scene/Rotations.h"
#include "scene/SceneNode.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/nodes/LightRecords.h"
#include "scene/nodes/TransformPath.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// Whether models can be of a node of this kind.
constexpr bool isGeometry(NodeType type) {
    return type == NodeType::Mesh || type == NodeType::ParametricSurface || type == NodeType::DisplacedQuad;
}

class SceneNodeMesh;

/// Places one piece of geometry in the scene, with its materials and its motion. References stand in two forms: a model
/// that a host builds holds them, a model from elsewhere holds UIDs, which a pass that binds turns into references.
class SceneNodeModel : public Destroyable<SceneNodeModel, PlainSceneNode> {
  public:
    SceneNodeModel();

    /// Takes the geometry, which must not be null, and its present UID.
    void setGeometry(const Reference<SceneNode>& node);
    void setMaterials(const Vector<Reference<SceneNodeMaterial>>& nodes);

    /// The copy shares geometry and materials. It is visible to the camera and has no mask name. `rotation` must be
    /// set.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;
    void updateNodeReferences(const NodeUIDMap& map) override;

    /// Writes the materials that are bound; those known by UID only are left out. `rotation` must be set.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    /// Throws `VelmarException` or `SceneParserExcep` when something can't be bound, and leaves bound what was bound
    /// till then; `VelmarException` when a path has no new one; `SceneLoaderExcep` for bounds with a rotation of an
    /// unknown kind.
    void traverse(TraversalState& state) override;

    void getModelMaskNames(MaskNameMap& map) const override;
    Vector<UID>* getDependencyUIDsInto(Vector<UID>* result) const override;

    /// Rotation, visibility, IES files, mask name and stored UIDs take no part.
    bool isEqual(const SceneNode* other) const override;

    /// Over normalised exposure time.
    Vector<KeyFrame> keyframes;
    /// Serves all key frames.
    Reference<Rotation> rotation;
    double scale = 1.0;
    bool invisible_to_camera = false;
    Vector<Reference<IESProfile>> ies_profiles;
    String mask_name;
    /// Counts while `geometry` is null.
    UID geometry_uid = invalid_uid;
    Reference<SceneNode> geometry;
    /// One for each material of the geometry.
    Vector<Reference<SceneNodeMaterial>> materials;
    /// The unbound form of `materials`.
    Vector<UID> material_uids;
    Vector<Reference<EmissionScale>> emission_scales;

  private:
    UID currentGeometryUID() const;
    void getDependencies(TraversalState& state);
    void updateDependencies(TraversalState& state);
    void offsetUIDs(const TraversalState& state);

    // Binding.
    void bindReferences();
    void bindGeometry(SceneNodeRoot& root);
    SceneNodeMaterial* findMaterial(SceneNodeRoot& root, UID wanted) const;
    /// The UID of the material that `mesh_node` knows as `material_name`, or the invalid UID when the model has fewer
    /// materials than the mesh has names.
    UID findMaterialUIDByName(const SceneNodeMesh& mesh_node, const String& material_name) const;
    template <class Record>
    void findUIDsByName(const SceneNodeMesh& mesh_node, const Vector<Reference<Record>>& records) const;
    template <class Record>
    void bindRecords(SceneNodeRoot& root, const Vector<Reference<Record>>& records, const char* kind) const;

    // Bounds.
    Box4f getWorldBounds() const;
    Box4f getMeshBounds(const SceneNodeMesh& mesh_node) const;
};

static_assert(offsetof(SceneNodeModel, keyframes) == 96);
static_assert(offsetof(SceneNodeModel, rotation) == 120);
static_assert(offsetof(SceneNodeModel, scale) == 128);
static_assert(offsetof(SceneNodeModel, invisible_to_camera) == 136);
static_assert(offsetof(SceneNodeModel, ies_profiles) == 144);
static_assert(offsetof(SceneNodeModel, mask_name) == 168);
static_assert(offsetof(SceneNodeModel, geometry_uid) == 208);
static_assert(offsetof(SceneNodeModel, geometry) == 216);
static_assert(offsetof(SceneNodeModel, materials) == 224);
static_assert(offsetof(SceneNodeModel, material_uids) == 248);
static_assert(offsetof(SceneNodeModel, emission_scales) == 272);
static_assert(sizeof(SceneNodeModel) == 296);

} // namespace Velmar
