#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Cuts the text of a document at its elements, without looking at their names.
namespace Velmar::Markup {

/// Why a text can't be cut, and where.
struct Fault {
    std::size_t offset;
    std::string text;
};

/// How deep elements may be nested, so that no reader of theirs runs out of stack.
constexpr int max_depth = 100;

constexpr bool isSpace(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// The offset after the spaces and comments at `offset`, or the end of the text. Throws `Fault` for other text and for
/// a document type, which scenes have no use for and which may define entities.
std::size_t skipToTag(std::string_view text, std::size_t offset);

/// The offset after the tag that begins at `offset`. Throws `Fault` when it has no end.
std::size_t skipTag(std::string_view text, std::size_t offset);

/// The offset of the first tag at or after `offset`, inside of an element through which `skipElement` has found its
/// way.
std::size_t findTag(std::string_view text, std::size_t offset);

/// The offset after the element that begins at `offset`. Throws `Fault` when it has no end or is nested too deep.
std::size_t skipElement(std::string_view text, std::size_t offset);

/// The name in the tag that begins at `offset`.
std::string_view nameInTag(std::string_view text, std::size_t offset);

/// What a tree of the elements of a text consists of.
struct TreeSize {
    /// Elements, and texts that aren't the first of their element.
    std::size_t nodes = 0;
    /// At least so many.
    std::size_t attributes = 0;
};

/// Counts what is in `text`, through which `skipElement` has found its way. Comments count as nothing.
TreeSize measureTree(std::string_view text);

/// Where an offset is, for people. Both count from 1; a column is a character of UTF-8.
struct Place {
    std::size_t line = 1;
    std::size_t column = 1;
};

/// Finds the places of offsets in a text, each in a bounded time once the text before it was looked through.
class Places {
  public:
    explicit Places(std::string_view text_) : text(text_) {}

    /// The place of an offset that isn't beyond the text's end.
    Place find(std::size_t offset);

  private:
    static constexpr std::size_t block_size = 1024;

    std::string_view text;
    /// Where each block begins, as far as they were looked through.
    std::vector<Place> blocks{Place()};
};

} // namespace Velmar::Markup
