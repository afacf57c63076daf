#include "scene/reading/ReferenceBinding.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/ForeignParts.h"

#include <algorithm>
#include <unordered_map>

namespace Velmar {

namespace {

class Binder {
  public:
    explicit Binder(SceneNodeRoot& root_) : root(root_) {}

    void bind() {
        // Binding a material may add nodes at the end.
        for (std::size_t i = 0; i < root.children().size(); ++i) {
            SceneNode& node = *root.children()[i];
            if (node.getType() == NodeType::Object)
                bindModel(static_cast<SceneNodeModel&>(node));
            else if (node.getType() == NodeType::Sphere)
                bindMaterial(static_cast<SceneNodeSphere&>(node));
            else if (node.getType() == NodeType::Material)
                bindScatterNodes(static_cast<SceneNodeMaterial&>(node));
        }
    }

  private:
    void bindModel(SceneNodeModel& model) {
        SceneNode* const geometry = root.getNodeByUID(model.geometry_uid);
        if (geometry != nullptr && isGeometry(geometry->getType())) model.geometry = geometry;
        model.materials.reserve(model.material_uids.size());
        for (const UID uid : model.material_uids)
            model.materials.push_back(getMaterial(uid));
        // They would only repeat what is bound now.
        Vector<UID>().swap(model.material_uids);
        for (const Reference<EmissionScale>& scale : model.emission_scales)
            bindMaterial(*scale);
        for (const Reference<IESProfile>& profile : model.ies_profiles)
            bindMaterial(*profile);
    }

    template <class Holder>
    void bindMaterial(Holder& holder) {
        if (SceneNodeMaterial* const found = findMaterial(holder.material_uid)) holder.material = found;
    }

    void bindScatterNodes(SceneNodeMaterial& node) {
        for (const UID uid : node.scatter_uids) {
            SceneNode* found = root.getNodeByUID(uid);
            if (found == nullptr) {
                found = new ForeignNode(NodeType::Scatter);
                found->setUID(uid);
                root.addChildNode(found);
            }
            node.scatter_nodes.push_back(found);
        }
    }

    SceneNodeMaterial* findMaterial(UID uid) {
        SceneNode* const found = root.getNodeByUID(uid);
        return found != nullptr && found->getType() == NodeType::Material ? static_cast<SceneNodeMaterial*>(found)
                                                                          : nullptr;
    }

    Reference<SceneNodeMaterial> getMaterial(UID uid) {
        if (uid == invalid_uid) return nullptr;
        if (SceneNodeMaterial* const found = findMaterial(uid)) return found;
        Reference<SceneNodeMaterial>& missing = missing_materials[uid];
        if (!missing) {
            missing = new SceneNodeMaterial;
            missing->material = nullptr;
            missing->setUID(uid);
        }
        return missing;
    }

    static bool isGeometry(NodeType type) {
        return type == NodeType::Mesh || type == NodeType::ParametricSurface || type == NodeType::DisplacedQuad;
    }

    SceneNodeRoot& root;
    std::unordered_map<UID, Reference<SceneNodeMaterial>> missing_materials;
};

} // namespace

void bindReferences(SceneNodeRoot& root) {
    Binder(root).bind();
}

} // namespace Velmar
