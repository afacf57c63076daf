#pragma once

#include <string_view>

namespace Velmar {

class Mesh;

/// Reads the STL file `path` (UTF-8) into `mesh`, normally a new one, and builds it. A file that begins with "solid" is
/// read as text, any other as binary. Each triangle gets three vertices of its own, multiplied by `scale`; degenerate
/// ones are kept, and facet normals are ignored.
/// Throws `Velmar::Exception` when the file can't be mapped, is too small or isn't STL. The mesh then holds part of the
/// file and is to be discarded.
void loadSTL(std::string_view path, Mesh& mesh, float scale);

} // namespace Velmar
