#include "tools/MeshHandover.h"

#include "tools/Failure.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

using Velmar::Mesh;

namespace {

constexpr std::size_t max_count = std::numeric_limits<std::int32_t>::max();

struct DeleteMesh {
    void operator()(VelmarMesh* node) const { VelmarMesh_Delete(node); }
};

void addVertices(VelmarMesh* node, const Mesh& mesh) {
    for (std::size_t done = 0; done < mesh.verts.size();) {
        const std::size_t count = std::min(mesh.verts.size() - done, max_count);
        VelmarMesh_AddVertices(node, static_cast<std::int32_t>(count), &mesh.verts[done].x);
        done += count;
    }
}

/// Faces are given as words with the kind in front, through a buffer that stays small.
template <class Face>
void addFaces(VelmarMesh* node, const Velmar::Vector<Face>& faces, std::uint32_t kind) {
    constexpr std::size_t words_per_face = 1 + sizeof(Face) / sizeof(std::uint32_t);
    constexpr std::size_t batch = 8192;
    std::vector<std::uint32_t> words(words_per_face * std::min(faces.size(), batch));
    for (std::size_t done = 0; done < faces.size();) {
        const std::size_t count = std::min(faces.size() - done, batch);
        for (std::size_t i = 0; i < count; ++i) {
            std::uint32_t* const record = &words[i * words_per_face];
            record[0] = kind;
            std::memcpy(record + 1, &faces[done + i], sizeof(Face));
        }
        VelmarMesh_AddFaces(node, static_cast<std::int32_t>(count), words.data());
        done += count;
    }
}

void addTextureCoordinates(VelmarMesh* node, const Mesh& mesh) {
    if (mesh.num_uv_mappings == 0) return;
    // Each call is a UV set more, so all pairs go in one call and the further calls only count.
    if (mesh.uv_pairs.size() > max_count) throw Failure("more texture coordinates than can be handed over");
    VelmarMesh_AddTextureCoordinates(node, static_cast<std::int32_t>(mesh.uv_pairs.size()),
                                     mesh.uv_pairs.empty() ? nullptr : &mesh.uv_pairs[0].x);
    for (std::uint32_t set = 1; set < mesh.num_uv_mappings; ++set)
        VelmarMesh_AddTextureCoordinates(node, 0, nullptr);
}

} // namespace

void keepWhatHostsCanGive(Mesh& mesh) {
    mesh.normals.clear();
    mesh.uv_layout = 0;
    if (mesh.num_uv_mappings == 0) mesh.uv_pairs.clear();
}

bool hasDistinctNames(const Mesh& mesh) {
    std::set<std::string_view> names;
    for (const Velmar::String& name : mesh.used_materials)
        if (name.view().find('\0') != std::string_view::npos || !names.insert(name.view()).second) return false;
    return true;
}

VelmarMesh* handOverMesh(const Mesh& mesh, const std::string& name, bool smooth_normals) {
    std::unique_ptr<VelmarMesh, DeleteMesh> node(VelmarMesh_Create(name.c_str()));
    VelmarMesh_SetNormalSmoothing(node.get(), smooth_normals ? 1 : 0);
    for (const Velmar::String& material : mesh.used_materials)
        VelmarMesh_AddMaterialUsed(node.get(), std::string(material.view()).c_str());
    addVertices(node.get(), mesh);
    addTextureCoordinates(node.get(), mesh);
    constexpr std::uint32_t triangle = 0;
    constexpr std::uint32_t quad = 1;
    addFaces(node.get(), mesh.triangles, triangle);
    addFaces(node.get(), mesh.quads, quad);
    VelmarMesh_Build(node.get());
    return node.release();
}
