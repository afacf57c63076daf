#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Velmar {

/// The header of a PLY file, checked and rewritten for RPly, which trusts headers where it must not: it overruns its
/// buffers at a file that ends within a word and at long remarks, keeps each remark in a kilobyte, takes any word for a
/// type, and counts through elements that have nothing to read.
struct PlyHeader {
    /// All words up to "end_header" are there, known where a type or a format is meant, and followed by a blank.
    bool complete = false;
    /// The body is text.
    bool ascii = false;
    /// The header that means the same to RPly: one declaration on a line, without remarks and without elements that
    /// read nothing.
    std::string text{};
    /// Where the body begins in the file.
    std::size_t body_offset = 0;
    /// Where a header that isn't complete stopped making sense: a line, counted from 1, and its word. No word where the
    /// line ends too early or too late.
    std::size_t line = 1;
    std::string_view word{};
};

/// Reads the header of the file with the bytes `file` word by word, as RPly does.
PlyHeader parsePlyHeader(std::string_view file);

/// Whether the last word of `text` is followed by a blank.
bool endsWithBlank(std::string_view text);

} // namespace Velmar
