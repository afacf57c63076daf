#pragma once

#include "scene/SceneNodeRoot.h"
#include "scene/nodes/SceneNodeCamera.h"

/// Whether something may be in the picture of a camera with a position. A model or sphere counts by its bounding box,
/// so that false is certain. Models need their meshes, of which the bounds suffice.
bool seesSomething(const Velmar::SceneNodeRoot& root, const Velmar::SceneNodeCamera& camera);
