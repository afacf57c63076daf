#pragma once

#include "velmarcompiler.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

/// Decimal digits of text, many at a time. The bytes after them don't matter, but must be readable.
namespace Digits {

static_assert(std::endian::native == std::endian::little);

inline bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') <= 9;
}

/// The value of eight digits, the first one in the lowest byte. A byte of zero counts as the digit 0.
inline std::uint64_t join(std::uint64_t digits) {
    // Pairs, fours and eights are joined in turn.
    digits &= 0x0F0F0F0F0F0F0F0F;
    digits = (digits * (1 + (10 << 8)) >> 8) & 0x00FF00FF00FF00FF;
    digits = (digits * (1 + (100 << 16)) >> 16) & 0x0000FFFF0000FFFF;
    return digits * (1 + (std::uint64_t{10000} << 32)) >> 32;
}

inline std::uint64_t loadEight(const char* p) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, p, sizeof bytes);
    return bytes;
}

/// How far digits move to be the last ones of eight, by their count.
inline constexpr std::array<std::uint64_t, 9> shifts_to_end = {64, 56, 48, 40, 32, 24, 16, 8, 0};
/// How far eight digits move to leave so many after them.
inline constexpr std::array<std::uint64_t, 9> shifts_from_end = {0, 8, 16, 24, 32, 40, 48, 56, 64};

VELMAR_ALWAYS_INLINE __m128i loadLow(const void* p) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(p));
}

/// `count` digits, from 0 to 8, as the last ones of eight; zeros are before them. Eight bytes are read.
VELMAR_ALWAYS_INLINE __m128i loadDigits(const char* p, std::size_t count) {
    return _mm_sll_epi64(loadLow(p), loadLow(&shifts_to_end[count]));
}

/// `digits`, which are the last ones of eight, with `count` more after them.
VELMAR_ALWAYS_INLINE __m128i appendDigits(__m128i digits, const char* p, std::size_t count) {
    return _mm_or_si128(_mm_srl_epi64(digits, loadLow(&shifts_from_end[count])), loadDigits(p, count));
}

/// The digits of two numbers of up to eight digits each.
struct Pair {
    __m128i digits;
};

/// The `first_count` digits at `first` and the `second_count` digits at `second`; each count is from 0 to 8, and no
/// digits make a 0. Eight bytes are read at each place.
VELMAR_ALWAYS_INLINE Pair makePair(const char* first, std::size_t first_count, const char* second,
                                   std::size_t second_count) {
    return {_mm_unpacklo_epi64(loadDigits(first, first_count), loadDigits(second, second_count))};
}

/// The four numbers of two pairs, in order.
struct Four {
    __m128i numbers;

    template <int i>
    std::uint32_t get() const {
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(numbers, i)));
    }
    void store(std::uint32_t (&to)[4]) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), numbers); }
    /// Each one less, modulo 2^32.
    Four minusOne() const { return {_mm_add_epi32(numbers, _mm_set1_epi32(-1))}; }
};

VELMAR_ALWAYS_INLINE Four join(Pair a, Pair b) {
    const auto joinFours = [](__m128i digits) {
        digits = _mm_and_si128(digits, _mm_set1_epi8(0x0F));
        // The product with 10 * 256 + 1 has 10 times the first digit, plus the second one, in its upper byte.
        const __m128i twos = _mm_srli_epi16(_mm_mullo_epi16(digits, _mm_set1_epi16(10 * 256 + 1)), 8);
        return _mm_madd_epi16(twos, _mm_set1_epi32(1 << 16 | 100));
    };
    return {_mm_madd_epi16(_mm_packs_epi32(joinFours(a.digits), joinFours(b.digits)), _mm_set1_epi32(1 << 16 | 10000))};
}

/// Bit i is set if p[i] is not a digit. `bytes`, which is 16, 32 or 48, bytes are read; higher bits are set.
template <int bytes>
VELMAR_ALWAYS_INLINE std::uint64_t findOthers(const char* p) {
    const auto findDigits = [p](int offset) {
        // Digits become the ten lowest signed numbers.
        const __m128i down = _mm_set1_epi8(static_cast<char>(0x80 - '0'));
        const __m128i after_digits = _mm_set1_epi8(static_cast<char>(0x80 + 10));
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + offset));
        const __m128i is_digit = _mm_cmplt_epi8(_mm_add_epi8(block, down), after_digits);
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(is_digit))) << offset;
    };
    std::uint64_t digits = findDigits(0);
    if constexpr (bytes > 16) digits |= findDigits(16);
    if constexpr (bytes > 32) digits |= findDigits(32);
    return ~digits;
}

} // namespace Digits
