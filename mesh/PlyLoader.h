#pragma once

#include <string_view>

namespace Velmar {

class Mesh;

/// Reads the PLY file `path` (UTF-8), ASCII or binary, into `mesh`, normally a new one, and builds it: the positions of
/// the element "vertex", multiplied by `scale`, and the first three corners of each list "vertex_indices" of the
/// element "face", under the one material "default". All else in the file is passed over.
/// Throws `Velmar::Exception` when the file can't be opened or read; the details of a parse error go to the standard
/// error stream. Throws `VelmarException` for faces that the mesh refuses. The mesh then holds part of the file and is
/// to be discarded. Several threads may read files at once.
void loadPLY(std::string_view path, Mesh& mesh, float scale);

} // namespace Velmar
