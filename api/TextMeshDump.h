#pragma once

#include "scene/nodes/SceneNodeMesh.h"

#include <ostream>

namespace Velmar {

/// Writes the mesh of a node as text for people. The stream decides how numbers look.
void writeMeshText(std::ostream& file, const SceneNodeMesh& node);

} // namespace Velmar
