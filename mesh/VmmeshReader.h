#pragma once

#include "velmarstring.h"

namespace Velmar {

class Mesh;

/// Reads the mesh file `path` (UTF-8) into `mesh`, normally a new one, and builds it. Face indices aren't checked.
/// Throws `VelmarException` for a file that doesn't keep the format or asks for more memory than there is, and
/// `Velmar::Exception` when the file can't be mapped or a compressed body ends early. The mesh then holds part of the
/// file and is to be discarded.
void readFromFile(const String& path, Mesh& mesh);

} // namespace Velmar
