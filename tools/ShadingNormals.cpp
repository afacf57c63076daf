#include "tools/ShadingNormals.h"

#include "tools/Vec.h"

#include <algorithm>
#include <cmath>
#include <iterator>

using namespace Vec;
using Velmar::Mesh;
using Velmar::Vec3f;

namespace {

// The cosine of 40 degrees: the corners of a box stay sharp, a ball of few faces looks round.
constexpr double least_agreement = 0.766;

double getAngle(const Vec3d& a, const Vec3d& b) {
    return std::acos(std::clamp(dot(normalised(a), normalised(b)), -1.0, 1.0));
}

} // namespace

Vec3d getFaceNormal(const Mesh& mesh, const Velmar::MeshTriangle& face) {
    const auto& v = face.vertex_indices;
    const Vec3d corner = of(mesh.verts[v[0]]);
    return normalised(cross(of(mesh.verts[v[1]]) - corner, of(mesh.verts[v[2]]) - corner));
}

Vec3d getFaceNormal(const Mesh& mesh, const Velmar::MeshQuad& face) {
    const auto& v = face.vertex_indices;
    return normalised(cross(of(mesh.verts[v[2]]) - of(mesh.verts[v[0]]), of(mesh.verts[v[3]]) - of(mesh.verts[v[1]])));
}

ShadingNormals::ShadingNormals(const Mesh& shaded_mesh) : mesh(shaded_mesh) {
    if (!mesh.normals.empty()) return;
    means.resize(mesh.verts.size());
    for (const auto& face : mesh.triangles)
        addFace(face);
    for (const auto& face : mesh.quads)
        addFace(face);
}

// Weighted by the angle at the vertex, so that it doesn't matter how a surface is cut into faces.
template <class Face>
void ShadingNormals::addFace(const Face& face) {
    const Vec3d normal = getFaceNormal(mesh, face);
    if (!isFinite(normal)) return;
    constexpr std::size_t corners = std::size(Face{}.vertex_indices);
    for (std::size_t i = 0; i < corners; ++i) {
        const Vec3d corner = of(mesh.verts[face.vertex_indices[i]]);
        const Vec3d next = of(mesh.verts[face.vertex_indices[(i + 1) % corners]]);
        const Vec3d previous = of(mesh.verts[face.vertex_indices[(i + corners - 1) % corners]]);
        const Vec3d share = normal * getAngle(next - corner, previous - corner);
        Vec3f& mean = means[face.vertex_indices[i]];
        mean = {mean.x + static_cast<float>(share.x), mean.y + static_cast<float>(share.y),
                mean.z + static_cast<float>(share.z)};
    }
}

Vec3d ShadingNormals::getNormal(std::uint32_t vertex, const Vec3d& face_normal) const {
    const bool own = means.empty();
    Vec3d normal = normalised(of(own ? mesh.normals[vertex] : means[vertex]));
    const double agreement = dot(normal, face_normal);
    if (agreement < 0) normal = -normal;
    return std::abs(agreement) > (own ? 0 : least_agreement) ? normal : face_normal;
}
