#include "mesh/MeshLoading.h"

#include "velmarexceptions.h"

#include "mesh/MtlLoader.h"
#include "mesh/ObjLoader.h"
#include "mesh/PlyLoader.h"
#include "mesh/StlLoader.h"
#include "mesh/VmmeshReader.h"
#include "utils/FileUtils.h"

#include <string>

namespace Velmar {

void loadMesh(std::string_view path, Mesh& mesh, float scale) {
    const std::string system_path = FileUtils::toBackslashes(path);
    const std::string extension = FileUtils::toLowerCase(FileUtils::getExtension(system_path));
    try {
        if (extension == "vmmesh") {
            readFromFile(toVelmarString(system_path), mesh);
        } else if (extension == "obj") {
            MTLLibrary dropped;
            loadOBJ(system_path, mesh, scale, false, dropped);
        } else if (extension == "ply") {
            loadPLY(system_path, mesh, scale);
        } else if (extension == "stl") {
            loadSTL(system_path, mesh, scale);
        } else {
            throw Velmar::Exception("Unsupported mesh format '" + extension + "'.");
        }
    } catch (const VelmarException& e) {
        // The quote behind the path is missing in what hosts know.
        throw Velmar::Exception("Error while reading mesh '" + std::string(path) + ": " + toStdString(e.getMessage()));
    }
}

} // namespace Velmar
