#pragma once

#include <string_view>

namespace Velmar {

/// What must be known of a PLY file before RPly may read it: older versions of it run over the end of their buffer when
/// a file ends within a word.
struct PlyHeaderCheck {
    /// All words up to "end_header" are there, known where a type or a format is meant, and followed by a blank.
    bool complete = false;
    /// The body is text.
    bool ascii = false;
};

/// Walks through the header of the file with the bytes `file` word by word, as RPly does.
PlyHeaderCheck checkPlyHeader(std::string_view file);

/// Whether the last word of `text` is followed by a blank.
bool endsWithBlank(std::string_view text);

} // namespace Velmar
