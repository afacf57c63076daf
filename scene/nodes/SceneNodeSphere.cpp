#include "scene/nodes/SceneNodeSphere.h"

#include "velmarexceptions.h"

#include "scene/ClassValuedSlot.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeRoot.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/WorldBounds.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(SceneNodeSphere, keyframes) == 96);
static_assert(offsetof(SceneNodeSphere, radius) == 120);
static_assert(offsetof(SceneNodeSphere, material) == 128);
static_assert(offsetof(SceneNodeSphere, material_uid) == 136);
static_assert(sizeof(SceneNodeSphere) == 144);

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
    return new (static_cast<void*>(result)) Reference<SceneNode>(copy);
}

void SceneNodeSphere::updateNodeReferences(const NodeUIDMap& map) {
    if (!material) return;
    SceneNode* const* const found = map.find(material->getUID());
    if (found != nullptr && *found != nullptr && (*found)->getType() == NodeType::Material)
        material = static_cast<SceneNodeMaterial*>(*found);
}

void SceneNodeSphere::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions&) const {
    writeOpenTag(stream, depth, "sphere");
    writeNodeIdentity(stream, depth + 1, *this);
    for (const KeyFrame& frame : keyframes)
        writeKeyFrame(frame, stream, depth + 1);
    writeDoubleElement(stream, depth + 1, "radius", radius);
    writeUInt32Element(stream, depth + 1, "material_uid", currentMaterialUID());
    writeCloseTag(stream, depth, "sphere");
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
    return moveIntoResult(uids, result);
}

UID SceneNodeSphere::currentMaterialUID() const {
    return material ? material->getUID() : material_uid;
}

} // namespace Velmar
