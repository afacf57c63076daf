#pragma once

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

/// The digits of two numbers of up to eight digits each.
struct Pair {
    __m128i digits;
};

/// The `first_count` digits at `first` and the `second_count` digits at `second`; each count is from 0 to 8, and no
/// digits make a 0. Eight bytes are read at each place.
inline Pair makePair(const char* first, std::size_t first_count, const char* second, std::size_t second_count) {
    // How far the digits move to follow leading zeros.
    static constexpr std::array<std::uint64_t, 9> shifts = {64, 56, 48, 40, 32, 24, 16, 8, 0};
    const auto load = [](const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); };
    return {_mm_unpacklo_epi64(_mm_sll_epi64(load(first), load(&shifts[first_count])),
                               _mm_sll_epi64(load(second), load(&shifts[second_count])))};
}

/// The four numbers of two pairs, in order.
struct Four {
    __m128i numbers;

    template <int i>
    std::uint32_t get() const {
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi32(numbers, i)));
    }
    /// Each one less, modulo 2^32.
    Four minusOne() const { return {_mm_add_epi32(numbers, _mm_set1_epi32(-1))}; }
};

inline Four join(Pair a, Pair b) {
    const auto joinFours = [](__m128i digits) {
        digits = _mm_and_si128(digits, _mm_set1_epi8(0x0F));
        const __m128i tens = _mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xFF)), _mm_set1_epi16(10));
        const __m128i twos = _mm_add_epi16(tens, _mm_srli_epi16(digits, 8));
        return _mm_madd_epi16(twos, _mm_set1_epi32(1 << 16 | 100));
    };
    return {_mm_madd_epi16(_mm_packs_epi32(joinFours(a.digits), joinFours(b.digits)), _mm_set1_epi32(1 << 16 | 10000))};
}

/// Bit i is set if p[i] is not a digit. `bytes`, which is 16, 32 or 48, bytes are read; higher bits are set.
template <int bytes>
inline std::uint64_t findOthers(const char* p) {
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
