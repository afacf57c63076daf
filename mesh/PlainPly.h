#pragma once

#include "mesh/PlyInput.h"

#include <string_view>

namespace Velmar {

class Mesh;

/// The fast path of `loadPLY`, for PLY files as nearly all programs write them: coordinates of floating-point types in
/// the order x, y, z, vertices before faces, lengths of lists and indices of integer types. What it accepts, it reads
/// as RPly does; it leaves everything else to RPly, and each file that has an error anywhere.
///
/// Reads the body of `file`, whose header must be complete, into `mesh`, and builds it. Returns false if it isn't sure
/// of what RPly would make of the file; the mesh is then as it was.
bool readPlainPly(const PlyHeader& header, std::string_view file, Mesh& mesh, float scale);

} // namespace Velmar
