#include "tools/MeshMeasures.h"

#include "tools/Vec.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

using Velmar::Mesh;
using Velmar::MeshQuad;
using Velmar::MeshTriangle;
using Velmar::Vec3d;
using Velmar::Vec3f;

namespace {

/// A number for each vertex, the same for vertices of equal position.
std::vector<std::uint32_t> weld(const Mesh& mesh) {
    std::vector<std::uint32_t> order(mesh.verts.size());
    std::iota(order.begin(), order.end(), 0U);
    const auto key = [&](std::uint32_t i) {
        const Vec3f& v = mesh.verts[i];
        // The sum makes negative zeros equal to plain ones for every comparison.
        return std::array<float, 3>{v.x + 0.0F, v.y + 0.0F, v.z + 0.0F};
    };
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
    std::vector<std::uint32_t> numbers(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const bool same = i != 0 && key(order[i]) == key(order[i - 1]);
        numbers[order[i]] = same ? numbers[order[i - 1]] : order[i];
    }
    return numbers;
}

class Measurement {
  public:
    explicit Measurement(const Mesh& measured) : mesh(measured), welded(weld(mesh)), used(mesh.verts.size()) {
        edges.reserve(3 * mesh.triangles.size() + 4 * mesh.quads.size());
        faces.reserve(mesh.triangles.size() + mesh.quads.size());
    }

    MeshMeasures run() {
        for (const MeshTriangle& triangle : mesh.triangles)
            add(triangle.vertex_indices);
        for (const MeshQuad& quad : mesh.quads)
            add(quad.vertex_indices);
        result.unused_vertices = static_cast<std::uint64_t>(std::count(used.begin(), used.end(), false));
        countDuplicates();
        if (countEdges() && !faces.empty()) result.volume = std::abs(sixfold_volume) / 6;
        return result;
    }

  private:
    /// An edge with the direction in which a face passes it, in the lowest bit.
    struct Edge {
        std::uint64_t ends;
        bool forwards;
    };
    using Face = std::array<std::uint32_t, 4>;

    template <std::size_t corners>
    void add(const std::uint32_t (&vertices)[corners]) {
        Face face;
        face.fill(0xFFFFFFFF);
        using Vec::operator-;
        double area = 0;
        for (std::size_t i = 0; i < corners; ++i) {
            used[vertices[i]] = true;
            face[i] = welded[vertices[i]];
            addEdge(welded[vertices[i]], welded[vertices[(i + 1) % corners]]);
        }
        // From a vertex of the mesh, near which the numbers keep their digits.
        const Vec3d origin = Vec::of(mesh.verts[0]);
        for (std::size_t i = 1; i + 1 < corners; ++i) {
            const Vec3d a = Vec::of(mesh.verts[vertices[0]]) - origin;
            const Vec3d b = Vec::of(mesh.verts[vertices[i]]) - origin;
            const Vec3d c = Vec::of(mesh.verts[vertices[i + 1]]) - origin;
            const Vec3d normal = Vec::cross(b - a, c - a);
            area += std::sqrt(Vec::dot(normal, normal)) / 2;
            sixfold_volume += Vec::dot(a, Vec::cross(b, c));
        }
        std::sort(face.begin(), face.begin() + corners);
        const bool repeats = std::adjacent_find(face.begin(), face.begin() + corners) != face.begin() + corners;
        result.area += area;
        if (repeats || !(area > 0)) ++result.degenerate_faces;
        faces.push_back(face);
    }

    void addEdge(std::uint32_t from, std::uint32_t to) {
        if (from == to) return;
        const auto [low, high] = std::minmax(from, to);
        edges.push_back({(std::uint64_t{low} << 32U) | high, from < to});
    }

    void countDuplicates() {
        std::sort(faces.begin(), faces.end());
        for (std::size_t i = 1; i < faces.size(); ++i)
            result.duplicate_faces += faces[i] == faces[i - 1] ? 1 : 0;
    }

    /// Returns whether the mesh is closed, with the two faces at each edge wound alike.
    bool countEdges() {
        std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.ends < b.ends; });
        bool closed = true;
        for (std::size_t first = 0; first < edges.size();) {
            std::size_t end = first;
            std::size_t forwards = 0;
            for (; end < edges.size() && edges[end].ends == edges[first].ends; ++end)
                forwards += edges[end].forwards ? 1 : 0;
            const std::size_t count = end - first;
            if (count == 1) ++result.open_edges;
            if (count > 2) ++result.shared_edges;
            closed = closed && 2 * forwards == count;
            first = end;
        }
        return closed;
    }

    const Mesh& mesh;
    std::vector<std::uint32_t> welded;
    std::vector<bool> used;
    std::vector<Edge> edges;
    std::vector<Face> faces;
    double sixfold_volume = 0;
    MeshMeasures result;
};

} // namespace

MeshMeasures measureMesh(const Mesh& mesh) {
    return Measurement(mesh).run();
}
