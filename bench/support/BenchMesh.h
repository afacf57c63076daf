#pragma once

#include "mesh/Mesh.h"

namespace BenchSupport {

/// The scanned bunny of Debian's package glmark2-data, each of its triangles divided into sixteen: 1,114,656 triangles.
/// Throws if the package isn't installed.
const Velmar::Mesh& refinedBunny();

/// A wavy square of 1,008,200 triangles with normals, generated row by row, which compresses to
/// almost nothing.
const Velmar::Mesh& wavySquare();

} // namespace BenchSupport
