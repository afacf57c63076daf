#pragma once

#include "reference.h"

#include "mesh/Mesh.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What the first bytes of a vmmesh file tell.
struct VmmeshHeader {
    std::uint32_t version = 0;
    bool compressed = false;
};

/// Reads a mesh file of any format that the library knows, by its extension. The positions of text formats are
/// multiplied by `scale`. Throws `Failure` that names the file, the line where there is one, and the reason.
Velmar::Reference<Velmar::Mesh> readMesh(const std::string& path, float scale);

/// A diffuse colour that a material library gives a material.
struct MaterialColour {
    std::string name;
    Velmar::Vec3f colour;
};

/// The colours in the material libraries that an OBJ file names, as far as they are there; none for other formats.
/// Throws `Failure` that names the library, the line and the reason.
std::vector<MaterialColour> readMaterialColours(const std::string& path);

/// The header of a vmmesh file that `readMesh` has read.
VmmeshHeader readVmmeshHeader(const std::string& path);

/// The extension in lower case: what decides the format.
std::string getFormat(const std::string& path);

/// Whether a mesh file may be of this format.
bool isMeshFormat(std::string_view format);

/// What the first face is that refers to a vertex, UV or material that isn't there, in words; empty when all refer to
/// something. Neither the mesh nor the reader of vmmesh files looks at this.
std::string findFaultyFace(const Velmar::Mesh& mesh);

/// Whether `path` is a vmmesh file that reads well and holds a mesh of this checksum.
bool holdsMesh(const std::string& path, std::uint64_t checksum);
