#pragma once

#include "velmarstring.h"

#include <cstdint>
#include <string_view>

/// Mesh files of the library's own format. `VmmeshFormat.h` describes it.
namespace Velmar {

class Mesh;

/// Reads the mesh file `path` (UTF-8) into `mesh`, normally a new one, and builds it. Face indices aren't checked.
/// Throws `VelmarException` for a file that doesn't keep the format or asks for more memory than there is, and
/// `Velmar::Exception` when the file can't be mapped or a compressed body ends early. The mesh then holds part of the
/// file and is to be discarded.
void readFromFile(const String& path, Mesh& mesh);

/// What the first words of a mesh file say.
struct VmmeshHeader {
    std::uint32_t version = 0;
    bool compressed = false;
};

/// Reads the header of the mesh file `path` (UTF-8) alone. Throws as `readFromFile` does.
VmmeshHeader readVmmeshHeader(std::string_view path);

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
