#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Velmar {

class Mesh;
struct MTLLibrary;

/// Reads the Wavefront OBJ file `path` (UTF-8) into `mesh`, normally a new one, and builds it. Positions are multiplied
/// by `scale`. A vertex is made for each pair of position and normal that a face uses, in the order of first use; faces
/// of more than four corners become fans of triangles. With `parse_mtllib` the libraries that the file names and that
/// exist are read into `library`, each in place of the one before; otherwise `library` isn't touched.
/// Throws `Velmar::Exception` when the file can't be mapped and, with the line's number, when a line can't be read;
/// `VelmarException` for faces that the mesh refuses and when it can't be built. The mesh then holds part of the file
/// and is to be discarded.
void loadOBJ(std::string_view path, Mesh& mesh, float scale, bool parse_mtllib, MTLLibrary& library);

/// As `loadOBJ`, from the text of a file that isn't looked for. `library_names` receives the names in its lines
/// "mtllib NAME", as they are written there.
void readOBJ(std::string_view text, Mesh& mesh, float scale, std::vector<std::string>& library_names);

} // namespace Velmar
