#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

class MappedFile;

/// A cursor over bytes that belong to someone else, usually a mapped file. It allocates nothing: tokens are views and
/// numbers are read in place. An operation that returns false leaves the cursor where it was.
class Parser {
  public:
    /// A view of the buffer.
    struct Token {
        const char* data = nullptr;
        std::size_t size = 0;

        std::string_view view() const { return {data, size}; }
        friend bool operator==(const Token& token, std::string_view other) { return token.view() == other; }
    };

    /// Over `bytes` bytes from `first`, with the cursor at the first.
    Parser(const char* first, std::uint32_t bytes) : text(first), size(bytes) {}

    bool atEnd() const { return pos >= size; }
    /// The byte at the cursor, which must not be at the end.
    char current() const { return text[pos]; }

    /// The longest run of A to Z and a to z, which may be empty: then `token` has length 0 and the result is false.
    bool parseAlpha(Token& token);
    /// A letter or `_`, then letters, digits or `_`.
    bool parseIdentifier(Token& token);
    /// Everything up to a space, tab, line feed, carriage return or the end; false when that is nothing.
    bool parseNonBlankToken(Token& token);
    /// The bytes of `literal`, as a prefix of what follows. An empty literal always matches.
    bool parseString(std::string_view literal);
    /// An optional sign and decimal digits, within the range of a signed 32-bit number.
    bool parseInt(std::int32_t& result);
    /// A decimal number, correctly rounded, and an `f` or `F` right behind it. No leading blanks, no `inf` or `nan`.
    bool parseFloat(float& result);
    /// Passes spaces, tabs, and line continuations: a backslash with all that follows up to and including a line end.
    void skipBlanks();

    const char* text;
    /// Offset of the cursor.
    std::uint32_t pos = 0;
    std::uint32_t size;
};

static_assert(sizeof(Parser) == 16);

/// A parser over the whole of `file`, which must outlive it.
/// Throws `Velmar::Exception` for a file of 4 GiB or more, which its offsets can't reach.
Parser parserOver(const MappedFile& file);
