#include "tools/MeshFile.h"

#include "mesh/VmmeshFile.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <utility>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::SceneNodeMesh;

// ---- output files ------------------------------------------------------------------------------------------------

OutputFile::OutputFile(std::string path)
    : given_path(std::move(path)), final_path(System::getAbsolutePath(given_path)),
      partial_path(final_path + "-partial") {
    if (System::isDirectory(final_path)) throw Failure(given_path + ": is a directory");
    std::ofstream file;
    if (!FileUtils::openOutputFile(file, partial_path, false))
        throw Failure(given_path + ": can't be written: " + PlatformUtils::getLastErrorText());
}

OutputFile::~OutputFile() {
    if (!partial_path.empty()) System::removeFile(partial_path);
}

Failure OutputFile::makeFailure() const {
    std::string message = getCurrentMessage();
    const std::size_t at = message.find(partial_path);
    if (at != std::string::npos) return Failure(message.replace(at, partial_path.size(), given_path));
    return Failure(given_path + ": " + message);
}

std::uint64_t OutputFile::commit() {
    const std::uint64_t size = MappedFile(partial_path).getSize();
    if (!System::moveFile(partial_path, final_path))
        throw Failure(given_path + ": can't be replaced: " + PlatformUtils::getLastErrorText());
    partial_path.clear();
    return size;
}

// ---- reading and writing meshes ----------------------------------------------------------------------------------

Velmar::ImportedMesh readMesh(const std::string& path, float scale) {
    try {
        return Velmar::importMesh(path, scale);
    } catch (...) {
        throw makeFailureOf(path);
    }
}

std::uint64_t writeMesh(const Velmar::Mesh& mesh, OutputFile& output, bool compressed) {
    try {
        Velmar::writeToFile(Velmar::String(output.getPartialPath()), mesh, compressed);
        // The writer doesn't see a failure of the last bytes, which the system may hold back until the file is closed.
        if (!System::syncFile(output.getPartialPath()))
            throw Failure("wasn't written whole: " + PlatformUtils::getLastErrorText());
    } catch (...) {
        throw output.makeFailure();
    }
    return output.commit();
}

Velmar::VmmeshHeader readVmmeshHeader(const std::string& path) {
    try {
        return Velmar::readVmmeshHeader(path);
    } catch (...) {
        throw makeFailureOf(path);
    }
}

bool isNamedByContent(const std::string& path, const Mesh& mesh) {
    const std::string name = Text::fileStem(path) + '.' + FileUtils::getExtension(path);
    return !SceneNodeMesh::isMeshFileName(name) || name == SceneNodeMesh::getMeshFileName(mesh.checksum());
}

bool isWholeMesh(const std::string& path) {
    const Reference<Mesh> mesh(new Mesh);
    try {
        Velmar::readFromFile(Velmar::String(path), *mesh);
    } catch (...) {
        return false;
    }
    return isNamedByContent(path, *mesh);
}

// ---- checks ------------------------------------------------------------------------------------------------------

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
    const auto describe = [&](std::size_t face, std::string_view what, std::uint32_t index, std::uint64_t count) {
        return std::string(kind) + ' ' + std::to_string(face) + " refers to " + std::string(what) + ' ' +
               std::to_string(index) + " of " + std::to_string(count);
    };
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const Face& face = faces[i];
        for (const std::uint32_t vertex : face.vertex_indices)
            if (vertex >= limits.vertices) return describe(i, "vertex", vertex, limits.vertices);
        if (limits.has_uvs) {
            for (const std::uint32_t uv : face.uv_indices)
                if (uv >= limits.uv_entries) return describe(i, "UV", uv, limits.uv_entries);
        }
        if (face.material_index >= limits.materials)
            return describe(i, "material", face.material_index, limits.materials);
    }
    return {};
}

} // namespace

std::string findFaultyFace(const Mesh& mesh) {
    const bool has_uvs = mesh.num_uv_mappings != 0;
    // A mesh without names has one material.
    const Limits limits = {mesh.verts.size(), has_uvs ? mesh.uv_pairs.size() / mesh.num_uv_mappings : 0,
                           std::max<std::uint64_t>(mesh.used_materials.size(), 1), has_uvs};
    const std::string fault = findFault(mesh.triangles, "triangle", limits);
    return fault.empty() ? findFault(mesh.quads, "quad", limits) : fault;
}

bool hasDistinctNames(const Mesh& mesh) {
    std::set<std::string_view> names;
    for (const Velmar::String& name : mesh.used_materials)
        if (name.view().find('\0') != std::string_view::npos || !names.insert(name.view()).second) return false;
    return true;
}
