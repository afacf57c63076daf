#include "import/ValidText.h"

#include <cstdint>

namespace Velmar {

namespace {

constexpr char32_t replacement = 0xFFFD;

/// Windows-1252 from 0x80 to 0x9F; the five bytes that it leaves free are no characters.
constexpr char32_t windows_1252[32] = {
    0x20AC, replacement, 0x201A,      0x0192, 0x201E,      0x2026,      0x2020, 0x2021,      0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152,      replacement, 0x017D, replacement, replacement, 0x2018, 0x2019,      0x201C, 0x201D, 0x2022,
    0x2013, 0x2014,      0x02DC,      0x2122, 0x0161,      0x203A,      0x0153, replacement, 0x017E, 0x0178};

struct Decoded {
    char32_t character = 0;
    /// 0: the bytes aren't UTF-8.
    std::size_t length = 0;
};

/// The first character of `text`, which isn't empty.
Decoded decodeUTF8(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    if (first < 0x80) return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return {};
    char32_t character = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return {};
        character = (character << 6U) | (byte(i) & 0x3FU);
    }
    constexpr char32_t first_of_length[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < first_of_length[length] || character > 0x10FFFF || is_surrogate) return {};
    return {character, length};
}

/// The production "Char" of https://www.w3.org/TR/xml/#charsets.
bool isAllowed(char32_t character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

void append(std::string& text, char32_t character) {
    const auto add = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        add(character);
        return;
    }
    if (character < 0x800) {
        add(0xC0 | (character >> 6U));
    } else if (character < 0x10000) {
        add(0xE0 | (character >> 12U));
        add(0x80 | ((character >> 6U) & 0x3FU));
    } else {
        add(0xF0 | (character >> 18U));
        add(0x80 | ((character >> 12U) & 0x3FU));
        add(0x80 | ((character >> 6U) & 0x3FU));
    }
    add(0x80 | (character & 0x3FU));
}

} // namespace

std::size_t countValidBytes(std::string_view text) {
    std::size_t valid = 0;
    while (valid < text.size()) {
        const auto byte = static_cast<unsigned char>(text[valid]);
        if (byte >= 0x20 && byte < 0x80) {
            ++valid;
            continue;
        }
        const Decoded next = decodeUTF8(text.substr(valid, 4));
        if (next.length == 0 || !isAllowed(next.character)) break;
        valid += next.length;
    }
    return valid;
}

bool isValidText(std::string_view text) {
    return countValidBytes(text) == text.size();
}

std::string toValidText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t valid = countValidBytes(text.substr(at));
        result.append(text.substr(at, valid));
        at += valid;
        if (at == text.size()) break;
        if (const Decoded next = decodeUTF8(text.substr(at, 4)); next.length != 0) {
            append(result, replacement);
            at += next.length;
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[at]);
        append(result, byte < 0xA0 ? windows_1252[byte - 0x80] : byte);
        ++at;
    }
    return result;
}

} // namespace Velmar
