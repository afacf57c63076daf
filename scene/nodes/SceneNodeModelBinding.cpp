#include "velmarexceptions.h"

#include "scene/NumberText.h"
#include "scene/SceneNodeRoot.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace Velmar {

namespace {

/// A failure that concerns one of the nodes that `node` refers to.
VelmarException bindingFailure(const SceneNode& node, const std::string& what) {
    return VelmarException(toVelmarString("While processing node '" + toStdString(node.getName()) + "', UID " +
                                          uint32ToString(node.getUID()) + ":  " + what));
}

std::string typeNameOf(const SceneNode& node) {
    return toStdString(getNodeTypeName(node.getType()));
}

} // namespace

void SceneNodeModel::bindReferences() {
    SceneNodeRoot* const root = getRootNode();
    if (root == nullptr) throw VelmarException("While binding geometry: root node was NULL");
    if (!geometry) bindGeometry(*root);
    if (geometry->getType() == NodeType::Mesh) {
        const auto& mesh_node = static_cast<const SceneNodeMesh&>(*geometry);
        findUIDsByName(mesh_node, emission_scales);
        findUIDsByName(mesh_node, ies_profiles);
    }
    bindRecords(*root, emission_scales, "Emission scale");
    bindRecords(*root, ies_profiles, "IES profile");
    if (materials.empty()) {
        materials.resize(material_uids.size());
        for (std::size_t i = 0; i < materials.size(); ++i)
            materials[i] = findMaterial(*root, material_uids[i]);
    }
}

void SceneNodeModel::bindGeometry(SceneNodeRoot& root) {
    SceneNode* const found = root.getNodeByUID(geometry_uid);
    if (found == nullptr)
        throw bindingFailure(*this, "Failed to find geometry for UID " + uint32ToString(geometry_uid));
    if (!isGeometry(found->getType()))
        throw bindingFailure(*this, "Referenced node (UID=" + uint32ToString(geometry_uid) +
                                        ") did not have type SceneNodeMesh or SceneNodeParametricSurface or "
                                        "SceneNodeDisplacedQuad, but instead had type " +
                                        typeNameOf(*found) + ".");
    geometry = found;
}

SceneNodeMaterial* SceneNodeModel::findMaterial(SceneNodeRoot& root, UID wanted) const {
    SceneNode* const found = root.getNodeByUID(wanted);
    if (found == nullptr) throw bindingFailure(*this, "Failed to find material for UID " + uint32ToString(wanted));
    if (found->getType() != NodeType::Material)
        throw bindingFailure(*this, "Referenced node (UID " + uint32ToString(wanted) +
                                        ") did not have type SceneNodeMaterial, but instead had type " +
                                        typeNameOf(*found) + ".");
    return static_cast<SceneNodeMaterial*>(found);
}

UID SceneNodeModel::findMaterialUIDByName(const SceneNodeMesh& mesh_node, const String& material_name) const {
    static const Vector<String> no_names;
    const Vector<String>& names = mesh_node.mesh ? mesh_node.mesh->used_materials : no_names;
    const String* const found = std::find(names.begin(), names.end(), material_name);
    if (found == names.end())
        throw SceneParserExcep(String("Material '") + material_name + "' is not defined on mesh " +
                               mesh_node.getName() + ".");
    const auto index = static_cast<std::size_t>(found - names.begin());
    if (materials.empty()) return index < material_uids.size() ? material_uids[index] : invalid_uid;
    if (material_uids.empty())
        return index < materials.size() && materials[index] ? materials[index]->getUID() : invalid_uid;
    throw SceneParserExcep(String("No materials assigned to model ") + getName() + ".");
}

template <class Record>
void SceneNodeModel::findUIDsByName(const SceneNodeMesh& mesh_node, const Vector<Reference<Record>>& records) const {
    for (const Reference<Record>& record : records)
        if (record && !record->material && record->material_uid == invalid_uid)
            record->material_uid = findMaterialUIDByName(mesh_node, record->material_name);
}

template <class Record>
void SceneNodeModel::bindRecords(SceneNodeRoot& root, const Vector<Reference<Record>>& records,
                                 const char* kind) const {
    for (const Reference<Record>& record : records) {
        if (!record || record->material) continue;
        if (record->material_uid == invalid_uid)
            throw SceneParserExcep(String("Failed binding material to ") + kind + " in model " + getName() +
                                   ": Invalid UID.");
        record->material = findMaterial(root, record->material_uid);
    }
}

} // namespace Velmar
