#include "scene/NumberText.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace Velmar {

namespace {

/// The significant digits of a number: d.ddd * 10^exponent, without zeros at the end.
struct Decimal {
    static constexpr std::size_t max_digits = 17;

    char digits[max_digits];
    std::size_t count;
    int exponent;
};

/// All powers of ten that are doubles.
constexpr std::array<double, 23> powers_of_ten = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr auto digit_pairs = [] {
    std::array<char, 200> pairs = {};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Writes eight digits, with zeros at the start.
void writeEight(char* to, std::uint32_t value) {
    const auto writePair = [](char* place, std::uint32_t pair) {
        std::memcpy(place, &digit_pairs[2 * std::size_t{pair}], 2);
    };
    const std::uint32_t upper = value / 10000;
    const std::uint32_t lower = value % 10000;
    writePair(to, upper / 100);
    writePair(to + 2, upper % 100);
    writePair(to + 4, lower / 100);
    writePair(to + 6, lower % 100);
}

/// Finds the digits of a positive number that has at most 15 of them, as nearly all numbers have that people write.
/// Returns false for all others.
///
/// A double is the nearest one to at most one decimal number of 15 digits, so the first such number found is the
/// shortest.
bool findShortDecimal(double value, Decimal& decimal) {
    constexpr int min_exponent = -7;
    constexpr int max_exponent = 14;
    constexpr int max_digits = 15;
    if (value < 1e-6 || value >= 1e15) return false;
    // The decimal exponent, or one less.
    const int binary_exponent = static_cast<int>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023;
    const int exponent = (binary_exponent * 1233) >> 12;
    static_assert(max_exponent - min_exponent < static_cast<int>(powers_of_ten.size()));
    const double power = powers_of_ten[static_cast<std::size_t>(max_exponent - exponent)];
    // At least 10^14, less than 2 * 10^15.
    const double shifted = value * power + 0.5;
    auto integer = static_cast<std::uint64_t>(shifted);
    // Both operands are exact, so this is the double that readers get.
    if (static_cast<double>(integer) / power != value) return false;

    char text[16];
    writeEight(text, static_cast<std::uint32_t>(integer / 100000000));
    writeEight(text + 8, static_cast<std::uint32_t>(integer % 100000000));
    std::size_t end = sizeof text;
    // Most numbers have few digits.
    if (integer % 100000000 == 0) end = 8;
    while (text[end - 1] == '0')
        --end;
    const std::size_t first = text[0] == '0' ? 1 : 0;
    if (end - first > max_digits) return false;
    decimal.count = end - first;
    std::memcpy(decimal.digits, text + first, max_digits);
    decimal.exponent = exponent + static_cast<int>(1 - first);
    return true;
}

template <class Float>
void findDecimal(Float value, Decimal& decimal) {
    char text[max_number_length];
    const char* const end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    decimal.digits[0] = text[0];
    const char* p = text + 1;
    if (*p == '.') ++p;
    const char* const rest = p;
    while (*p != 'e')
        ++p;
    const auto rest_count = static_cast<std::size_t>(p - rest);
    std::memcpy(decimal.digits + 1, rest, rest_count);
    decimal.count = 1 + rest_count;
    ++p;
    if (*p == '+') ++p;
    std::from_chars(p, end, decimal.exponent);
}

char* append(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

char* appendDigits(char* to, const Decimal& decimal, std::size_t first, std::size_t count) {
    std::memcpy(to, decimal.digits + first, count);
    return to + count;
}

char* appendZeros(char* to, std::size_t count) {
    std::memset(to, '0', count);
    return to + count;
}

/// From 10^-6 up to 10^21 without an exponent.
char* appendDecimal(char* to, const Decimal& decimal) {
    constexpr int min_plain_exponent = -6;
    constexpr int max_plain_exponent = 20;
    const int exponent = decimal.exponent;
    if (exponent < min_plain_exponent || exponent > max_plain_exponent) {
        to = appendDigits(to, decimal, 0, 1);
        if (decimal.count > 1) {
            *to++ = '.';
            to = appendDigits(to, decimal, 1, decimal.count - 1);
        }
        *to++ = 'e';
        constexpr int max_exponent_length = 4;
        return std::to_chars(to, to + max_exponent_length, exponent).ptr;
    }
    if (exponent < 0) {
        to = appendZeros(append(to, "0."), static_cast<std::size_t>(-exponent - 1));
        return appendDigits(to, decimal, 0, decimal.count);
    }
    const std::size_t whole_digits = static_cast<std::size_t>(exponent) + 1;
    if (decimal.count <= whole_digits)
        return appendZeros(appendDigits(to, decimal, 0, decimal.count), whole_digits - decimal.count);
    to = appendDigits(to, decimal, 0, whole_digits);
    *to++ = '.';
    return appendDigits(to, decimal, whole_digits, decimal.count - whole_digits);
}

template <class Float>
char* writeFloat(char* to, Float value) {
    // Negative zero too.
    if (value == 0) {
        *to = '0';
        return to + 1;
    }
    if (std::isnan(value)) return append(to, "NaN");
    if (value < 0) {
        *to++ = '-';
        value = -value;
    }
    if (std::isinf(value)) return append(to, "Inf");
    Decimal decimal;
    if constexpr (std::is_same_v<Float, double>) {
        if (!findShortDecimal(value, decimal)) findDecimal(value, decimal);
    } else {
        findDecimal(value, decimal);
    }
    return appendDecimal(to, decimal);
}

} // namespace

char* writeNumber(char* to, double value) {
    return writeFloat(to, value);
}

char* writeNumber(char* to, float value) {
    return writeFloat(to, value);
}

char* writeNumber(char* to, std::int32_t value) {
    return std::to_chars(to, to + max_number_length, value).ptr;
}

char* writeNumber(char* to, std::uint32_t value) {
    return std::to_chars(to, to + max_number_length, value).ptr;
}

std::string_view boolToString(bool value) {
    return value ? "true" : "false";
}

std::string int32ToString(std::int32_t value) {
    return std::string(NumberText(value).view());
}

std::string uint32ToString(std::uint32_t value) {
    return std::string(NumberText(value).view());
}

std::string doubleToString(double value) {
    return std::string(NumberText(value).view());
}

std::string floatToString(float value) {
    return std::string(NumberText(value).view());
}

} // namespace Velmar
