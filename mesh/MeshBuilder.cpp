#include "mesh/MeshBuilder.h"

#include "velmarexceptions.h"

#include "utils/PlatformUtils.h"

#include <algorithm>
#include <bit>

namespace Velmar {

static_assert(std::bit_cast<std::uint32_t>(min_triangle_area) == 0x1E3CE508);

Vec3f normalised(const Vec3f& normal) {
    if (!std::isfinite(normal.x) || !std::isfinite(normal.y) || !std::isfinite(normal.z)) [[unlikely]]
        throw VelmarException("Invalid normal");
    const float length = std::sqrt(normal.x * normal.x + normal.y * normal.y + normal.z * normal.z);
    return {normal.x / length, normal.y / length, normal.z / length};
}

MeshBuilder::MeshBuilder(Mesh& filled, const TextInParts* text)
    : mesh(filled), vertices(filled.verts, text), normals(filled.normals, text), uvs(filled.uv_pairs, text),
      triangles(filled.triangles, text), quads(filled.quads, text) {}

void MeshBuilder::addUVs(std::span<const Vec2f> pairs) {
    const std::size_t num_sets = mesh.num_uv_mappings;
    uvs.appendPadded(pairs.first(std::min(pairs.size(), num_sets)), num_sets);
}

std::uint32_t MeshBuilder::useMaterial(std::string_view name) {
    if (!materials) materials.emplace(mesh);
    auto& indices = materials->indices;
    if (const auto known = indices.find(name); known != indices.end()) return known->second;
    const auto index = static_cast<std::uint32_t>(indices.size());
    // Not `addMaterialUsed`, whose search of all names takes too long for a file of many.
    if (!materials->earlier_names.contains(name)) mesh.used_materials.push_back(String(name));
    indices.emplace(name, index);
    return index;
}

void MeshBuilder::addPolygon(std::span<const std::uint32_t> v, std::span<const std::uint32_t> uv,
                             std::uint32_t material) {
    const auto uvOf = [&](std::size_t corner) { return uv.empty() ? 0 : uv[corner]; };
    if (v.size() == 4) return addQuad({v[0], v[1], v[2], v[3]}, {uvOf(0), uvOf(1), uvOf(2), uvOf(3)}, material);
    for (std::size_t i = 1; i + 1 < v.size(); ++i)
        addTriangle({v[0], v[i], v[i + 1]}, {uvOf(0), uvOf(i), uvOf(i + 1)}, material);
}

void MeshBuilder::build() {
    finish();
    mesh.build();
}

void MeshBuilder::finish() noexcept {
    vertices.finish();
    normals.finish();
    uvs.finish();
    triangles.finish();
    quads.finish();
}

MeshBuilder::Materials::Materials(const Mesh& mesh)
    : indices(0, NameHash{PlatformUtils::getRandomNumber()}), earlier_names(0, indices.hash_function()) {
    for (const String& name : mesh.used_materials)
        earlier_names.emplace(name.view());
}

void MeshBuilder::checkFaces(const Mesh& mesh) {
    const std::uint64_t sets = mesh.num_uv_mappings;
    const std::uint64_t entries = sets == 0 ? 0 : mesh.uv_pairs.size() / sets;
    const auto check = [&](FaceKind kind, const auto& faces) {
        // The greatest index of all faces: cheaper than a decision for each.
        std::uint32_t vertex = 0;
        std::uint32_t uv = 0;
        for (const auto& face : faces) {
            for (const std::uint32_t index : face.vertex_indices)
                vertex = std::max(vertex, index);
            for (const std::uint32_t index : face.uv_indices)
                uv = std::max(uv, index);
        }
        if (faces.empty()) return;
        if (vertex >= mesh.verts.size()) throwOutOfBounds(kind, "vertex", vertex);
        if (sets != 0 && uv >= entries) throwOutOfBounds(kind, "uv", uv);
    };
    check(FaceKind::triangle, mesh.triangles);
    check(FaceKind::quad, mesh.quads);
}

void MeshBuilder::throwOutOfBounds(FaceKind kind, const char* what, std::uint32_t index) {
    const std::string face = kind == FaceKind::triangle ? "Triangle " : "Quad ";
    throw VelmarException(
        toVelmarString(face + what + " index is out of bounds. (" + what + " index=" + std::to_string(index) + ")"));
}

} // namespace Velmar
