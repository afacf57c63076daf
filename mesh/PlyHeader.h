#pragma once

#include <cstddef>
#include <string_view>

namespace Velmar {

/// What must be known of a PLY file before RPly may read it: older versions of it run over the end of their buffer when
/// a file ends within a word.
struct PlyHeaderCheck {
    /// All words up to "end_header" are there, known where a type or a format is meant, and followed by a blank.
    bool complete = false;
    /// The body is text.
    bool ascii = false;
    /// Where a header that isn't complete stopped making sense: a line, counted from 1, and its word. No word where the
    /// line ends too early or too late.
    std::size_t line = 1;
    std::string_view word;
};

/// Walks through the header of the file with the bytes `file` word by word, as RPly does.
PlyHeaderCheck checkPlyHeader(std::string_view file);

/// Whether the last word of `text` is followed by a blank.
bool endsWithBlank(std::string_view text);

} // namespace Velmar
