#pragma once

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "tests/support/TextFile.h"

#include <string_view>

namespace TestSupport {

/// Reads an OBJ file of this text, without its libraries of materials.
inline void loadText(std::string_view text, Velmar::Mesh& mesh, float scale = 1.0f) {
    const TextFile file("model.obj", text);
    Velmar::MTLLibrary library;
    Velmar::loadOBJ(file.path(), mesh, scale, false, library);
}

} // namespace TestSupport
