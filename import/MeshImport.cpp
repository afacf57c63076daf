#include "import/MeshImport.h"

#include "import/PlyImport.h"
#include "import/ValidText.h"
#include "velmarexceptions.h"

#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <set>

namespace Velmar {

namespace {

/// Whether a line "keyword values" says something: of opacity and light the usual values say nothing.
bool hasEffect(std::string_view keyword, std::string_view values) {
    const bool all_zero = values.find_first_not_of("0. \t\r") == std::string_view::npos;
    if (keyword == "Ke" || keyword == "Tr") return !all_zero;
    if (keyword == "d") {
        const std::size_t first = values.find_first_not_of(" \t");
        return first != std::string_view::npos &&
               values.substr(first, values.find_last_not_of(" \t\r") + 1 - first).find_first_not_of("1.0") !=
                   std::string_view::npos;
    }
    return keyword.starts_with("map_") || keyword == "bump" || keyword == "disp";
}

/// The keywords of a material library that scenes of mesh files have no place for.
std::set<std::string> findDropped(std::string_view text) {
    std::set<std::string> dropped;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        const std::string_view keyword = line.substr(0, line.find_first_of(" \t"));
        if (hasEffect(keyword, line.substr(keyword.size()))) dropped.emplace(keyword);
    }
    return dropped;
}

void importLibrary(const std::string& path, ImportedMesh& result) {
    if (!FileUtils::fileExists(path)) {
        result.notes.push_back("the material library " + path + " doesn't exist");
        return;
    }
    MTLLibrary library;
    std::set<std::string> dropped;
    try {
        const MappedFile file(path);
        const std::string_view text = FileUtils::withoutByteOrderMark(file.getText());
        readMTL(text, library);
        dropped = findDropped(text);
    } catch (const Velmar::Exception& e) {
        const bool named = e.getMessage().find(path) != std::string::npos;
        throw Velmar::Exception(named ? e.getMessage() : path + ": " + e.getMessage());
    }
    for (const MTLMaterial& material : library.materials)
        result.colours.push_back({toValidText(material.name), material.Kd});
    std::string keywords;
    for (const std::string& keyword : dropped)
        keywords += (keywords.empty() ? "" : ", ") + keyword;
    if (!dropped.empty()) result.notes.push_back("left out of the material library " + path + ": " + keywords);
}

void importOBJ(const std::string& path, float scale, ImportedMesh& result) {
    const MappedFile file(path);
    std::vector<std::string> libraries;
    readOBJ(FileUtils::withoutByteOrderMark(file.getText()), *result.mesh, scale, libraries);
    const std::string folder = path.substr(0, path.find_last_of("/\\") + 1);
    std::set<std::string> known;
    for (const std::string& name : libraries) {
        const bool is_absolute = FileUtils::join("folder", name) == name;
        if (known.insert(name).second) importLibrary(is_absolute ? name : folder + name, result);
    }
}

/// Makes the names of materials valid text. Two names that become one stay apart by their number.
void makeNamesValid(ImportedMesh& result) {
    Mesh& mesh = *result.mesh;
    std::size_t changed = 0;
    for (String& name : mesh.used_materials) {
        if (isValidText(name.view())) continue;
        std::string valid = toValidText(name.view());
        const std::string stem = valid;
        const auto taken = [&] {
            return std::any_of(mesh.used_materials.begin(), mesh.used_materials.end(),
                               [&](const String& other) { return other.view() == valid; });
        };
        for (int number = 2; taken(); ++number)
            valid = stem + ' ' + std::to_string(number);
        name = String(valid);
        ++changed;
    }
    if (changed == 0) return;
    result.notes.push_back(std::to_string(changed) +
                           (changed == 1 ? " name of a material isn't" : " names of materials aren't") +
                           " valid UTF-8 text; read as Windows-1252, without control characters");
}

} // namespace

ImportedMesh importMesh(const std::string& path, float scale) {
    ImportedMesh result;
    result.mesh = new Mesh;
    const std::string format = getMeshFormat(path);
    if (format == "obj") {
        importOBJ(path, scale, result);
    } else if (format == "ply") {
        const MappedFile file(path);
        readWholePLY(FileUtils::withoutByteOrderMark(file.getText()), *result.mesh, scale);
    } else if (format == "stl") {
        const MappedFile file(path);
        readSTL(file.getText(), *result.mesh, scale);
    } else {
        loadMesh(path, *result.mesh, scale);
    }
    makeNamesValid(result);
    return result;
}

std::string getMeshFormat(std::string_view path) {
    return FileUtils::toLowerCase(FileUtils::getExtension(path));
}

bool isMeshFormat(std::string_view format) {
    return format == "obj" || format == "ply" || format == "stl" || format == "vmmesh";
}

} // namespace Velmar
