#pragma once

#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNode.h"
#include "scene/SceneNodeRoot.h"

/// Functions that stand behind several exported names; `VelmarAPI.def` tells which.

/// Destroys the object of a handle, whatever its count. Null is ignored.
extern "C" void velmarDeleteHandle(Velmar::ThreadSafeRefCounted* object);

/// Adds any node to a scene.
extern "C" void velmarAddNode(Velmar::SceneNodeRoot* scene, Velmar::SceneNode* node);
