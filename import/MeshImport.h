#pragma once

#include "reference.h"
#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <string>
#include <string_view>
#include <vector>

/// Mesh files as people have them, read for programs that build scenes. The exports don't need it: the command line
/// tool and other clients of the library link it on top of the core.
namespace Velmar {

/// The diffuse colour that a material library gives a material.
struct MaterialColour {
    std::string name;
    Vec3f colour;
};

/// A mesh file in memory.
struct ImportedMesh {
    /// Built. Its names are valid text (see `toValidText`). Face indices of vmmesh files aren't checked.
    Reference<Mesh> mesh;
    /// From the material libraries that an OBJ file names, as far as they exist; empty for other formats.
    std::vector<MaterialColour> colours;
    /// What was left out or read otherwise than it is written, a sentence each.
    std::vector<std::string> notes;
};

/// Reads the mesh file `path` (UTF-8) of any format that the library knows, by its extension, and the material
/// libraries that it names. A byte order mark is passed over, files may have any size, and of PLY files everything is
/// read. `scale` multiplies the positions of all but vmmesh files. Throws an exception of the library; of a material
/// library that can't be read `Velmar::Exception` with its path.
ImportedMesh importMesh(const std::string& path, float scale);

/// The extension in lower case: it alone decides the format.
std::string getMeshFormat(std::string_view path);

/// Whether `importMesh` knows this format.
bool isMeshFormat(std::string_view format);

} // namespace Velmar
