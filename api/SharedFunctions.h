#pragma once

#include "velmarthreadsaferefcounted.h"

#include "scene/SceneNode.h"
#include "scene/SceneNodeRoot.h"

/// Functions that are exported under several names; `VelmarAPI.def` lists them.

/// Destroys the object of a handle even if its count isn't 0. Null is ignored.
extern "C" void velmarDeleteHandle(Velmar::ThreadSafeRefCounted* object);

/// Adds any node to a scene.
extern "C" void velmarAddNode(Velmar::SceneNodeRoot* scene, Velmar::SceneNode* node);

/// Setters of cameras and of tone mapping: the field is at the same offset of either node.
extern "C" void velmarSetScaleOrLensRadius(void* node, double value);
extern "C" void velmarSetPreScaleOrFocusDistance(void* node, double value);
extern "C" void velmarSetPostScaleOrSensorWidth(void* node, double value);
extern "C" void velmarSetBurnOrLensSensorDistance(void* node, double value);
