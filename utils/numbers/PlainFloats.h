#pragma once

#include "velmarcompiler.h"

#include "utils/numbers/Digits.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

/// Several numbers at once, written as most programs write them: one space between them, at most seven digits before
/// the point and eight after it. Each gets the float that `Parser::parseFloat` gives it.
///
/// All functions take the place of the first number and return the place after the last one, which is a blank or a line
/// end, or null if one of the numbers isn't plain, which doesn't mean that there are no numbers.
namespace PlainFloats {

/// How many bytes from their start the functions may read, whatever they are.
inline constexpr std::size_t reach = 64;

namespace Details {

inline constexpr std::size_t max_whole_digits = 7;
inline constexpr std::size_t max_decimals = 8;

/// 10^0 to 10^22, the powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> powers_of_ten = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
inline constexpr int max_exponent = 22;

/// Factor and divisor for the digits of a number without its point; one of the two is 1 or -1.
struct Scale {
    double factor;
    double divisor;
};

constexpr std::size_t scaleIndex(int exponent, std::size_t negative) {
    return static_cast<std::size_t>(exponent + max_exponent) * 2 + negative;
}

inline constexpr auto scales = [] {
    std::array<Scale, scaleIndex(max_exponent, 1) + 1> result = {};
    for (int exponent = -max_exponent; exponent <= max_exponent; ++exponent) {
        const double factor = exponent > 0 ? powers_of_ten[static_cast<std::size_t>(exponent)] : 1;
        const double divisor = exponent < 0 ? powers_of_ten[static_cast<std::size_t>(-exponent)] : 1;
        result[scaleIndex(exponent, 0)] = {factor, divisor};
        result[scaleIndex(exponent, 1)] = {factor, -divisor};
    }
    return result;
}();

struct Number {
    Digits::Pair digits;
    std::size_t decimals;
    std::size_t negative;
    int exponent;
};

enum class Exponents { refused, taken };

/// A number whose digits before and after the point are eight at most. Its parts are in registers of their own: to keep
/// the places of several numbers would take more registers than there are.
struct ShortNumber {
    static constexpr std::size_t max_digits = 8;

    /// In the lower half.
    __m128i digits;
    __m128d factor;
    __m128d divisor;
};

/// Visits the numbers of one line by the places of the bytes that aren't digits.
template <Exponents exponents>
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
        if (whole_digits - 1 >= max_whole_digits) return false;
        const std::size_t fraction = at + 1;
        std::size_t decimals = 0;
        if (p[at] == '.') {
            at = takeStop();
            decimals = at - fraction;
            if (decimals - 1 >= max_decimals) return false;
        }
        number.digits = Digits::makePair(p + first, whole_digits, p + fraction, decimals);
        number.decimals = decimals;
        number.negative = negative;
        number.exponent = 0;
        if constexpr (exponents == Exponents::taken) {
            if ((p[at] | 0x20) == 'e') return takeExponent(number.exponent);
        }
        return true;
    }

    /// The same for a number of few digits; it refuses more.
    VELMAR_ALWAYS_INLINE bool take(ShortNumber& number) {
        const std::size_t negative = p[at] == '-' ? 1 : 0;
        stops &= stops - negative;
        const std::size_t first = at + negative;
        at = takeStop();
        const std::size_t whole_digits = at - first;
        if (whole_digits - 1 >= max_whole_digits) return false;
        number.digits = Digits::loadDigits(p + first, whole_digits);
        int exponent = 0;
        if (p[at] == '.') {
            const std::size_t fraction = at + 1;
            at = takeStop();
            const std::size_t decimals = at - fraction;
            if (decimals - 1 >= ShortNumber::max_digits - whole_digits) return false;
            number.digits = Digits::appendDigits(number.digits, p + fraction, decimals);
            exponent = -static_cast<int>(decimals);
        }
        if constexpr (exponents == Exponents::taken) {
            if ((p[at] | 0x20) == 'e') {
                int written_exponent = 0;
                if (!takeExponent(written_exponent)) return false;
                exponent += written_exponent;
                if (static_cast<unsigned>(exponent + max_exponent) > static_cast<unsigned>(2 * max_exponent))
                    return false;
            }
        }
        const Scale& scale = scales[scaleIndex(exponent, negative)];
        if constexpr (exponents == Exponents::taken) number.factor = _mm_load_sd(&scale.factor);
        number.divisor = _mm_load_sd(&scale.divisor);
        return true;
    }

    template <class AnyNumber>
    VELMAR_ALWAYS_INLINE bool takeAfterSpace(AnyNumber& number) {
        return p[at++] == ' ' && take(number);
    }

    bool atBlankOrLineEnd() const { return p[at] == '\n' || p[at] == ' ' || p[at] == '\r' || p[at] == '\t'; }

    const char* place() const { return p + at; }

  private:
    /// A sign and two digits.
    VELMAR_ALWAYS_INLINE bool takeExponent(int& exponent) {
        const char* const sign = p + takeStop();
        if (sign != p + at + 1 || (*sign != '-' && *sign != '+')) return false;
        at = takeStop();
        if (p + at != sign + 3) return false;
        const int magnitude = (sign[1] - '0') * 10 + (sign[2] - '0');
        exponent = *sign == '-' ? -magnitude : magnitude;
        return true;
    }

    VELMAR_ALWAYS_INLINE std::size_t takeStop() {
        const std::size_t stop = Velmar::lowestBit(stops);
        stops &= stops - 1;
        return stop;
    }

    const char* p;
    std::uint64_t stops;
    std::size_t at = 0;
};

/// The digits of two numbers as integers, which are exact: they have 15 digits at most. `halves` holds those before and
/// after the point, in the two lower places.
inline __m128d joinHalves(Digits::Four halves, const Number& a, const Number& b) {
    const __m128d power = _mm_loadh_pd(_mm_load_sd(&powers_of_ten[a.decimals]), &powers_of_ten[b.decimals]);
    const __m128d wholes = _mm_cvtepi32_pd(_mm_shuffle_epi32(halves.numbers, _MM_SHUFFLE(3, 1, 2, 0)));
    const __m128d fractions = _mm_cvtepi32_pd(_mm_shuffle_epi32(halves.numbers, _MM_SHUFFLE(2, 0, 3, 1)));
    return _mm_add_pd(_mm_mul_pd(wholes, power), fractions);
}

/// Two numbers without exponents.
///
/// The only rounding before the last is that of the division. Its result, a double, could round to another float than
/// the true quotient q only if it were the middle m of two floats and q another number. But for q in the range of 2^e,
/// m is a multiple of 2^(e-24) and q one of 10^-8, so they are at least 2^(e-24) * 10^-8 apart, which is more than the
/// 2^(e-53) of the rounding.
inline __m128 valuesOf(Digits::Four halves, const Number& a, const Number& b) {
    const auto divisor = [](const Number& number) {
        return &scales[scaleIndex(-static_cast<int>(number.decimals), number.negative)].divisor;
    };
    const __m128d divisors = _mm_loadh_pd(_mm_load_sd(divisor(a)), divisor(b));
    return _mm_cvtpd_ps(_mm_div_pd(joinHalves(halves, a, b), divisors));
}

/// Whether one of two quotients may lie so near to the middle of two floats that its double doesn't determine to which
/// it rounds.
VELMAR_ALWAYS_INLINE bool isNearMiddle(__m128d doubles) {
    const __m128i dropped_bits = _mm_and_si128(_mm_castpd_si128(doubles), _mm_set1_epi32((1 << 29) - 1));
    const __m128i is_middle = _mm_cmpeq_epi32(dropped_bits, _mm_set1_epi32(1 << 28));
    constexpr int lower_words = 0x0F0F;
    return (_mm_movemask_epi8(is_middle) & lower_words) != 0;
}

/// Two numbers with exponents. False when one of them has too large an exponent, or may lie so near to the middle of
/// two floats that its double doesn't determine to which it rounds.
inline bool valuesOf(Digits::Four halves, const Number& a, const Number& b, __m128& values) {
    const int exponent_a = a.exponent - static_cast<int>(a.decimals);
    const int exponent_b = b.exponent - static_cast<int>(b.decimals);
    constexpr auto range = static_cast<unsigned>(2 * max_exponent);
    if (static_cast<unsigned>(exponent_a + max_exponent) > range ||
        static_cast<unsigned>(exponent_b + max_exponent) > range)
        return false;
    const Scale& scale_a = scales[scaleIndex(exponent_a, a.negative)];
    const Scale& scale_b = scales[scaleIndex(exponent_b, b.negative)];
    const __m128d factors = _mm_loadh_pd(_mm_load_sd(&scale_a.factor), &scale_b.factor);
    const __m128d divisors = _mm_loadh_pd(_mm_load_sd(&scale_a.divisor), &scale_b.divisor);
    // Of product and quotient only one rounds.
    const __m128d doubles = _mm_div_pd(_mm_mul_pd(joinHalves(halves, a, b), factors), divisors);
    values = _mm_cvtpd_ps(doubles);

    return !isNearMiddle(doubles);
}

inline void storeTwo(__m128 values, float* numbers) {
    _mm_storel_pi(reinterpret_cast<__m64*>(numbers), values);
}

template <Exponents exponents, class AnyNumber>
VELMAR_ALWAYS_INLINE bool takeThree(Walk<exponents>& walk, AnyNumber& x, AnyNumber& y, AnyNumber& z) {
    return walk.take(x) && walk.takeAfterSpace(y) && walk.takeAfterSpace(z) && walk.atBlankOrLineEnd();
}

struct ThreeDoubles {
    __m128d first_two;
    __m128d last;
};

/// Integers times factors, or by divisors. False when one of them may lie so near to the middle of two floats that its
/// double doesn't determine to which it rounds.
VELMAR_ALWAYS_INLINE bool storeScaled(const ThreeDoubles& factors, const ThreeDoubles& divisors,
                                      const ThreeDoubles& integers, float (&numbers)[3]) {
    // Of product and quotient only one rounds.
    const __m128d first_two = _mm_div_pd(_mm_mul_pd(integers.first_two, factors.first_two), divisors.first_two);
    const __m128d third = _mm_div_sd(_mm_mul_sd(integers.last, factors.last), divisors.last);
    if (isNearMiddle(first_two) || isNearMiddle(third)) return false;
    storeTwo(_mm_cvtpd_ps(first_two), numbers);
    _mm_store_ss(numbers + 2, _mm_cvtpd_ps(third));
    return true;
}

/// The numbers as they are written without point and exponent.
VELMAR_ALWAYS_INLINE ThreeDoubles join(const ShortNumber& x, const ShortNumber& y, const ShortNumber& z) {
    const Digits::Four integers = Digits::join({_mm_unpacklo_epi64(x.digits, y.digits)}, {z.digits});
    return {_mm_cvtepi32_pd(integers.numbers), _mm_cvtepi32_pd(_mm_srli_si128(integers.numbers, 8))};
}

/// Any two plain numbers without exponents.
VELMAR_NEVER_INLINE inline const char* scanLong(const char* p, float (&numbers)[2]) {
    Walk<Exponents::refused> walk(p, Digits::findOthers<32>(p));
    Number x;
    Number y;
    if (!walk.take(x) || !walk.takeAfterSpace(y) || !walk.atBlankOrLineEnd()) return nullptr;
    storeTwo(valuesOf(Digits::join(x.digits, y.digits), x, y), numbers);
    return walk.place();
}

/// Any three plain numbers without exponents.
VELMAR_NEVER_INLINE inline const char* scanLong(const char* p, float (&numbers)[3]) {
    Walk<Exponents::refused> walk(p, Digits::findOthers<48>(p));
    Number x;
    Number y;
    Number z;
    if (!takeThree(walk, x, y, z)) return nullptr;
    storeTwo(valuesOf(Digits::join(x.digits, y.digits), x, y), numbers);
    _mm_store_ss(numbers + 2, valuesOf(Digits::join(z.digits, z.digits), z, z));
    return walk.place();
}

/// Any three plain numbers.
VELMAR_NEVER_INLINE inline const char* scanLongWithExponents(const char* p, float (&numbers)[3]) {
    Walk<Exponents::taken> walk(p, Digits::findOthers<48>(p));
    Number x;
    Number y;
    Number z;
    if (!takeThree(walk, x, y, z)) return nullptr;
    __m128 first_two;
    __m128 third;
    if (!valuesOf(Digits::join(x.digits, y.digits), x, y, first_two) ||
        !valuesOf(Digits::join(z.digits, z.digits), z, z, third))
        return nullptr;
    storeTwo(first_two, numbers);
    _mm_store_ss(numbers + 2, third);
    return walk.place();
}

template <Exponents exponents>
VELMAR_ALWAYS_INLINE const char* scanThree(const char* p, float (&numbers)[3]) {
    constexpr bool has_factors = exponents == Exponents::taken;
    Walk<exponents> walk(p, Digits::findOthers<48>(p));
    ShortNumber x;
    ShortNumber y;
    ShortNumber z;
    if (!takeThree(walk, x, y, z)) return has_factors ? scanLongWithExponents(p, numbers) : scanLong(p, numbers);
    const ThreeDoubles integers = join(x, y, z);
    const ThreeDoubles divisors = {_mm_unpacklo_pd(x.divisor, y.divisor), z.divisor};
    if constexpr (has_factors) {
        if (!storeScaled({_mm_unpacklo_pd(x.factor, y.factor), z.factor}, divisors, integers, numbers)) return nullptr;
    } else {
        storeTwo(_mm_cvtpd_ps(_mm_div_pd(integers.first_two, divisors.first_two)), numbers);
        _mm_store_ss(numbers + 2, _mm_cvtpd_ps(_mm_div_sd(integers.last, divisors.last)));
    }
    return walk.place();
}

} // namespace Details

/// Reads two numbers without exponents.
VELMAR_ALWAYS_INLINE const char* scan(const char* p, float (&numbers)[2]) {
    using namespace Details;
    Walk<Exponents::refused> walk(p, Digits::findOthers<32>(p));
    ShortNumber x;
    ShortNumber y;
    if (!walk.take(x) || !walk.takeAfterSpace(y) || !walk.atBlankOrLineEnd()) return scanLong(p, numbers);
    const ThreeDoubles integers = join(x, y, y);
    storeTwo(_mm_cvtpd_ps(_mm_div_pd(integers.first_two, _mm_unpacklo_pd(x.divisor, y.divisor))), numbers);
    return walk.place();
}

/// Reads three numbers without exponents.
VELMAR_ALWAYS_INLINE const char* scan(const char* p, float (&numbers)[3]) {
    return Details::scanThree<Details::Exponents::refused>(p, numbers);
}

/// Reads three numbers that may have exponents of two digits.
VELMAR_ALWAYS_INLINE const char* scanWithExponents(const char* p, float (&numbers)[3]) {
    return Details::scanThree<Details::Exponents::taken>(p, numbers);
}

/// Skips three numbers that may have exponents of two digits.
inline const char* pass(const char* p) {
    using namespace Details;
    Walk<Exponents::taken> walk(p, Digits::findOthers<48>(p));
    Number x;
    Number y;
    Number z;
    return takeThree(walk, x, y, z) ? walk.place() : nullptr;
}

} // namespace PlainFloats
