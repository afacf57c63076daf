#pragma once

#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"

#include <string>

namespace BenchSupport {

// The files of a mesh of triangles, with numbers of six decimals as most exporters write them.

/// With `positions_uvs_normals` each position has a UV and a normal of its own.
std::string makeObjText(const Velmar::Mesh& mesh, ObjCorners corners);
/// `%.6f` or `%.6e`.
enum class StlNumbers { decimals, exponents };

std::string makeStlText(const Velmar::Mesh& mesh, StlNumbers numbers);
std::string makePlyText(const Velmar::Mesh& mesh);
std::string makeBinaryPly(const Velmar::Mesh& mesh);

/// The refined bunny with its usual size and noise of 1e-5, as scanners leave meshes. Its vertices are in the order in
/// which refining the edges made them, not in that of their use.
const Velmar::Mesh& noisyBunny();

} // namespace BenchSupport
