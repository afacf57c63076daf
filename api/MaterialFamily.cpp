#include "api/Handles.h"
#include "api/MaterialValues.h"
#include "scene/Material.h"

using namespace Velmar;

VelmarMaterialNode* VelmarMaterial_CreateNode(const char* name) {
    NewObject<SceneNodeMaterial> node(new SceneNodeMaterial);
    node->setName(String(name));
    return toHandle<VelmarMaterialNode>(node.release());
}

VelmarMaterial* VelmarMaterial_CreateDiffuse(const char* name, double r, double g, double b) {
    NewObject<DiffuseMaterial> material(new DiffuseMaterial);
    material->random_triangle_colours = false;
    material->name = String(name);
    material->albedo = constantColour(r, g, b);
    return toHandle<VelmarMaterial>(material.release());
}

void VelmarMaterial_AddToNode(VelmarMaterialNode* node, VelmarMaterial* material) {
    fromHandle(node)->material = fromHandle(material);
}
