#pragma once

#include <string_view>

namespace Velmar {

class Mesh;

/// Reads a mesh file of any format into `mesh`, normally a new one, and leaves it built. The extension of `path`
/// (UTF-8) alone decides: "vmmesh", "obj", "ply" or "stl" in any case of letters. `/` in the path is taken as `\`.
/// `scale` is multiplied into the positions of all but vmmesh files; the material libraries of OBJ files aren't read.
/// Throws `Velmar::Exception`, whose message names the file when it was the mesh or its own format that failed. The
/// mesh then holds part of the file and is to be discarded.
void loadMesh(std::string_view path, Mesh& mesh, float scale);

} // namespace Velmar
