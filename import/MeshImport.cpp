#include "import/MeshImport.h"

#include "velmarexceptions.h"

#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

namespace Velmar {

namespace {

void readColours(const std::string& library_path, std::vector<MaterialColour>& colours) {
    MTLLibrary library;
    try {
        loadMTL(library_path, library);
    } catch (const Velmar::Exception& e) {
        const bool named = e.getMessage().find(library_path) != std::string::npos;
        throw Velmar::Exception(named ? e.getMessage() : library_path + ": " + e.getMessage());
    }
    for (const MTLMaterial& material : library.materials)
        colours.push_back({material.name, material.Kd});
}

void importOBJ(const std::string& path, float scale, ImportedMesh& result) {
    const MappedFile file(path);
    std::vector<std::string> libraries;
    readOBJ(file.getText(), *result.mesh, scale, libraries);
    for (const std::string& name : libraries) {
        const std::string library_path = FileUtils::join(FileUtils::getDirectory(path), name);
        if (FileUtils::fileExists(library_path)) readColours(library_path, result.colours);
    }
}

} // namespace

ImportedMesh importMesh(const std::string& path, float scale) {
    ImportedMesh result;
    result.mesh = new Mesh;
    if (getMeshFormat(path) == "obj")
        importOBJ(path, scale, result);
    else
        loadMesh(path, *result.mesh, scale);
    return result;
}

std::string getMeshFormat(std::string_view path) {
    return FileUtils::toLowerCase(FileUtils::getExtension(path));
}

bool isMeshFormat(std::string_view format) {
    return format == "obj" || format == "ply" || format == "stl" || format == "vmmesh";
}

} // namespace Velmar
