#include "scene/nodes/SceneNodeModel.h"

#include "scene/ClassSupport.h"
#include "scene/TraversalState.h"
#include "scene/nodes/NodeElements.h"

#include <algorithm>
#include <utility>

namespace Velmar {

namespace {

template <class Record>
Vector<Reference<Record>> copiesOf(const Vector<Reference<Record>>& records) {
    Vector<Reference<Record>> copies;
    copies.reserve(records.size());
    for (const Reference<Record>& record : records)
        copies.push_back(record ? record->copy() : Reference<Record>());
    return copies;
}

bool areEqual(const Reference<EmissionScale>& a, const Reference<EmissionScale>& b) {
    if (!a || !b) return a == b;
    if (a->measure != b->measure || a->value != b->value) return false;
    if (!a->material) return a->material_uid == b->material_uid;
    return b->material && a->material->getUID() == b->material->getUID();
}

bool areEqual(const Reference<SceneNodeMaterial>& a, const Reference<SceneNodeMaterial>& b) {
    if (!a || !b) return a == b;
    return a->isEqual(b.getPointer());
}

bool areEqual(const Reference<SceneNode>& a, const Reference<SceneNode>& b) {
    if (!a || !b) return a == b;
    return SceneNode::isEqualTree(*a, *b);
}

template <class T>
bool areEqual(const Vector<Reference<T>>& a, const Vector<Reference<T>>& b) {
    return std::ranges::equal(a, b, [](const auto& x, const auto& y) { return areEqual(x, y); });
}

} // namespace

SceneNodeModel::SceneNodeModel() : Destroyable(NodeType::Object) {
    name = "Model";
}

void SceneNodeModel::setGeometry(const Reference<SceneNode>& node) {
    geometry = node;
    geometry_uid = geometry->getUID();
}

void SceneNodeModel::setMaterials(const Vector<Reference<SceneNodeMaterial>>& nodes) {
    materials = nodes;
}

Reference<SceneNode>* SceneNodeModel::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeModel> copy(new SceneNodeModel);
    copyBaseFields(*this, *copy);
    copy->geometry_uid = geometry_uid;
    copy->geometry = geometry;
    copy->keyframes = keyframes;
    copy->rotation = rotation->clone();
    copy->scale = scale;
    copy->ies_profiles = copiesOf(ies_profiles);
    copy->emission_scales = copiesOf(emission_scales);
    copy->materials = materials;
    copy->material_uids = material_uids;
    return constructResult(result, copy);
}

void SceneNodeModel::updateNodeReferences(const NodeUIDMap& map) {
    for (Reference<SceneNodeMaterial>& material : materials) {
        if (!material) continue;
        if (SceneNode* const found = findNode(map, material->getUID(), NodeType::Material))
            material = static_cast<SceneNodeMaterial*>(found);
    }
}

void SceneNodeModel::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

void SceneNodeModel::traverse(TraversalState& state) {
    switch (state.kind) {
    case TraversalKind::BindReferences:
        bindReferences();
        break;
    case TraversalKind::GetDependencies:
        getDependencies(state);
        break;
    case TraversalKind::UpdateDependencies:
        updateDependencies(state);
        break;
    case TraversalKind::GetBounds:
        widenBounds(state, getWorldBounds());
        break;
    case TraversalKind::OffsetUIDs:
        offsetUIDs(state);
        break;
    default:
        break;
    }
}

void SceneNodeModel::getDependencies(TraversalState& state) {
    // Many models share a mesh, which is to report its files once in a pass.
    if (geometry && state.visited_meshes.find(geometry->getUID()) == nullptr) {
        geometry->traverse(state);
        state.visited_meshes.insert(geometry->getUID(), true);
    }
    for (const Reference<IESProfile>& profile : ies_profiles)
        if (profile) state.dependencies.push_back(profile->path);
    for (const Reference<SceneNodeMaterial>& material : materials)
        if (material) material->traverse(state);
}

void SceneNodeModel::updateDependencies(TraversalState& state) {
    for (const Reference<IESProfile>& profile : ies_profiles)
        if (profile) profile->path = mapDependencyPath(state.path_map, profile->path);
}

void SceneNodeModel::offsetUIDs(const TraversalState& state) {
    traverseOwnUID(state);
    geometry_uid = offsetUID(geometry_uid, state.uid_offset);
    for (UID& material_uid : material_uids)
        material_uid = offsetUID(material_uid, state.uid_offset);
}

void SceneNodeModel::getModelMaskNames(MaskNameMap& map) const {
    if (mask_name.empty() || map.find(mask_name) != nullptr) return;
    map.insert(mask_name, static_cast<std::uint32_t>(map.size()));
}

UID SceneNodeModel::currentGeometryUID() const {
    return geometry ? geometry->getUID() : geometry_uid;
}

Vector<UID>* SceneNodeModel::getDependencyUIDsInto(Vector<UID>* result) const {
    Vector<UID> uids;
    uids.push_back(currentGeometryUID());
    for (const Reference<SceneNodeMaterial>& material : materials)
        if (material) uids.push_back(material->getUID());
    return constructResult(result, std::move(uids));
}

bool SceneNodeModel::isEqual(const SceneNode* other) const {
    if (!isBaseEqual(*other) || other->getType() != NodeType::Object) return false;
    const auto& node = static_cast<const SceneNodeModel&>(*other);
    return areEqual(geometry, node.geometry) && std::ranges::equal(keyframes, node.keyframes) && scale == node.scale &&
           areEqual(emission_scales, node.emission_scales) && areEqual(materials, node.materials);
}

} // namespace Velmar
