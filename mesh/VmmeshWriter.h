#pragma once

#include "velmarstring.h"

namespace Velmar {

class Mesh;

/// Writes `mesh` to the mesh file `path` (UTF-8), replacing what is there. The mesh needn't be built.
/// Throws `VelmarException` when the mesh as a whole is inconsistent (nothing is written then), when the file can't be
/// opened, when a name or a list is too long for the format, or when writing fails: the disk is full, say. What has
/// been written of the file by then stays.
void writeToFile(const String& path, const Mesh& mesh, bool use_compression);

/// As `writeToFile`, but under a temporary name in the same folder until the file is whole, so that no other program
/// sees half of it, and a failure leaves nothing. Throws the same messages. A file `path` that another program finishes
/// meanwhile is taken for the same mesh.
void writeToFileAtomically(const String& path, const Mesh& mesh, bool use_compression);

} // namespace Velmar
