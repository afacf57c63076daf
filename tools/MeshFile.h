#pragma once

#include "import/MeshImport.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tools/Console.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Files that the tool writes, and mesh files as it reads, checks and writes them.

/// A file in the making: written under another name in the same folder, and renamed when it is whole. Until then an
/// existing file stays, and a failure leaves nothing behind.
class OutputFile {
  public:
    /// Throws `Failure` when no file can be made there, before any long work begins.
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write: an absolute path. It is the file's with a longer extension, so what the library names after a
    /// file without its extension gets the same name.
    const std::string& getPartialPath() const { return partial_path; }

    /// The failure of the exception being handled, naming the file as it was given. Only in a handler.
    Failure makeFailure() const;

    /// Renames the written file and returns its size. Throws `Failure`.
    std::uint64_t commit();

  private:
    /// As it was given, for messages.
    std::string given_path;
    std::string final_path;
    std::string partial_path;
};

/// Reads a mesh file of any format that the library knows, and the material libraries that it names. `scale` multiplies
/// the positions of all but vmmesh files. Throws `Failure` that names the file, the line where there is one, and the
/// reason.
Velmar::ImportedMesh readMesh(const std::string& path, float scale);

/// Makes `output` a vmmesh file and commits it. Returns its size. Throws `Failure` when it can't be written or wasn't
/// written whole.
std::uint64_t writeMesh(const Velmar::Mesh& mesh, OutputFile& output, bool compressed);

/// The header of a vmmesh file. Throws `Failure`.
Velmar::VmmeshHeader readVmmeshHeader(const std::string& path);

/// The first face that refers to a vertex, UV or material that doesn't exist, in words; empty when there is none.
/// Neither the mesh nor the reader of vmmesh files checks this.
std::string findFaultyFace(const Velmar::Mesh& mesh);

/// Whether the names of materials are distinct zero-terminated texts, as hosts of the library can give them.
bool hasDistinctNames(const Velmar::Mesh& mesh);

/// Whether the name of the mesh file `path` is the one that the library gives to a mesh of this content. Also true for
/// names of other forms.
bool isNamedByContent(const std::string& path, const Velmar::Mesh& mesh);

/// Whether the mesh file `path`, named by its content, can be read and has that content.
bool isWholeMesh(const std::string& path);
