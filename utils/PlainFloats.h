#pragma once

#include "velmarcompiler.h"

#include "utils/Digits.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

/// Several numbers at once, written as most programs write them: one space between them, at most seven digits before
/// the point and eight behind it, no exponent. Each gets the float that `Parser::parseFloat` gives it.
namespace PlainFloats {

/// How many bytes from its start `scan` may look at.
inline constexpr std::size_t reach = 64;

namespace Details {

inline constexpr std::size_t most_whole_digits = 7;
inline constexpr std::size_t most_decimals = 8;

struct Number {
    Digits::Pair digits;
    /// The power of ten by which to divide, with the sign of the number.
    const double* divisor;
};

/// A walk over the numbers of one line by the places of the bytes that are no digits.
class Walk {
  public:
    Walk(const char* text, std::uint64_t others) : p(text), stops(others) {}

    /// Takes the number at the cursor. False for what isn't plain.
    VELMAR_ALWAYS_INLINE bool take(Number& number) {
        const std::size_t negative = p[at] == '-' ? 1 : 0;
        stops &= stops - negative;
        const std::size_t first = at + negative;
        at = takeStop();
        const std::size_t whole_digits = at - first;
        if (whole_digits - 1 >= most_whole_digits) return false;
        const std::size_t fraction = at + 1;
        std::size_t decimals = 0;
        if (p[at] == '.') {
            at = takeStop();
            decimals = at - fraction;
            if (decimals - 1 >= most_decimals) return false;
        }
        number.digits = Digits::makePair(p + first, whole_digits, p + fraction, decimals);
        number.divisor = &divisors[negative * (most_decimals + 1) + decimals];
        return true;
    }

    VELMAR_ALWAYS_INLINE bool takeBehindSpace(Number& number) { return p[at++] == ' ' && take(number); }

    bool atBlankOrLineEnd() const { return p[at] == '\n' || p[at] == ' ' || p[at] == '\r' || p[at] == '\t'; }

    const char* place() const { return p + at; }

  private:
    VELMAR_ALWAYS_INLINE std::size_t takeStop() {
        const std::size_t stop = Velmar::lowestBit(stops);
        stops &= stops - 1;
        return stop;
    }

    static constexpr std::array<double, 2 * (most_decimals + 1)> divisors = {
        1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, -1e0, -1e1, -1e2, -1e3, -1e4, -1e5, -1e6, -1e7, -1e8};

    const char* p;
    std::uint64_t stops;
    std::size_t at = 0;
};

/// The two numbers of which `halves` holds the digits before and behind the point, in the two lower places.
///
/// Up to the division everything is exact. Its result, a double, could round to another float than the true quotient q
/// only if it were the middle m of two floats and q another number. But for q in the range of 2^e, m is a multiple of
/// 2^(e-24) and q one of 10^-8, so they are at least 2^(e-24) * 10^-8 apart, which is more than the 2^(e-53) of the
/// rounding.
inline __m128 divide(Digits::Four halves, const double* first_divisor, const double* second_divisor) {
    const __m128d divisor = _mm_loadh_pd(_mm_load_sd(first_divisor), second_divisor);
    const __m128d power = _mm_andnot_pd(_mm_set1_pd(-0.0), divisor);
    const __m128d wholes = _mm_cvtepi32_pd(_mm_shuffle_epi32(halves.numbers, _MM_SHUFFLE(3, 1, 2, 0)));
    const __m128d fractions = _mm_cvtepi32_pd(_mm_shuffle_epi32(halves.numbers, _MM_SHUFFLE(2, 0, 3, 1)));
    return _mm_cvtpd_ps(_mm_div_pd(_mm_add_pd(_mm_mul_pd(wholes, power), fractions), divisor));
}

} // namespace Details

/// Reads two numbers at `p`, where the first one begins. Returns the place behind the second one, where a blank or a
/// line end stands, or null when one of them isn't plain; that says nothing of whether they are there. `reach` bytes
/// from `p` must be readable.
inline const char* scan(const char* p, float (&numbers)[2]) {
    using namespace Details;
    Walk walk(p, Digits::findOthers<32>(p));
    Number x;
    Number y;
    if (!walk.take(x) || !walk.takeBehindSpace(y) || !walk.atBlankOrLineEnd()) return nullptr;
    _mm_storel_pi(reinterpret_cast<__m64*>(numbers), divide(Digits::join(x.digits, y.digits), x.divisor, y.divisor));
    return walk.place();
}

/// As for two numbers.
inline const char* scan(const char* p, float (&numbers)[3]) {
    using namespace Details;
    Walk walk(p, Digits::findOthers<48>(p));
    Number x;
    Number y;
    Number z;
    if (!walk.take(x) || !walk.takeBehindSpace(y) || !walk.takeBehindSpace(z) || !walk.atBlankOrLineEnd())
        return nullptr;
    _mm_storel_pi(reinterpret_cast<__m64*>(numbers), divide(Digits::join(x.digits, y.digits), x.divisor, y.divisor));
    _mm_store_ss(numbers + 2, divide(Digits::join(z.digits, z.digits), z.divisor, z.divisor));
    return walk.place();
}

} // namespace PlainFloats
