#include "utils/Parser.h"

#include "velmarexceptions.h"

#include "utils/MappedFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <double-conversion/string-to-double.h>
#include <limits>
#include <string>

namespace {

/// `FloatScanner::scan` if fewer bytes than its reach are left: it reads a copy that is followed by zeros.
const char* scanNearEnd(const char* first, std::size_t left, float& result) {
    std::array<char, FloatScanner::reach> copy = {};
    if (left == 0 || left > copy.size()) return nullptr;
    std::memcpy(copy.data(), first, left);
    const char* const end = FloatScanner::scan(copy.data(), result);
    return end == nullptr ? nullptr : first + (end - copy.data());
}

} // namespace

bool Parser::parseAnyFloat(float& result) {
    if (pos >= size) return false;
    const char* const first = text + pos;
    const std::size_t left = size - pos;
    if (const char* const end = scanNearEnd(first, left, result)) {
        pos += static_cast<std::uint32_t>(end - first);
        passFloatSuffix();
        return true;
    }

    using Converter = double_conversion::StringToDoubleConverter;
    constexpr double failure = std::numeric_limits<double>::quiet_NaN();
    static const Converter converter(Converter::ALLOW_TRAILING_JUNK, failure, failure, nullptr, nullptr);
    // The library counts in int. That doesn't change the value of a longer number, which depends on a few hundred
    // digits.
    const auto length = static_cast<int>(std::min<std::size_t>(left, std::numeric_limits<int>::max()));
    int processed = 0;
    const float value = converter.StringToFloat(first, length, &processed);
    if (std::isnan(value)) return false;
    result = value;
    pos += static_cast<std::uint32_t>(processed);
    passFloatSuffix();
    return true;
}

Parser parserOver(std::string_view text) {
    constexpr std::uint64_t limit = std::numeric_limits<std::uint32_t>::max();
    if (text.size() > limit)
        throw Velmar::Exception("File is too large to be parsed: " + std::to_string(text.size()) + " bytes, at most " +
                                std::to_string(limit) + " are possible.");
    return Parser(text.data(), static_cast<std::uint32_t>(text.size()));
}

Parser parserOver(const MappedFile& file) {
    return parserOver(file.getText());
}
