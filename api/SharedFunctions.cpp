#include "api/SharedFunctions.h"

using namespace Velmar;

extern "C" void velmarDeleteHandle(ThreadSafeRefCounted* object) {
    if (object != nullptr) object->destroy(1);
}

extern "C" void velmarAddNode(SceneNodeRoot* scene, SceneNode* node) {
    scene->addChildNode(Reference<SceneNode>(node));
}
