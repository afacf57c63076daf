#pragma once

#include "mesh/Mesh.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <type_traits>

/// Numbers of the mesh file format that its writer and its reader share. All words are little-endian.
///
/// A file of version 4:
///
///     magic, version, compressed (0 or 1), reserved (1)               four u32
///     num_uv_mappings                                                 u32
///     material names: count, then each its length and bytes           u32, (u32, bytes)*
///     extra entries: count, then each its length, bytes and a value   u32, (u32, bytes, u32)*
///     body, plain:      verts, normals, uv_layout, uv_pairs, triangles, quads
///     body, compressed: size of the frame as u64, one zstd frame of the same six fields, faces as differences
///
/// `uv_layout` is a u32; the others are a u32 count and that many records, as in memory. Versions 1 to 3 have
/// no `compressed` and no reserved word, versions 1 and 2 no `uv_layout`, version 1 no quads.
namespace Velmar::VmmeshFormat {

inline constexpr std::uint32_t magic = 5456751;
inline constexpr std::uint32_t newest_version = 4;
inline constexpr std::uint32_t first_version_with_quads = 2;
inline constexpr std::uint32_t first_version_with_uv_layout = 3;
inline constexpr std::uint32_t first_version_with_compression = 4;
inline constexpr std::uint32_t reserved_word = 1;

inline constexpr std::uint32_t max_count = 0x7FFFFFFF;
inline constexpr std::uint32_t max_string_length = 1024;
inline constexpr std::uint32_t max_uv_layout = 1;

} // namespace Velmar::VmmeshFormat

/// Faces of a compressed mesh file are stored as differences modulo 2^32, which compress better: the first vertex and
/// UV index against those of the face before, the others against the first of their own face.
namespace Velmar::FaceDeltaFilter {

/// Words go straight between the record and the bytes: gathered in a local record they would be copied out of it again
/// before the processor has stored them.
inline void storeWord(std::uint8_t* to, std::uint32_t word) {
    std::memcpy(to, &word, sizeof word);
}
inline std::uint32_t loadWord(const std::uint8_t* from) {
    std::uint32_t word = 0;
    std::memcpy(&word, from, sizeof word);
    return word;
}

/// Writes `count` filtered records of the size of `Face` to `filtered`, at any alignment.
template <class Face>
void encode(const Face* faces, std::size_t count, std::uint8_t* filtered) {
    constexpr std::size_t corners = std::extent_v<decltype(Face::vertex_indices)>;
    std::uint32_t prev_v = 0;
    std::uint32_t prev_uv = 0;
    for (const Face* face = faces; face != faces + count; ++face, filtered += sizeof *face) {
        const std::uint32_t v = face->vertex_indices[0];
        const std::uint32_t uv = face->uv_indices[0];
        storeWord(filtered, v - prev_v);
        storeWord(filtered + offsetof(Face, uv_indices), uv - prev_uv);
        for (std::size_t corner = 1; corner < corners; ++corner) {
            storeWord(filtered + corner * sizeof v, face->vertex_indices[corner] - v);
            storeWord(filtered + offsetof(Face, uv_indices) + corner * sizeof uv, face->uv_indices[corner] - uv);
        }
        storeWord(filtered + offsetof(Face, material_index), face->material_index);
        prev_v = v;
        prev_uv = uv;
    }
}

/// The same for triangles, most of most files: four words at a time, the first UV index in both halves.
inline void encode(const MeshTriangle* triangles, std::size_t count, std::uint8_t* filtered) {
    constexpr std::size_t second_half = offsetof(MeshTriangle, uv_indices);
    static_assert(sizeof(MeshTriangle) == second_half + sizeof(__m128i));
    const __m128i outer_lanes = _mm_setr_epi32(-1, 0, 0, -1);
    const __m128i inner_lanes = _mm_setr_epi32(0, -1, -1, 0);
    __m128i prev_firsts = _mm_setzero_si128();
    for (const MeshTriangle* triangle = triangles; triangle != triangles + count; ++triangle) {
        const auto* const words = reinterpret_cast<const std::uint8_t*>(triangle);
        const __m128i vertices = _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
        const __m128i uvs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + second_half));
        const __m128i firsts = _mm_shuffle_epi32(vertices, _MM_SHUFFLE(3, 0, 0, 0));
        const __m128i bases = _mm_or_si128(_mm_and_si128(prev_firsts, outer_lanes), _mm_and_si128(firsts, inner_lanes));
        const __m128i uv_bases = _mm_and_si128(_mm_shuffle_epi32(uvs, 0), inner_lanes);
        // The second half first: its first word is the last one of the other.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(filtered + second_half), _mm_sub_epi32(uvs, uv_bases));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(filtered), _mm_sub_epi32(vertices, bases));
        prev_firsts = firsts;
        filtered += sizeof *triangle;
    }
}

/// Reads `count` filtered records at `filtered`, at any alignment, into `faces`.
template <class Face>
void decode(const std::uint8_t* filtered, std::size_t count, Face* faces) {
    constexpr std::size_t corners = std::extent_v<decltype(Face::vertex_indices)>;
    std::uint32_t v = 0;
    std::uint32_t uv = 0;
    for (Face* face = faces; face != faces + count; ++face, filtered += sizeof *face) {
        v += loadWord(filtered);
        uv += loadWord(filtered + offsetof(Face, uv_indices));
        face->vertex_indices[0] = v;
        face->uv_indices[0] = uv;
        for (std::size_t corner = 1; corner < corners; ++corner) {
            face->vertex_indices[corner] = v + loadWord(filtered + corner * sizeof v);
            face->uv_indices[corner] = uv + loadWord(filtered + offsetof(Face, uv_indices) + corner * sizeof uv);
        }
        face->material_index = loadWord(filtered + offsetof(Face, material_index));
    }
}

} // namespace Velmar::FaceDeltaFilter
