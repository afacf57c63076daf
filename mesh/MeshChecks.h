#pragma once

#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The smallest f32 area with which a triangle is kept.
inline constexpr float min_triangle_area = 1e-20f;

enum class FaceKind { triangle, quad };

/// Throws `VelmarException` for a vertex or UV index that is out of bounds.
[[noreturn]] void throwVertexIndexOutOfBounds(FaceKind kind, std::uint32_t index);
[[noreturn]] void throwUVIndexOutOfBounds(FaceKind kind, std::uint32_t index);

/// `normal` divided by its f32 length; NaNs for a length of zero.
/// Throws `VelmarException` when a component of `normal` isn't finite.
Vec3f normalised(const Vec3f& normal);

/// Throws `VelmarException` unless all UV indices of a face lie within `num_pairs` pairs. Without UV sets they aren't
/// looked at.
template <std::size_t corners>
inline void checkUVIndices(std::uint32_t num_uv_mappings, std::size_t num_pairs, FaceKind kind,
                           const std::uint32_t (&uv_indices)[corners]) {
    if (num_uv_mappings == 0) return;
    // The product wraps at 32 bits, and files rely on what passes by that.
    for (const std::uint32_t index : uv_indices)
        if (num_uv_mappings * index >= static_cast<std::uint32_t>(num_pairs)) [[unlikely]]
            throwUVIndexOutOfBounds(kind, index);
}

/// Throws `VelmarException` unless all indices of a face lie within the vertices and, when there are UV sets, within
/// the UV pairs. All vertex indices are looked at before the first UV index.
template <std::size_t corners>
inline void checkFaceIndices(const Mesh& mesh, FaceKind kind, const std::uint32_t (&vertex_indices)[corners],
                             const std::uint32_t (&uv_indices)[corners]) {
    for (const std::uint32_t index : vertex_indices)
        if (index >= mesh.verts.size()) [[unlikely]]
            throwVertexIndexOutOfBounds(kind, index);
    checkUVIndices(mesh.num_uv_mappings, mesh.uv_pairs.size(), kind, uv_indices);
}

/// Whether the f32 area of a triangle is at least `min_triangle_area`; not so for a NaN.
inline bool hasArea(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2) {
    const Vec3f e1 = {p2.x - p0.x, p2.y - p0.y, p2.z - p0.z};
    const Vec3f e2 = {p1.x - p0.x, p1.y - p0.y, p1.z - p0.z};
    const Vec3f cross = {e1.y * e2.z - e1.z * e2.y, e1.z * e2.x - e1.x * e2.z, e1.x * e2.y - e1.y * e2.x};
    const float squared_length = cross.x * cross.x + cross.y * cross.y + cross.z * cross.z;
    // Far above the bound nothing hangs on the root, which would hold up the reading of large files.
    constexpr float far_above = 1e-30f;
    return squared_length > far_above || std::sqrt(squared_length) * 0.5f >= min_triangle_area;
}

} // namespace Velmar
