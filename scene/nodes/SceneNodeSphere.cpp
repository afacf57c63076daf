#include "scene/nodes/SceneNodeSphere.h"

#include "velmarexceptions.h"

#include "scene/ClassSupport.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/nodes/NodeElements.h"
#include "scene/nodes/TransformPath.h"

#include <utility>

namespace Velmar {

SceneNodeSphere::SceneNodeSphere() : Destroyable(NodeType::Sphere) {
    name = "Sphere";
}

SceneNodeSphere::~SceneNodeSphere() = default;

Reference<SceneNode>* SceneNodeSphere::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeSphere> copy(new SceneNodeSphere);
    copyBaseFields(*this, *copy);
    copy->keyframes = keyframes;
    copy->radius = radius;
    copy->material_uid = material_uid;
    return constructResult(result, copy);
}

void SceneNodeSphere::updateNodeReferences(const NodeUIDMap& map) {
    if (!material) return;
    if (SceneNode* const found = findNode(map, material->getUID(), NodeType::Material))
        material = static_cast<SceneNodeMaterial*>(found);
}

void SceneNodeSphere::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

void SceneNodeSphere::traverse(TraversalState& state) {
    switch (state.kind) {
    case TraversalKind::BindReferences:
        if (!material) {
            SceneNodeRoot* const root = getRootNode();
            assertThat(root != nullptr, "root != nullptr");
            material = root->getMaterialNodeByUID(material_uid);
        }
        break;
    case TraversalKind::GetDependencies:
        if (material) material->traverse(state);
        break;
    case TraversalKind::GetBounds:
        try {
            widenBoundsAlongKeyFrames(state, keyframes, radius);
        } catch (const TransformPathExcep& exception) {
            throw VelmarException(toVelmarString(exception.getMessage()));
        }
        break;
    case TraversalKind::OffsetUIDs:
        uid = offsetUID(uid, state.uid_offset);
        material_uid = offsetUID(material_uid, state.uid_offset);
        break;
    default:
        break;
    }
}

bool SceneNodeSphere::refersToNode(const SceneNode* node) const {
    return node == material.getPointer();
}

Vector<UID>* SceneNodeSphere::getDependencyUIDsInto(Vector<UID>* result) const {
    Vector<UID> uids;
    uids.push_back(currentMaterialUID());
    return constructResult(result, std::move(uids));
}

UID SceneNodeSphere::currentMaterialUID() const {
    return material ? material->getUID() : material_uid;
}

} // namespace Velmar
