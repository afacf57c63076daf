#pragma once

#include "utils/numbers/FloatScanner.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

class MappedFile;

/// A cursor over bytes that it doesn't own, usually a mapped file. It allocates nothing: tokens are views and numbers
/// are read in place. An operation that returns false leaves the cursor where it was.
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
    /// A decimal number, correctly rounded, and an `f` or `F` directly after it. No leading blanks, no `inf` or `nan`.
    bool parseFloat(float& result);
    /// Skips spaces, tabs, and line continuations: a backslash with all that follows up to and including a line end.
    void skipBlanks();
    /// Skips spaces and tabs alone.
    void skipSpacesAndTabs();
    /// Skips everything up to and including the next line end, which is LF, CR or CR LF.
    void advancePastLineEnd();

    static bool isLetter(char c) { return static_cast<unsigned char>((c | 0x20) - 'a') < 26; }
    static bool isDigit(char c) { return static_cast<unsigned char>(c - '0') < 10; }
    static bool isLineEnd(char c) { return c == '\n' || c == '\r'; }
    static bool isBlank(char c) { return c == ' ' || c == '\t'; }

    const char* text;
    /// Offset of the cursor.
    std::uint32_t pos = 0;
    std::uint32_t size;

  private:
    bool parseAnyFloat(float& result);

    void passFloatSuffix() {
        if (pos < size && (text[pos] | 0x20) == 'f') ++pos;
    }

    /// The token from `first` to the cursor; whether it isn't empty.
    bool takeFrom(std::uint32_t first, Token& token) const {
        token = {text + first, pos - first};
        return pos != first;
    }
};

static_assert(sizeof(Parser) == 16);

/// A parser over the whole of `file`, which must outlive it.
/// Throws `Velmar::Exception` for a file of 4 GiB or more, which its offsets can't reach.
Parser parserOver(const MappedFile& file);
Parser parserOver(std::string_view text);

inline bool Parser::parseAlpha(Token& token) {
    const std::uint32_t first = pos;
    while (pos < size && isLetter(text[pos]))
        ++pos;
    return takeFrom(first, token);
}

inline bool Parser::parseIdentifier(Token& token) {
    const std::uint32_t first = pos;
    if (pos < size && !isDigit(text[pos]))
        while (pos < size && (isLetter(text[pos]) || isDigit(text[pos]) || text[pos] == '_'))
            ++pos;
    return takeFrom(first, token);
}

inline bool Parser::parseNonBlankToken(Token& token) {
    const std::uint32_t first = pos;
    while (pos < size && !isBlank(text[pos]) && !isLineEnd(text[pos]))
        ++pos;
    return takeFrom(first, token);
}

inline bool Parser::parseString(std::string_view literal) {
    if (literal.empty()) return true;
    if (literal.size() > size - pos || std::memcmp(text + pos, literal.data(), literal.size()) != 0) return false;
    pos += static_cast<std::uint32_t>(literal.size());
    return true;
}

inline bool Parser::parseInt(std::int32_t& result) {
    constexpr std::uint32_t max_before_digit = 0xCCCCCCC;
    constexpr std::uint32_t max_magnitude = 0x80000000;

    std::uint32_t p = pos;
    if (p >= size) return false;
    const bool negative = text[p] == '-';
    if (negative || text[p] == '+') ++p;

    const std::uint32_t first_digit = p;
    std::uint32_t magnitude = 0;
    for (; p < size && isDigit(text[p]); ++p) {
        if (magnitude > max_before_digit) return false;
        magnitude = magnitude * 10 + static_cast<std::uint32_t>(text[p] - '0');
    }
    if (p == first_digit || magnitude > max_magnitude - (negative ? 0 : 1)) return false;

    result = static_cast<std::int32_t>(negative ? 0 - magnitude : magnitude);
    pos = p;
    return true;
}

inline bool Parser::parseFloat(float& result) {
    if (size - pos >= FloatScanner::reach) [[likely]] {
        const char* const first = text + pos;
        if (const char* const end = FloatScanner::scan(first, result)) [[likely]] {
            pos += static_cast<std::uint32_t>(end - first);
            passFloatSuffix();
            return true;
        }
    }
    return parseAnyFloat(result);
}

inline void Parser::skipBlanks() {
    while (pos < size) {
        const char c = text[pos];
        if (isBlank(c))
            ++pos;
        else if (c == '\\')
            advancePastLineEnd();
        else
            return;
    }
}

inline void Parser::skipSpacesAndTabs() {
    while (pos < size && isBlank(text[pos]))
        ++pos;
}

inline void Parser::advancePastLineEnd() {
    while (pos < size && !isLineEnd(text[pos]))
        ++pos;
    if (pos == size) return;
    const bool may_be_pair = text[pos] == '\r';
    ++pos;
    if (may_be_pair && pos < size && text[pos] == '\n') ++pos;
}
