#pragma once

#include "mesh/Mesh.h"

namespace BenchSupport {

/// The scanned bunny of Debian's package glmark2-data, each of its triangles cut into sixteen: 1,114,656 triangles.
/// Throws when the package isn't installed.
const Velmar::Mesh& refinedBunny();

/// A wavy square of 1,008,200 triangles with normals, as a program makes it: its triangles stand row by row, so that it
/// packs to almost nothing.
const Velmar::Mesh& wavySquare();

} // namespace BenchSupport
