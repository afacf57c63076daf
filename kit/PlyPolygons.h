#pragma once

#include "reference.h"

#include "mesh/Mesh.h"

#include <string>

namespace Velmar::Kit {

/// Reads a PLY file with its polygons whole: triangles and quads as they are, larger ones as fans. Vertices may have
/// normals and texture coordinates (u, v, or s, t, or texture_u, texture_v). `scale` multiplies the positions. The mesh
/// is built. Throws `Velmar::Exception` and `VelmarException`.
Reference<Mesh> readPlyPolygons(const std::string& path, float scale);

} // namespace Velmar::Kit
