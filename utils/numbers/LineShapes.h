#pragma once

#include "velmarcompiler.h"

#include "utils/numbers/Digits.h"
#include "utils/numbers/PlainFloats.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <vector>

namespace PlainFloats {

/// Scans three numbers for many lines, in half the instructions of `PlainFloats::scan`. The lines of a file have few
/// shapes: where the signs, the points, the exponents, the spaces and the line's end are. What follows from a shape is
/// remembered with it, so another line of the shape is only compared, shifted and divided.
class LineShapes {
  public:
    /// Reads three numbers that may have exponents. As `PlainFloats::scan`, or else `PlainFloats::scanWithExponents`.
    VELMAR_ALWAYS_INLINE const char* scan(const char* p, float (&numbers)[3]) {
        if (shapes.empty()) [[unlikely]]
            return scanBeforeTable(p, numbers);
        const Line line(p);
        const Shape& shape = shapes[slotOf(line.key)];
        if (shape.key != line.key || !line.hasTextOf(shape)) [[unlikely]]
            return scanOther(p, numbers);
        using namespace Details;
        const __m128i xy = _mm_unpacklo_epi64(digitsOf(p, shape.parts[0]), digitsOf(p, shape.parts[1]));
        const Digits::Four digits = Digits::join({xy}, {digitsOf(p, shape.parts[2])});
        const ThreeDoubles integers = {_mm_cvtepi32_pd(digits.numbers),
                                       _mm_cvtepi32_pd(_mm_srli_si128(digits.numbers, 8))};
        if (shape.has_exponents) return scaleByExponents(p, shape, integers, numbers);
        const __m128d first_two = _mm_div_pd(integers.first_two, _mm_loadu_pd(shape.divisors));
        const __m128d third = _mm_div_sd(integers.last, _mm_load_sd(shape.divisors + 2));
        storeTwo(_mm_cvtpd_ps(first_two), numbers);
        _mm_store_ss(numbers + 2, _mm_cvtpd_ps(third));
        return p + shape.end;
    }

    /// Skips three numbers that may have exponents of two digits. As `PlainFloats::pass`.
    VELMAR_ALWAYS_INLINE const char* pass(const char* p) {
        if (!shapes.empty()) [[likely]] {
            const Line line(p);
            const Shape& shape = shapes[slotOf(line.key)];
            if (shape.key == line.key && line.hasTextOf(shape)) [[likely]]
                return p + shape.end;
        }
        return passOther(p);
    }

  private:
    static constexpr std::size_t window = 48;
    static constexpr std::size_t block_size = 16;
    /// Between the indices of two exponents of one sign.
    static constexpr std::int32_t scale_step = Details::scaleIndex(1, 0) - Details::scaleIndex(0, 0);

    /// Where the digits of a number are, and how far they move to be the last ones of eight.
    struct Part {
        std::uint64_t whole_left;
        std::uint64_t whole_right;
        std::uint64_t fraction_left;
        std::uint32_t whole;
        std::uint32_t fraction;
        /// Where the exponent's two digits are, and the index of the scale as far as they don't change it.
        std::uint32_t exponent;
        std::int32_t scale;
        std::int32_t scale_step;
    };

    struct Shape {
        /// No line has it.
        static constexpr std::uint64_t no_key = 0;

        /// The bits of the bytes up to the line's end that aren't digits.
        std::uint64_t key = no_key;
        std::size_t end = 0;
        /// Those bytes, and a mask of them.
        std::uint8_t text[window] = {};
        std::uint8_t mask[window] = {};
        Part parts[3] = {};
        /// Without exponents.
        double divisors[3] = {};
        bool has_exponents = false;
    };

    static __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }

    struct Line {
        __m128i blocks[3];
        std::uint64_t key;

        VELMAR_ALWAYS_INLINE explicit Line(const char* p)
            : blocks{load(p), load(p + block_size), load(p + 2 * block_size)} {
            // Digits become the ten lowest signed numbers.
            const __m128i down = _mm_set1_epi8(static_cast<char>(0x80 - '0'));
            const __m128i after_digits = _mm_set1_epi8(static_cast<char>(0x80 + 10));
            const std::uint64_t digits =
                bitsOf([&](__m128i block) { return _mm_cmplt_epi8(_mm_add_epi8(block, down), after_digits); });
            // The first control character should be the line's end.
            const std::uint64_t controls =
                bitsOf([](__m128i block) { return _mm_cmplt_epi8(block, _mm_set1_epi8(' ')); });
            key = ~digits & (controls ^ (controls - 1));
        }

        template <class Find>
        VELMAR_ALWAYS_INLINE std::uint64_t bitsOf(Find find) const {
            const auto bits = [&](std::size_t i) {
                return std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(find(blocks[i])))};
            };
            return bits(0) | bits(1) << block_size | bits(2) << (2 * block_size);
        }

        VELMAR_ALWAYS_INLINE bool hasTextOf(const Shape& shape) const {
            const auto isEqual = [&](std::size_t i) {
                return _mm_cmpeq_epi8(_mm_and_si128(blocks[i], load(shape.mask + i * block_size)),
                                      load(shape.text + i * block_size));
            };
            return _mm_movemask_epi8(_mm_and_si128(_mm_and_si128(isEqual(0), isEqual(1)), isEqual(2))) == 0xFFFF;
        }
    };

    VELMAR_ALWAYS_INLINE static __m128i digitsOf(const char* p, const Part& part) {
        using Digits::loadLow;
        const __m128i whole = _mm_sll_epi64(loadLow(p + part.whole), loadLow(&part.whole_left));
        const __m128i fraction = _mm_sll_epi64(loadLow(p + part.fraction), loadLow(&part.fraction_left));
        return _mm_or_si128(_mm_srl_epi64(whole, loadLow(&part.whole_right)), fraction);
    }

    static std::size_t slotOf(std::uint64_t key) {
        // The upper bits of a product with the golden ratio depend on all bits of the key.
        return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15 >> (64 - slot_bits));
    }

    VELMAR_ALWAYS_INLINE static const char*
    scaleByExponents(const char* p, const Shape& shape, const Details::ThreeDoubles& integers, float (&numbers)[3]) {
        using namespace Details;
        const Scale* scales_of[3];
        for (std::size_t i = 0; i < 3; ++i) {
            const Part& part = shape.parts[i];
            const int magnitude = (p[part.exponent] - '0') * 10 + (p[part.exponent + 1] - '0');
            const auto index = static_cast<std::uint32_t>(part.scale + part.scale_step * magnitude);
            if (index >= scales.size()) return nullptr;
            scales_of[i] = &scales[index];
        }
        const auto first_two = [&](double Scale::*member) {
            return _mm_loadh_pd(_mm_load_sd(&(scales_of[0]->*member)), &(scales_of[1]->*member));
        };
        return storeScaled({first_two(&Scale::factor), _mm_load_sd(&scales_of[2]->factor)},
                           {first_two(&Scale::divisor), _mm_load_sd(&scales_of[2]->divisor)}, integers, numbers)
                   ? p + shape.end
                   : nullptr;
    }

    /// For few lines a table doesn't pay.
    VELMAR_NEVER_INLINE const char* scanBeforeTable(const char* p, float (&numbers)[3]) {
        constexpr std::uint32_t min_lines = 256;
        if (!is_of_no_use && ++num_lines == min_lines) shapes.resize(std::size_t{1} << slot_bits);
        return scanAny(p, numbers);
    }

    VELMAR_ALWAYS_INLINE const char* scanAny(const char* p, float (&numbers)[3]) {
        // Programs write all numbers in the same way, or those with exponents among others.
        const char* end = had_exponents ? PlainFloats::scanWithExponents(p, numbers) : PlainFloats::scan(p, numbers);
        if (end == nullptr) [[unlikely]] {
            end = had_exponents ? PlainFloats::scan(p, numbers) : PlainFloats::scanWithExponents(p, numbers);
            had_exponents = had_exponents || end != nullptr;
        }
        return end;
    }

    /// A line of a shape that isn't in the table.
    VELMAR_NEVER_INLINE const char* scanOther(const char* p, float (&numbers)[3]) {
        const char* const end = scanAny(p, numbers);
        if (end != nullptr && (*end == '\n' || *end == '\r')) learn(p, static_cast<std::size_t>(end - p));
        // Files that write numbers as short as they can have too many shapes.
        constexpr std::uint32_t sample = 1024;
        constexpr std::uintptr_t min_bytes = sample * std::uintptr_t{80};
        if (++num_others % sample == 0) {
            const auto place = reinterpret_cast<std::uintptr_t>(p);
            if (place - last_place < min_bytes) {
                is_of_no_use = true;
                shapes = {};
            }
            last_place = place;
        }
        return end;
    }

    VELMAR_NEVER_INLINE const char* passOther(const char* p) {
        float ignored[3];
        const char* const end = shapes.empty() ? scanBeforeTable(p, ignored) : scanOther(p, ignored);
        return end != nullptr ? end : PlainFloats::pass(p);
    }

    /// Enters the shape of three plain numbers with a line end after them, in place of another one.
    void learn(const char* p, std::size_t end) {
        if (end >= window) return;
        Shape shape;
        shape.key = Line(p).key;
        shape.end = end;
        for (std::size_t i = 0; i <= end; ++i) {
            if (Digits::isDigit(p[i])) continue;
            shape.text[i] = static_cast<std::uint8_t>(p[i]);
            shape.mask[i] = 0xFF;
        }
        std::size_t at = 0;
        for (std::size_t i = 0; i < 3; ++i, ++at) {
            const std::size_t negative = p[at] == '-' ? 1 : 0;
            at += negative;
            const std::size_t whole = at;
            at += countDigits(p + at);
            const std::size_t whole_digits = at - whole;
            const std::size_t fraction = p[at] == '.' ? at + 1 : at;
            const std::size_t decimals = p[at] == '.' ? countDigits(p + fraction) : 0;
            at = fraction + decimals;
            if (whole_digits + decimals > Details::ShortNumber::max_digits) return;
            Part& part = shape.parts[i];
            part = {Digits::shifts_to_end[whole_digits],
                    Digits::shifts_from_end[decimals],
                    Digits::shifts_to_end[decimals],
                    static_cast<std::uint32_t>(whole),
                    static_cast<std::uint32_t>(fraction),
                    0,
                    static_cast<std::int32_t>(Details::scaleIndex(-static_cast<int>(decimals), negative)),
                    0};
            shape.divisors[i] = Details::scales[static_cast<std::size_t>(part.scale)].divisor;
            if ((p[at] | 0x20) == 'e') {
                shape.has_exponents = true;
                part.scale_step = p[at + 1] == '-' ? -scale_step : scale_step;
                part.exponent = static_cast<std::uint32_t>(at + 2);
                at += 4;
            }
        }
        shapes[slotOf(shape.key)] = shape;
    }

    static std::size_t countDigits(const char* p) {
        std::size_t count = 0;
        while (Digits::isDigit(p[count]))
            ++count;
        return count;
    }

    static constexpr int slot_bits = 10;

    std::vector<Shape> shapes;
    std::uint32_t num_lines = 0;
    std::uint32_t num_others = 0;
    /// Of the line that was the last one of the last sample of others.
    std::uintptr_t last_place = 0;
    bool is_of_no_use = false;
    /// Whether lines had exponents so far.
    bool had_exponents = false;
};

} // namespace PlainFloats
