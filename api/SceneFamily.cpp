#include "api/Handles.h"
#include "scene/SceneXMLWriter.h"

using namespace Velmar;

VelmarScene* VelmarScene_Create() {
    return toHandle<VelmarScene>(new SceneNodeRoot);
}

void VelmarScene_AddModel(VelmarScene* scene, VelmarModel* model) {
    // Any node may be added by this name too.
    auto* const node = reinterpret_cast<SceneNode*>(model);
    const HeldForCall held(node);
    fromHandle(scene)->addChildNode(Reference<SceneNode>(node));
}

void VelmarScene_WriteToXML(VelmarScene* scene, const char* path) {
    writeSceneXML(*fromHandle(scene), String(path), true, nullptr);
}
