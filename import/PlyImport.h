#pragma once

#include "mesh/Mesh.h"

#include <string_view>

namespace Velmar {

/// Reads the whole of a PLY file into a new mesh and builds it, where the exports' own reader takes the first three
/// corners of each face:
///
/// - faces of the lists "vertex_indices" and "vertex_index": triangles, quads, and polygons as fans of triangles;
///   triangle strips of the element "tristrips"
/// - vertex normals (nx, ny, nz)
/// - a UV set of the vertices ((u, v), (s, t), (texture_u, texture_v), (texture_s, texture_t)) or of the corners of the
///   faces (the list "texcoord")
///
/// `text` is the content of the file, text or binary of either byte order. Positions are multiplied by `scale`.
/// Triangles without area are left out, as by the other readers. The one material is called "default".
/// Throws `Velmar::Exception` with the reason and, for text, the line.
void readWholePLY(std::string_view text, Mesh& mesh, float scale);

} // namespace Velmar
