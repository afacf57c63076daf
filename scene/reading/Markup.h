#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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

/// The offset after the element that begins at `offset`. Throws `Fault` when it has no end or is nested too deep.
std::size_t skipElement(std::string_view text, std::size_t offset);

/// The name in the tag that begins at `offset`.
std::string_view nameInTag(std::string_view text, std::size_t offset);

} // namespace Velmar::Markup
