#include "preview/MeshGeometry.h"

#include "preview/SceneNodes.h"

#include <algorithm>
#include <new>
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace Preview {

namespace {

/// Embree reads vertices by 16 bytes, so 4 bytes after the last of them must be readable. They are, if they are on the
/// page of the last vertex.
bool isReadableAfter(const Velmar::Vector<Velmar::Vec3f>& verts) {
    constexpr std::uintptr_t page = 4096;
    const auto end = reinterpret_cast<std::uintptr_t>(verts.data() + verts.size());
    return verts.capacity() > verts.size() || end % page != 0;
}

/// Whether the memory of its structure matters more than the time of its rays.
bool isLarge(const Velmar::Mesh& mesh) {
    constexpr std::size_t max_fast_faces = 500000;
    return mesh.triangles.size() + mesh.quads.size() > max_fast_faces;
}

template <class Element>
std::uint64_t hashOf(const Velmar::Vector<Element>& elements, std::uint64_t seed) {
    return XXH3_64bits_withSeed(elements.data(), elements.size() * sizeof(Element), seed);
}

} // namespace

MeshGeometry::Identity MeshGeometry::identify(const Velmar::Mesh& mesh, bool smooth) {
    return {mesh.verts.data(),
            mesh.normals.data(),
            mesh.triangles.data(),
            mesh.quads.data(),
            {mesh.verts.size(), mesh.normals.size(), mesh.triangles.size(), mesh.quads.size()},
            hashOf(mesh.quads, hashOf(mesh.triangles, hashOf(mesh.normals, hashOf(mesh.verts, 0)))),
            smooth};
}

bool MeshGeometry::isMadeOf(const Velmar::Mesh& other, bool smooth) const {
    return identity == identify(other, smooth);
}

MeshGeometry::MeshGeometry(EmbreeDevice& device, const Velmar::Mesh& mesh_, bool smooth, const std::string& name)
    : mesh(&mesh_), identity(identify(mesh_, smooth)), scene(device.makeScene(isLarge(mesh_))) {
    // More than Embree's 32-bit numbers of faces and vertices.
    constexpr std::size_t max_count = 0xFFFFFFFE;
    if (mesh->verts.size() > max_count || mesh->triangles.size() > max_count || mesh->quads.size() > max_count) {
        report("mesh '" + name + "' is too large; left out");
    } else {
        triangle_count = mesh->triangles.size();
        quad_count = mesh->quads.size();
        addFaces<3>(device, mesh->triangles.data(), triangle_count, triangle_kind, triangle_copy, name);
        addFaces<4>(device, mesh->quads.data(), quad_count, quad_kind, quad_copy, name);
    }
    if (mesh->normals.size() == mesh->verts.size() && !mesh->normals.empty())
        normals = mesh->normals.data();
    else if (smooth)
        makeSmoothNormals();
    device.commit(scene.get(), triangle_count + quad_count);
}

template <std::size_t corners, class Face>
void MeshGeometry::addFaces(EmbreeDevice& device, const Face* faces, std::size_t count, FaceKind kind,
                            std::vector<std::array<std::uint32_t, corners>>& copy, const std::string& name) {
    const std::size_t vertex_count = mesh->verts.size();
    if (count == 0 || vertex_count == 0) return;
    std::size_t bad = 0;
    for (std::size_t i = 0; i < count; ++i)
        bad += std::any_of(faces[i].vertex_indices, faces[i].vertex_indices + corners,
                           [=](std::uint32_t index) { return index >= vertex_count; })
                   ? 1
                   : 0;
    if (bad != 0) {
        report("mesh '" + name + "': " + std::to_string(bad) + " faces with vertices that aren't there are left out");
        copy.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            std::copy_n(faces[i].vertex_indices, corners, copy[i].begin());
            // A face without an area, which no ray hits.
            if (*std::max_element(copy[i].begin(), copy[i].end()) >= vertex_count) copy[i].fill(0);
        }
    }
    const GeometryOwner geometry =
        device.makeGeometry(corners == 3 ? RTC_GEOMETRY_TYPE_TRIANGLE : RTC_GEOMETRY_TYPE_QUAD);
    const void* const indices = bad != 0 ? static_cast<const void*>(copy.data()) : faces;
    const std::size_t stride = bad != 0 ? sizeof copy[0] : sizeof(Face);
    rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_INDEX, 0,
                               corners == 3 ? RTC_FORMAT_UINT3 : RTC_FORMAT_UINT4, indices, 0, stride, count);
    attachVertices(geometry.get());
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometryByID(scene.get(), geometry.get(), kind);
}

void MeshGeometry::attachVertices(RTCGeometry geometry) {
    const Velmar::Vec3f* vertices = mesh->verts.data();
    if (!isReadableAfter(mesh->verts)) {
        if (vertex_copy.empty()) {
            vertex_copy.reserve(mesh->verts.size() + 1);
            vertex_copy.assign(mesh->verts.begin(), mesh->verts.end());
            vertex_copy.push_back({});
        }
        vertices = vertex_copy.data();
    }
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, vertices, 0,
                               sizeof(Velmar::Vec3f), mesh->verts.size());
}

/// Sums of the normals of the faces around each vertex, weighted by their areas.
void MeshGeometry::makeSmoothNormals() {
    std::vector<Vec3> sums(mesh->verts.size());
    const auto add = [&](unsigned kind, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            // Both halves of a quad.
            for (const float at : {0.0f, 1.0f}) {
                if (kind == triangle_kind && at > 0.0f) continue;
                const Corners corners = cornersAt(kind, static_cast<unsigned>(i), at, at);
                if (std::max({corners.vertices[0], corners.vertices[1], corners.vertices[2]}) >= sums.size()) continue;
                const Vec3 a = vertex(corners.vertices[0]);
                const Vec3 n = cross(vertex(corners.vertices[1]) - a, vertex(corners.vertices[2]) - a);
                if (!isFinite(n)) continue;
                for (const std::uint32_t index : corners.vertices)
                    sums[index] += n;
            }
        }
    };
    add(triangle_kind, triangle_count);
    add(quad_kind, quad_count);
    smooth_normals.resize(sums.size());
    for (std::size_t i = 0; i < sums.size(); ++i) {
        const Vec3 n = isBlack(sums[i]) ? Vec3{} : normalised(sums[i]);
        smooth_normals[i] = {n.x, n.y, n.z};
    }
    normals = smooth_normals.data();
}

Vec2 MeshGeometry::uvAt(const Corners& corners, std::uint32_t uv_set) const {
    const std::uint64_t sets = mesh->num_uv_mappings;
    if (uv_set >= sets) return {};
    Vec2 uv;
    const float weights[3] = {1.0f - corners.u - corners.v, corners.u, corners.v};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::uint64_t index = corners.uvs[i] * sets + uv_set;
        // Nothing has checked these indices yet.
        if (index >= mesh->uv_pairs.size()) return {};
        const Velmar::Vec2f& pair = mesh->uv_pairs.data()[index];
        uv.x += weights[i] * pair.x;
        uv.y += weights[i] * pair.y;
    }
    return uv;
}

} // namespace Preview
