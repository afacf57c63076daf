#pragma once

#include "velmarexceptions.h"

#include "utils/Parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace Velmar {

/// The text of a mesh file, read by a parser. The offsets of a parser have 32 bits, so a large text is read in parts,
/// one after another.
class TextInParts {
  public:
    static constexpr std::size_t default_part_size = std::size_t{1} << 30U;

    /// Where a part ends that begins at `start`: near `wanted`, which is before the end of the text. What precedes it
    /// must be read in the same way without what follows, and the other way round.
    using FindPartEnd = std::size_t (*)(std::string_view text, std::size_t start, std::size_t wanted);

    /// A text that one parser reaches.
    explicit TextInParts(Parser whole) : parser(whole), all(whole.text, whole.size) {}

    /// A text of any size, in parts of about `size_of_parts` bytes.
    /// Throws `Velmar::Exception` for a part of 4 GiB, and so does `nextPart`.
    TextInParts(std::string_view whole, std::size_t size_of_parts, FindPartEnd findEndOfPart)
        : parser(nullptr, 0), all(whole), part_size(std::max<std::size_t>(size_of_parts, 1)),
          findPartEnd(findEndOfPart) {
        startPart(0);
    }

    /// Lets the parser continue with the next part, if it is at the end of one and there is another.
    bool nextPart() {
        if (!parser.atEnd() || getRest() == 0) return false;
        startPart(getPosition());
        return true;
    }

    /// How many bytes of the whole text were read, and how many weren't.
    std::uint64_t getPosition() const { return part_start + parser.pos; }
    std::uint64_t getRest() const { return all.size() - getPosition(); }

    /// Of the present part.
    Parser parser;

  private:
    void startPart(std::size_t start) {
        const bool is_last = all.size() - start <= part_size;
        const std::size_t size = (is_last ? all.size() : findPartEnd(all, start, start + part_size)) - start;
        if (size > std::numeric_limits<std::uint32_t>::max())
            throw Velmar::Exception("A line is too long: " + std::to_string(size) + " bytes.");
        part_start = start;
        parser = parserOver(all.substr(start, size));
    }

    std::string_view all;
    std::size_t part_start = 0;
    std::size_t part_size = 0;
    FindPartEnd findPartEnd = nullptr;
};

/// The end of a part of a text (see `TextInParts::FindPartEnd`) that may be cut where `canBeCut(offset)` is true.
template <class CanBeCut>
std::size_t findCut(std::string_view text, std::size_t start, std::size_t wanted, CanBeCut canBeCut) {
    for (std::size_t end = wanted; end > start; --end)
        if (canBeCut(end)) return end;
    for (std::size_t end = wanted + 1; end < text.size(); ++end)
        if (canBeCut(end)) return end;
    return text.size();
}

/// Whether a line begins at an offset that isn't the start of a text.
inline bool isLineStart(std::string_view text, std::size_t offset) {
    const char before = text[offset - 1];
    return before == '\n' || (before == '\r' && text[offset] != '\n');
}

} // namespace Velmar
