#pragma once

#include <cstdint>

namespace Velmar {

/// A triangle as it stands in memory and, unfiltered, in mesh files. UV indices count UV entries, of which each holds
/// one pair per UV set.
struct MeshTriangle {
    std::uint32_t vertex_indices[3];
    std::uint32_t uv_indices[3];
    std::uint32_t material_index;
};

/// A quad as it stands in memory and, unfiltered, in mesh files.
struct MeshQuad {
    std::uint32_t vertex_indices[4];
    std::uint32_t uv_indices[4];
    std::uint32_t material_index;
};

static_assert(sizeof(MeshTriangle) == 28);
static_assert(sizeof(MeshQuad) == 36);

} // namespace Velmar
