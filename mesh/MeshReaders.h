#pragma once

#include "velmarvec.h"

#include "mesh/TextInParts.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The readers of mesh files of other programs. Several threads may read files at once.
namespace Velmar {

class Mesh;

/// A material of a Wavefront material library, with the values of its lines.
struct MTLMaterial {
    std::string name;
    Vec3f Kd = {0.5f, 0.5f, 0.5f};
    Vec3f Ks = {0.33333f, 0.33333f, 0.33333f};
    Vec3f Tf = {1.0f, 1.0f, 1.0f};
    float Ns = 500.0f;
    float Ni = 1.5f;
    float d = 1.0f;
    std::string map_Kd;
    /// Two colours that no line sets.
    Vec3f unset_black = {0.0f, 0.0f, 0.0f};
    Vec3f unset_white = {1.0f, 1.0f, 1.0f};
};

struct MTLLibrary {
    /// The file it came from.
    std::string path;
    /// In the order of the file.
    std::vector<MTLMaterial> materials;
};

/// Reads the material library `path` (UTF-8) in place of what `library` holds. Unknown lines are passed over.
/// Throws `Velmar::Exception` when the file can't be mapped, and with the line's number when a number is missing or a
/// value comes before the first material.
void loadMTL(std::string_view path, MTLLibrary& library);

/// As `loadMTL`, from the text of a file. The path of `library` isn't changed.
void readMTL(std::string_view text, MTLLibrary& library);

/// Reads the Wavefront OBJ file `path` (UTF-8) into `mesh`, normally a new one, and builds it. Positions are multiplied
/// by `scale`. A vertex is made for each pair of position and normal that a face uses, in the order of first use; faces
/// of more than four corners become fans of triangles. With `parse_mtllib` the libraries that the file names and that
/// exist are read into `library`, each in place of the one before; otherwise `library` isn't touched.
/// Throws `Velmar::Exception` when the file can't be mapped or has 4 GiB and, with the line's number, when a line can't
/// be read; `VelmarException` for faces that the mesh refuses and when it can't be built. The mesh then holds part of
/// the file and is to be discarded.
void loadOBJ(std::string_view path, Mesh& mesh, float scale, bool parse_mtllib, MTLLibrary& library);

/// As `loadOBJ`, from the text of a file of any size that isn't looked for, in parts of about `part_size` bytes.
/// `library_names` receives the names in its lines "mtllib NAME", as they are written there. Throws `Velmar::Exception`
/// also for a line of 4 GiB.
void readOBJ(std::string_view text, Mesh& mesh, float scale, std::vector<std::string>& library_names,
             std::size_t part_size = TextInParts::default_part_size);

/// Reads the PLY file `path` (UTF-8), ASCII or binary, into `mesh`, normally a new one, and builds it: the positions of
/// the element "vertex", multiplied by `scale`, and the first three corners of each list "vertex_indices" of the
/// element "face", under the one material "default". All else in the file is passed over.
/// Throws `Velmar::Exception` when the file can't be opened or read; the details of a parse error go to the standard
/// error stream. Throws `VelmarException` for faces that the mesh refuses. The mesh then holds part of the file and is
/// to be discarded. Several threads may read files at once.
void loadPLY(std::string_view path, Mesh& mesh, float scale);

/// Reads the STL file `path` (UTF-8) into `mesh`, normally a new one, and builds it. A file that begins with "solid" is
/// read as text, any other as binary. Each triangle gets three vertices of its own, multiplied by `scale`; degenerate
/// ones are kept, and facet normals are ignored.
/// Throws `Velmar::Exception` when the file can't be mapped, is too small or isn't STL, and for text of 4 GiB. The mesh
/// then holds part of the file and is to be discarded.
void loadSTL(std::string_view path, Mesh& mesh, float scale);

/// As `loadSTL`, from the content of a file of any size, text in parts of about `part_size` bytes. Throws
/// `Velmar::Exception` also for lines of 4 GiB.
void readSTL(std::string_view content, Mesh& mesh, float scale, std::size_t part_size = TextInParts::default_part_size);

} // namespace Velmar
