#include "api/Handles.h"
#include "scene/SceneXMLWriter.h"

using namespace Velmar;

VelmarScene* VelmarScene_Create() {
    return toHandle<VelmarScene>(new SceneNodeRoot);
}

void VelmarScene_AddModel(VelmarScene* scene, VelmarModel* model) {
    // Any node may be added by this name too.
    fromHandle(scene)->addChildNode(*reinterpret_cast<SceneNode*>(model));
}

void VelmarScene_WriteToXML(VelmarScene* scene, const char* path) {
    writeSceneXML(*fromHandle(scene), String(path), true, nullptr);
}
