#pragma once

#include "utils/numbers/Digits.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// The fast path of `Parser::parseFloat`, for plain numbers, which are nearly all numbers in files.
namespace FloatScanner {

static_assert(std::endian::native == std::endian::little);

/// How many bytes from its start `scan` may read, whatever they are.
inline constexpr std::size_t reach = 32;

namespace Details {

inline constexpr int max_digits = 19;
inline constexpr int min_exponent = -37;
inline constexpr int max_exponent = 18;

/// 10^min_exponent to 10^max_exponent, each correctly rounded.
inline constexpr std::array<double, max_exponent - min_exponent + 1> powers_of_ten = {
    1e-37, 1e-36, 1e-35, 1e-34, 1e-33, 1e-32, 1e-31, 1e-30, 1e-29, 1e-28, 1e-27, 1e-26, 1e-25, 1e-24,
    1e-23, 1e-22, 1e-21, 1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10,
    1e-9,  1e-8,  1e-7,  1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,   1e1,   1e2,   1e3,   1e4,
    1e5,   1e6,   1e7,   1e8,   1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18};

inline constexpr std::array<std::uint64_t, 9> small_powers_of_ten = {1,      10,      100,      1000,     10000,
                                                                     100000, 1000000, 10000000, 100000000};

/// The decimal digits at the start of eight bytes: how many, and their value.
struct DigitRun {
    int count;
    std::uint64_t value;
};

inline DigitRun scanEight(const char* p) {
    std::uint64_t bytes = Digits::loadEight(p);
    // Digits become 0 to 9. After the first other byte the marks may be wrong, but only the first one counts.
    bytes ^= 0x3030303030303030;
    const std::uint64_t others = ((bytes + 0x7676767676767676) | bytes) & 0x8080808080808080;
    const int count = std::countr_zero(others) / 8;
    if (count == 0) return {0, 0};
    // The digits move to the last places, after leading zeros.
    return {count, Digits::join(bytes << (64 - 8 * count))};
}

} // namespace Details

/// Reads a decimal number at `p`: sign, digits with or without a point, exponent. Returns the place after it, or null
/// if it isn't sure of the correctly rounded value, which doesn't mean that there is no number.
/// `reach` bytes from `p` must be readable.
inline const char* scan(const char* p, float& result) {
    using namespace Details;

    const bool negative = *p == '-';
    p += negative || *p == '+';

    const char* const first_digit = p;
    std::uint64_t mantissa = 0;
    for (; Digits::isDigit(*p); ++p) {
        if (p - first_digit == max_digits) return nullptr;
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
    }
    auto digits = static_cast<int>(p - first_digit);

    int exponent = 0;
    if (*p == '.') {
        ++p;
        DigitRun run;
        do {
            run = scanEight(p);
            p += run.count;
            digits += run.count;
            exponent -= run.count;
            if (digits > max_digits) return nullptr;
            mantissa = mantissa * small_powers_of_ten[static_cast<std::size_t>(run.count)] + run.value;
        } while (run.count == 8);
    }
    if (digits == 0) return nullptr;

    if ((*p | 0x20) == 'e') {
        const char* q = p + 1;
        const bool exponent_negative = *q == '-';
        q += exponent_negative || *q == '+';
        // Without digits the letter isn't part of the number.
        if (Digits::isDigit(*q)) {
            const int tens = *q - '0';
            ++q;
            int written_exponent = tens;
            if (Digits::isDigit(*q)) {
                written_exponent = tens * 10 + (*q - '0');
                ++q;
                if (Digits::isDigit(*q)) return nullptr;
            }
            exponent += exponent_negative ? -written_exponent : written_exponent;
            p = q;
        }
    }
    if (exponent < min_exponent || exponent > max_exponent) return nullptr;

    // Three roundings, of mantissa, power and product, put this at most 3 units of its last place off the true value.
    // It rounds to the same float as the true value unless it is that near to the midpoint of two floats. The bounds
    // above keep it in the range of normal floats, or 0.
    const double value =
        static_cast<double>(mantissa) * powers_of_ten[static_cast<std::size_t>(exponent - min_exponent)];
    constexpr std::uint64_t dropped_bits = (std::uint64_t{1} << 29) - 1;
    constexpr std::uint64_t middle = std::uint64_t{1} << 28;
    constexpr std::uint64_t margin = 4;
    const std::uint64_t dropped = std::bit_cast<std::uint64_t>(value) & dropped_bits;
    if (dropped - (middle - margin) <= 2 * margin) return nullptr;

    const auto sign_bit = static_cast<std::uint32_t>(negative) << 31;
    result = std::bit_cast<float>(std::bit_cast<std::uint32_t>(static_cast<float>(value)) | sign_bit);
    return p;
}

} // namespace FloatScanner
