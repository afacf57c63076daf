#pragma once

#include "import/MeshImport.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "tools/OutputFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Mesh files as the tool reads, checks and writes them.

/// Reads a mesh file of any format that the library knows, and the material libraries that it names. `scale` multiplies
/// the positions of all but vmmesh files. Throws `Failure` that names the file, the line where there is one, and the
/// reason.
Velmar::ImportedMesh readMesh(const std::string& path, float scale);

/// Prints what was left out of a file. `quiet` for nothing.
void printNotes(const std::string& path, const std::vector<std::string>& notes, bool quiet);

/// Throws `Failure` unless the mesh of `path` has faces and its vertices are finite.
void requireUsable(const std::string& path, const Velmar::Mesh& mesh);

/// Writes a vmmesh file, which is to be committed then. Throws `Failure` when it can't be written.
void writeMesh(const Velmar::Mesh& mesh, const OutputFile& output, bool compressed);

/// The header of a vmmesh file. Throws `Failure`.
Velmar::VmmeshHeader readVmmeshHeader(const std::string& path);

/// The first face that refers to a vertex, UV or material that doesn't exist, in words; empty when there is none.
/// Neither the mesh nor the reader of vmmesh files checks this.
std::string findFaultyFace(const Velmar::Mesh& mesh);

/// The first vertex that isn't finite, in words; empty when there is none.
std::string findFaultyVertex(const Velmar::Mesh& mesh);

/// Whether the names of materials are distinct zero-terminated texts, as hosts of the library can give them.
bool hasDistinctNames(const Velmar::Mesh& mesh);

/// Whether the name of the mesh file `path` is the one that the library gives to a mesh of this content. Also true for
/// names of other forms.
bool isNamedByContent(const std::string& path, const Velmar::Mesh& mesh);

/// Whether the mesh file `path`, named by its content, can be read and has that content.
bool isWholeMesh(const std::string& path);
