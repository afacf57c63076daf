#pragma once

#include "mesh/MeshRecords.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Faces of a compressed mesh file are stored as differences modulo 2^32, which compress better: the first vertex and
/// UV index against those of the face before, the others against the first of their own face.
namespace Velmar::FaceDeltaFilter {

/// Writes `count` filtered records of the size of `Face` to `filtered`, at any alignment.
template <class Face>
void encode(const Face* faces, std::size_t count, std::uint8_t* filtered) {
    constexpr std::size_t corners = std::extent_v<decltype(Face::vertex_indices)>;
    std::uint32_t prev_v = 0;
    std::uint32_t prev_uv = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Face& face = faces[i];
        Face deltas;
        deltas.vertex_indices[0] = face.vertex_indices[0] - prev_v;
        deltas.uv_indices[0] = face.uv_indices[0] - prev_uv;
        prev_v = face.vertex_indices[0];
        prev_uv = face.uv_indices[0];
        for (std::size_t corner = 1; corner < corners; ++corner) {
            deltas.vertex_indices[corner] = face.vertex_indices[corner] - prev_v;
            deltas.uv_indices[corner] = face.uv_indices[corner] - prev_uv;
        }
        deltas.material_index = face.material_index;
        std::memcpy(filtered + i * sizeof deltas, &deltas, sizeof deltas);
    }
}

/// Reads `count` filtered records at `filtered`, at any alignment, into `faces`.
template <class Face>
void decode(const std::uint8_t* filtered, std::size_t count, Face* faces) {
    constexpr std::size_t corners = std::extent_v<decltype(Face::vertex_indices)>;
    std::uint32_t prev_v = 0;
    std::uint32_t prev_uv = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Face face;
        std::memcpy(&face, filtered + i * sizeof face, sizeof face);
        prev_v = face.vertex_indices[0] += prev_v;
        prev_uv = face.uv_indices[0] += prev_uv;
        for (std::size_t corner = 1; corner < corners; ++corner) {
            face.vertex_indices[corner] += prev_v;
            face.uv_indices[corner] += prev_uv;
        }
        faces[i] = face;
    }
}

} // namespace Velmar::FaceDeltaFilter
