#include "tools/MeshFile.h"

#include "mesh/VmmeshFile.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cmath>
#include <set>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::SceneNodeMesh;

// ---- reading and writing meshes ----------------------------------------------------------------------------------

Velmar::ImportedMesh readMesh(const std::string& path, float scale) {
    try {
        return Velmar::importMesh(path, scale);
    } catch (...) {
        throw makeFailureOf(path);
    }
}

void printNotes(const std::string& path, const std::vector<std::string>& notes, bool quiet) {
    if (quiet) return;
    for (const std::string& note : notes)
        printNote(std::string(path).append(": ").append(note));
}

void writeMesh(const Velmar::Mesh& mesh, const OutputFile& output, bool compressed) {
    try {
        Velmar::writeToFile(Velmar::String(output.getPartialPath()), mesh, compressed);
    } catch (...) {
        throw output.makeFailure();
    }
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

std::string findFaultyVertex(const Mesh& mesh) {
    for (std::size_t i = 0; i < mesh.verts.size(); ++i) {
        const Velmar::Vec3f& v = mesh.verts[i];
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
            return "vertex " + std::to_string(i) + " isn't finite";
    }
    return {};
}

void requireUsable(const std::string& path, const Mesh& mesh) {
    if (mesh.triangles.empty() && mesh.quads.empty())
        throw Failure(path + ": has no faces" +
                      (mesh.verts.empty() ? "" : ", or only triangles of an area below 1e-20, which are left out"));
    const std::string fault = findFaultyVertex(mesh);
    if (!fault.empty()) throw Failure(path + ": " + fault);
}
