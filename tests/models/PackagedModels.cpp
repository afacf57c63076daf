#include "tests/models/PackagedModels.h"

#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshLoading.h"
#include "utils/FileUtils.h"

#include <algorithm>
#include <filesystem>

namespace Models {

std::vector<std::string> files() {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder())) {
        const std::string extension = FileUtils::toLowerCase(entry.path().extension().string());
        if (extension == ".obj" || extension == ".ply" || extension == ".stl")
            result.push_back(std::filesystem::relative(entry.path(), folder()).generic_string());
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::string folder() {
    return "/usr/share/assimp/models";
}

Outcome readOurs(const std::string& file) {
    const std::string path = folder() + "/" + file;
    Outcome outcome;
    try {
        Velmar::Mesh mesh;
        Velmar::loadMesh(path, mesh, 1.0F);
        outcome.vertices = mesh.verts.size();
        outcome.triangles = mesh.triangles.size() + 2 * mesh.quads.size();
        outcome.materials = mesh.used_materials.size();
    } catch (const Velmar::Exception& exception) {
        outcome.message = exception.getMessage();
        if (const std::size_t at = outcome.message.find(path); at != std::string::npos)
            outcome.message.replace(at, path.size(), file);
    }
    return outcome;
}

} // namespace Models
