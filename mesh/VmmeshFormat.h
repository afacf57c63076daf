#pragma once

#include <cstdint>

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
/// `uv_layout` is a u32; the others are a u32 count and that many records as they stand in memory. Versions 1 to 3 have
/// no `compressed` and no reserved word, versions 1 and 2 no `uv_layout`, version 1 no quads.
namespace Velmar::VmmeshFormat {

inline constexpr std::uint32_t magic = 5456751;
inline constexpr std::uint32_t newest_version = 4;
inline constexpr std::uint32_t first_version_with_quads = 2;
inline constexpr std::uint32_t first_version_with_uv_layout = 3;
inline constexpr std::uint32_t first_version_with_compression = 4;
inline constexpr std::uint32_t reserved_word = 1;

inline constexpr std::uint32_t greatest_count = 0x7FFFFFFF;
inline constexpr std::uint32_t longest_string = 1024;
inline constexpr std::uint32_t greatest_uv_layout = 1;

} // namespace Velmar::VmmeshFormat
