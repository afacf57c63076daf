#include "bench/support/BenchMesh.h"

#include "velmarvec.h"

#include "mesh/MeshLoading.h"

#include <cmath>
#include <cstdint>
#include <unordered_map>

using namespace Velmar;

namespace {

using Indices = std::uint32_t[3];

/// Divides each triangle into four at the midpoints of its edges, which neighbours share.
void refine(const Mesh& coarse, Mesh& fine) {
    for (const Vec3f& vertex : coarse.verts)
        fine.addVertex(vertex);
    std::unordered_map<std::uint64_t, std::uint32_t> middles;
    const auto middleOf = [&](std::uint32_t a, std::uint32_t b) {
        const std::uint64_t edge = a < b ? std::uint64_t{a} << 32 | b : std::uint64_t{b} << 32 | a;
        const auto [entry, added] = middles.try_emplace(edge, static_cast<std::uint32_t>(fine.verts.size()));
        if (added) {
            const Vec3f& p = coarse.verts[a];
            const Vec3f& q = coarse.verts[b];
            fine.addVertex({(p.x + q.x) / 2, (p.y + q.y) / 2, (p.z + q.z) / 2});
        }
        return entry->second;
    };
    for (const MeshTriangle& triangle : coarse.triangles) {
        const Indices& corner = triangle.vertex_indices;
        const std::uint32_t middle[3] = {middleOf(corner[0], corner[1]), middleOf(corner[1], corner[2]),
                                         middleOf(corner[2], corner[0])};
        const Indices parts[4] = {{corner[0], middle[0], middle[2]},
                                  {middle[0], corner[1], middle[1]},
                                  {middle[2], middle[1], corner[2]},
                                  {middle[0], middle[1], middle[2]}};
        for (const Indices& part : parts)
            fine.addTriangle(part, {0, 0, 0}, triangle.material_index);
    }
}

} // namespace

const Mesh& BenchSupport::refinedBunny() {
    static const Mesh* const mesh = [] {
        Mesh bunny;
        // Enlarged, because triangles without a noticeable area are dropped.
        loadMesh("/usr/share/glmark2/models/bunny.obj", bunny, 1000);
        Mesh finer;
        refine(bunny, finer);
        static Mesh finest;
        refine(finer, finest);
        finest.build();
        return &finest;
    }();
    return *mesh;
}

const Mesh& BenchSupport::wavySquare() {
    static const Mesh* const mesh = [] {
        static Mesh filled;
        constexpr std::uint32_t cells = 710;
        constexpr std::uint32_t side = cells + 1;
        for (std::uint32_t row = 0; row < side; ++row)
            for (std::uint32_t column = 0; column < side; ++column) {
                const float x = static_cast<float>(column) * 0.1f;
                const float y = static_cast<float>(row) * 0.1f;
                filled.addVertexWithNormal({x, y, std::sin(x) * std::cos(y)}, {std::cos(x), std::sin(y), 1.0f});
            }
        for (std::uint32_t row = 0; row < cells; ++row)
            for (std::uint32_t column = 0; column < cells; ++column) {
                const std::uint32_t corner = row * side + column;
                filled.addTriangle({corner, corner + 1, corner + side + 1}, {0, 0, 0}, 0);
                filled.addTriangle({corner, corner + side + 1, corner + side}, {0, 0, 0}, 0);
            }
        filled.build();
        return &filled;
    }();
    return *mesh;
}
