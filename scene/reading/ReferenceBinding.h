#pragma once

#include "scene/SceneNodeRoot.h"

namespace Velmar {

/// Binds the references of a scene that was read, as far as their nodes are there. Unlike a `BindReferences` pass it
/// never fails: other geometry and lights keep the UID that names nothing, a missing material of a model is replaced by
/// one outside of the scene, and a missing scatter node by one without an element at the scene's end.
void bindReferences(SceneNodeRoot& root);

} // namespace Velmar
