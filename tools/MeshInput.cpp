#include "tools/MeshInput.h"

#include "mesh/MeshLoading.h"
#include "mesh/MtlLoader.h"
#include "mesh/VmmeshReader.h"
#include "tools/Failure.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

using Velmar::Mesh;
using Velmar::Reference;

namespace {

/// What the faces of a mesh may refer to.
struct Limits {
    std::uint64_t vertices;
    std::uint64_t uv_entries;
    std::uint64_t materials;
    bool has_uvs;
};

template <class Face>
std::string findFault(const Velmar::Vector<Face>& faces, std::string_view kind, const Limits& limits) {
    const auto tell = [&](std::size_t face, std::string_view what, std::uint32_t index, std::uint64_t count) {
        return std::string(kind) + ' ' + std::to_string(face) + " refers to " + std::string(what) + ' ' +
               std::to_string(index) + " of " + std::to_string(count);
    };
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const Face& face = faces[i];
        for (const std::uint32_t vertex : face.vertex_indices)
            if (vertex >= limits.vertices) return tell(i, "vertex", vertex, limits.vertices);
        if (limits.has_uvs) {
            for (const std::uint32_t uv : face.uv_indices)
                if (uv >= limits.uv_entries) return tell(i, "UV", uv, limits.uv_entries);
        }
        if (face.material_index >= limits.materials) return tell(i, "material", face.material_index, limits.materials);
    }
    return {};
}

/// The paths in the lines "mtllib NAME", as seen from where the file is.
std::vector<std::string> findMaterialLibraries(const std::string& path) {
    std::vector<std::string> libraries;
    const MappedFile file(path);
    const std::string_view text = file.getText();
    constexpr std::string_view keyword = "mtllib";
    for (std::size_t at = text.find(keyword); at != std::string_view::npos; at = text.find(keyword, at + 1)) {
        if (at != 0 && text[at - 1] != '\n' && text[at - 1] != '\r') continue;
        const std::size_t begin = text.find_first_not_of(" \t", at + keyword.size());
        if (begin == std::string_view::npos || begin == at + keyword.size()) continue;
        const std::string_view name = text.substr(begin, text.find_first_of(" \t\r\n", begin) - begin);
        if (!name.empty()) libraries.push_back(FileUtils::join(FileUtils::getDirectory(path), name));
    }
    return libraries;
}

} // namespace

Reference<Mesh> readMesh(const std::string& path, float scale) {
    Reference<Mesh> mesh(new Mesh);
    try {
        Velmar::loadMesh(path, *mesh, scale);
    } catch (...) {
        throw makeFailureOf(path);
    }
    return mesh;
}

std::vector<MaterialColour> readMaterialColours(const std::string& path) {
    std::vector<MaterialColour> colours;
    if (getFormat(path) != "obj") return colours;
    for (const std::string& library_path : findMaterialLibraries(path)) {
        if (!FileUtils::fileExists(library_path)) continue;
        Velmar::MTLLibrary library;
        try {
            Velmar::loadMTL(library_path, library);
        } catch (...) {
            throw makeFailureOf(library_path);
        }
        for (const Velmar::MTLMaterial& material : library.materials)
            colours.push_back({material.name, material.Kd});
    }
    return colours;
}

VmmeshHeader readVmmeshHeader(const std::string& path) {
    try {
        const MappedFile file(path);
        // Only version 4 has the third word.
        std::uint32_t words[3] = {};
        std::memcpy(words, file.getData(), std::min<std::size_t>(sizeof words, file.getBytes().size()));
        return {words[1], words[1] >= 4 && words[2] != 0};
    } catch (...) {
        throw makeFailureOf(path);
    }
}

std::string getFormat(const std::string& path) {
    return FileUtils::toLowerCase(FileUtils::getExtension(path));
}

bool isMeshFormat(std::string_view format) {
    return format == "obj" || format == "ply" || format == "stl" || format == "vmmesh";
}

std::string findFaultyFace(const Mesh& mesh) {
    const bool has_uvs = mesh.num_uv_mappings != 0;
    // A mesh may go without names; then there is one material.
    const Limits limits = {mesh.verts.size(), has_uvs ? mesh.uv_pairs.size() / mesh.num_uv_mappings : 0,
                           std::max<std::uint64_t>(mesh.used_materials.size(), 1), has_uvs};
    const std::string fault = findFault(mesh.triangles, "triangle", limits);
    return fault.empty() ? findFault(mesh.quads, "quad", limits) : fault;
}

bool holdsMesh(const std::string& path, std::uint64_t checksum) {
    const Reference<Mesh> mesh(new Mesh);
    try {
        Velmar::readFromFile(Velmar::String(path), *mesh);
    } catch (...) {
        return false;
    }
    return mesh->checksum() == checksum;
}
