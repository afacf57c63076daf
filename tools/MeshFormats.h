#pragma once

#include "mesh/Mesh.h"
#include "tools/OutputFile.h"

#include <string>
#include <string_view>
#include <vector>

/// Mesh files of all formats that the tool writes.

struct WriteSettings {
    /// Without compression, for vmmesh.
    bool plain = false;
    /// As text, for PLY and STL.
    bool text = false;
};

/// Whether `writeMeshAs` knows this format: "vmmesh", "obj", "ply" or "stl".
bool isWritable(std::string_view format);

/// Writes a mesh whose height is z; that of an OBJ file becomes y. The file is to be committed then. Throws `Failure`.
void writeMeshAs(std::string_view format, Velmar::Mesh& mesh, const OutputFile& output, const WriteSettings& settings);

/// What a file of this format has no place for, a sentence; empty when it can hold all of the mesh.
std::string describeLoss(std::string_view format, const Velmar::Mesh& mesh);
