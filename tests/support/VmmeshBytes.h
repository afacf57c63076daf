#pragma once

#include "mesh/Mesh.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace TestSupport {

/// Writes mesh files word by word, right or wrong, without the library.
class VmmeshBytes {
  public:
    VmmeshBytes& u32(std::uint32_t word) { return raw(&word, sizeof word); }
    VmmeshBytes& u64(std::uint64_t word) { return raw(&word, sizeof word); }
    VmmeshBytes& f32(float value) { return raw(&value, sizeof value); }
    VmmeshBytes& text(std::string_view characters) {
        u32(static_cast<std::uint32_t>(characters.size()));
        bytes.append(characters);
        return *this;
    }
    VmmeshBytes& append(std::string_view other) {
        bytes.append(other);
        return *this;
    }
    /// As many zero words as a block count of 0 or a zero field takes.
    VmmeshBytes& zeros(int words) {
        for (int i = 0; i < words; ++i)
            u32(0);
        return *this;
    }
    /// Magic, version and, in version 4, the compression flag and the reserved word.
    VmmeshBytes& header(std::uint32_t version, std::uint32_t compressed = 0) {
        bytes.append({'\x6F', '\x43', '\x53', '\x00'});
        u32(version);
        return version >= 4 ? u32(compressed).u32(1) : *this;
    }

    std::string bytes;

  private:
    VmmeshBytes& raw(const void* data, std::size_t size) {
        bytes.append(static_cast<const char*>(data), size);
        return *this;
    }
};

/// The content of a whole zstd frame. Throws `std::runtime_error` when it is damaged.
std::string decompressed(std::string_view frame);

/// One zstd frame whose header has the content's size.
std::string compressed(std::string_view content);

/// Reads a file of version 4 by the words of the format, without the library's reader, and gives its content as the
/// mesh that it holds. Throws `std::runtime_error` for anything that isn't as the writer should leave it: another
/// version, bytes after the end.
void readIndependently(std::string_view file, Velmar::Mesh& mesh);

} // namespace TestSupport
