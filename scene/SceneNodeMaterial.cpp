#include "scene/SceneNodeMaterial.h"

#include "velmarexceptions.h"

#include "scene/ClassSupport.h"
#include "scene/MaterialElements.h"
#include "scene/NumberText.h"
#include "scene/SceneNodeRoot.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace Velmar {

namespace {

/// A reference of a material to another node, and the kind of node that it may be bound to.
struct NodeReferenceRule {
    std::uint32_t material_kind;
    /// Which of the material's references it is, counted from 0.
    std::size_t index;
    NodeType target_type;
};

/// The kinds of material with references of their own. Their classes live in the renderer library and hold the
/// references one after the other, directly after the fields of `Material`.
constexpr NodeReferenceRule reference_rules[] = {
    {0, 0, NodeType::Material}, {0, 1, NodeType::Material}, {2, 1, NodeType::Medium},
    {6, 0, NodeType::Medium},   {7, 2, NodeType::Medium},
};

Reference<SceneNode>& nodeReferenceOf(Material& material, std::size_t index) {
    char* const behind_base = reinterpret_cast<char*>(&material) + sizeof(Material);
    return reinterpret_cast<Reference<SceneNode>*>(behind_base)[index];
}

/// The own fields of scatter nodes, after those of `SceneNode`, begin with the UID of the material node that they are
/// bound to.
void setScatterOwner(SceneNode& scatter, UID owner) {
    std::memcpy(reinterpret_cast<char*>(&scatter) + sizeof(SceneNode), &owner, sizeof owner);
}

void appendAll(Vector<UID>& uids, const Vector<UID>& more) {
    const std::size_t needed = uids.size() + more.size();
    if (needed > uids.capacity()) uids.reserve(std::max(needed, 2 * uids.capacity()));
    uids.append(std::span(more.begin(), more.end()));
}

} // namespace

SceneNodeMaterial::SceneNodeMaterial() : Destroyable(NodeType::Material), material(new DiffuseMaterial) {
    material->name = "Material";
}

void SceneNodeMaterial::setName(const String& new_name) {
    if (material) material->name = new_name;
}

const String& SceneNodeMaterial::getName() const {
    return material ? material->name : name;
}

Reference<SceneNode>* SceneNodeMaterial::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeMaterial> copy(new SceneNodeMaterial);
    copyBaseFields(*this, *copy);
    return constructResult(result, copy);
}

void SceneNodeMaterial::updateNodeReferences(const NodeUIDMap& map) {
    if (!material) return;
    const std::uint32_t kind = material->getMaterialKind();
    for (const NodeReferenceRule& rule : reference_rules) {
        if (rule.material_kind != kind) continue;
        Reference<SceneNode>& reference = nodeReferenceOf(*material, rule.index);
        if (!reference) continue;
        if (SceneNode* const found = findNode(map, reference->getUID(), rule.target_type)) reference = found;
    }
}

void SceneNodeMaterial::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

void SceneNodeMaterial::traverse(TraversalState& state) {
    if (++state.depth > max_nested_visits)
        throw VelmarException(toVelmarString("While traversing scene, exceeded maximum traversal depth, possible "
                                             "reference loop found. (at node UID " +
                                             uint32ToString(uid) + ", name '" + toStdString(getName()) + "')"));

    if (state.kind == TraversalKind::OffsetUIDs) {
        traverseOwnUID(state);
        for (UID& scatter_uid : scatter_uids)
            scatter_uid = offsetUID(scatter_uid, state.uid_offset);
    } else if (state.kind == TraversalKind::BindReferences) {
        bindScatterNodes();
    }
    if (material) material->traverseMaterial(state, this);
    --state.depth;
}

void SceneNodeMaterial::bindScatterNodes() {
    for (const UID scatter_uid : scatter_uids) {
        SceneNodeRoot* const root = getRootNode();
        if (root == nullptr) throw VelmarException("While binding scatter node: root node was NULL");
        SceneNode* const found = root->getNodeByUID(scatter_uid);
        if (found == nullptr)
            throw VelmarException(toVelmarString("While processing node '" + toStdString(getName()) + "', UID " +
                                                 uint32ToString(uid) + ":  Failed to find scatter node for UID " +
                                                 uint32ToString(scatter_uid)));
        if (found->getType() != NodeType::Scatter)
            throw VelmarException("Referenced node did not have type SceneNodeScatter");
        setScatterOwner(*found, uid);
        scatter_nodes.push_back(found);
    }
}

std::uint32_t SceneNodeMaterial::getMaxLayerIndex() const {
    return material->getMaxLayerIndex();
}

void SceneNodeMaterial::getMaterialMaskNames(MaskNameMap& map) const {
    if (!material || material->mask_name.empty() || map.find(material->mask_name) != nullptr) return;
    map.insert(material->mask_name, static_cast<std::uint32_t>(map.size()));
}

bool SceneNodeMaterial::refersToNode(const SceneNode* node) const {
    return material && material->refersToNode(node);
}

Vector<UID>* SceneNodeMaterial::getDependencyUIDsInto(Vector<UID>* result) const {
    Vector<UID> uids(scatter_uids);
    for (const SceneNode* const scatter : scatter_nodes)
        appendAll(uids, scatter->getDependencyUIDs());
    if (material) appendAll(uids, material->getDependencyUIDs());
    return constructResult(result, std::move(uids));
}

} // namespace Velmar
