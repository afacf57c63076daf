#pragma once

#include "velmarcompiler.h"

#include "mesh/PlyParts.h"
#include "utils/numbers/Digits.h"
#include "utils/numbers/FloatScanner.h"
#include "utils/numbers/PlainFloats.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

namespace Velmar::PlyParts {

/// The fast path for the body of a PLY file that is text.
class TextBody {
  public:
    TextBody(std::string_view body, Target& filled) : p(body.data()), target(filled) {
        size_left_at_start = body.size();
        if (body.size() < margin)
            continueInTail(body.size());
        else
            last_far_from_end = p + (body.size() - margin);
    }
    TextBody(const TextBody&) = delete;
    TextBody& operator=(const TextBody&) = delete;

    bool readVertices(const Plan& plan) {
        const PlyElement& vertices = *plan.vertices;
        target.tryReserveVertices(maxInstances(vertices, size_left_at_start, 2 * vertices.properties.size()));
        float numbers[4] = {};
        const std::vector<Step> steps = stepsOf(vertices, plan);
        for (long i = 0; i < vertices.count; ++i) {
            for (const Step& step : steps)
                if (!take(step, numbers)) return false;
            target.addVertex(numbers[0], numbers[1], numbers[2]);
        }
        return true;
    }

    bool readFaces(const Plan& plan) {
        const std::size_t min_size = 2 * (plan.faces->properties.size() + 3);
        target.tryReserveTriangles(maxInstances(*plan.faces, size_left_at_start, min_size));
        return takeAll(*plan.faces, stepsOf(*plan.faces, plan));
    }

    bool pass(const PlyElement& element) { return takeAll(element, stepsOf(element, {})); }

  private:
    enum class Kind : std::uint8_t { three_floats, one_float, integer, list, face };

    /// What is taken of a record at once.
    struct Step {
        Kind kind;
        PlyType type;
        PlyType length_type;
        /// The places of the floats.
        std::array<std::uint8_t, 3> targets;
    };

    /// The place of floats that are ignored.
    static constexpr std::uint8_t ignored = 3;

    static std::vector<Step> stepsOf(const PlyElement& element, const Plan& plan) {
        const auto& properties = element.properties;
        const auto isFloatAt = [&](std::size_t i) {
            return i < properties.size() && !properties[i].is_list && isFloat(properties[i].type);
        };
        const auto targetOf = [&](std::size_t i) {
            const auto axis = std::find(plan.axes.begin(), plan.axes.end(), i) - plan.axes.begin();
            return &element == plan.vertices ? static_cast<std::uint8_t>(axis) : ignored;
        };
        std::vector<Step> steps;
        for (std::size_t i = 0; i < properties.size(); ++i) {
            Step step = {Kind::integer, properties[i].type, properties[i].length_type, {}};
            if (properties[i].is_list) {
                step.kind = &element == plan.faces && i == plan.indices ? Kind::face : Kind::list;
            } else if (isFloatAt(i) && isFloatAt(i + 1) && isFloatAt(i + 2)) {
                step.kind = Kind::three_floats;
                step.targets = {targetOf(i), targetOf(i + 1), targetOf(i + 2)};
                i += 2;
            } else if (isFloatAt(i)) {
                step.kind = Kind::one_float;
                step.targets[0] = targetOf(i);
            }
            steps.push_back(step);
        }
        return steps;
    }

    bool takeAll(const PlyElement& element, const std::vector<Step>& steps) {
        float numbers[4];
        for (long i = 0; i < element.count; ++i)
            for (const Step& step : steps)
                if (!take(step, numbers)) return false;
        return true;
    }

    VELMAR_ALWAYS_INLINE bool take(const Step& step, float (&numbers)[4]) {
        switch (step.kind) {
        case Kind::three_floats:
            return takeThreeFloats(step, numbers);
        case Kind::one_float:
            return takeFloat(numbers[step.targets[0]]);
        case Kind::integer: {
            std::int64_t value = 0;
            return takeInteger(value, step.type);
        }
        case Kind::list:
            return takeList(step);
        default:
            return takeFace(step);
        }
    }

    VELMAR_ALWAYS_INLINE bool takeThreeFloats(const Step& step, float (&numbers)[4]) {
        if (!goToNumber()) return false;
        float three[3];
        const char* after = PlainFloats::scan(p, three);
        if (after == nullptr) after = PlainFloats::scanWithExponents(p, three);
        if (after == nullptr)
            return takeFloat(numbers[step.targets[0]]) && takeFloat(numbers[step.targets[1]]) &&
                   takeFloat(numbers[step.targets[2]]);
        for (std::size_t i = 0; i < 3; ++i)
            numbers[step.targets[i]] = three[i];
        p = after;
        return true;
    }

    /// RPly rounds to a double first. Only a double in the middle of two floats could make a difference, and near the
    /// middle the scanner refuses.
    bool takeFloat(float& number) {
        if (!goToNumber()) return false;
        const char* const after = FloatScanner::scan(p, number);
        if (after == nullptr || !isBlank(*after)) return false;
        p = after;
        return true;
    }

    /// Takes no magnitude of more than 31 bits: what becomes of larger ones depends on the system's `long`.
    bool takeInteger(std::int64_t& value, PlyType type) {
        if (!goToNumber()) return false;
        const char* digit = p;
        const bool negative = *digit == '-';
        if (negative || *digit == '+') ++digit;
        const char* const first = digit;
        value = 0;
        for (; Digits::isDigit(*digit); ++digit) {
            value = value * 10 + (*digit - '0');
            if (value > std::numeric_limits<std::int32_t>::max()) return false;
        }
        if (digit == first || !isBlank(*digit)) return false;
        if (negative) value = -value;
        p = digit;
        return isInRange(value, type);
    }

    static bool isInRange(std::int64_t value, PlyType type) {
        switch (type) {
        case PlyType::int8:
            return value == static_cast<std::int8_t>(value);
        case PlyType::uint8:
            return value == static_cast<std::uint8_t>(value);
        case PlyType::int16:
            return value == static_cast<std::int16_t>(value);
        case PlyType::uint16:
            return value == static_cast<std::uint16_t>(value);
        case PlyType::int32:
            return true;
        default:
            return value >= 0;
        }
    }

    bool takeList(const Step& step) {
        std::int64_t length = 0;
        if (!takeInteger(length, step.length_type)) return false;
        return isFloat(step.type) ? passFloats(length) : passIntegers(length, step.type);
    }

    bool passFloats(std::int64_t count) {
        float number = 0;
        for (; count > 0; --count)
            if (!takeFloat(number)) return false;
        return true;
    }

    bool passIntegers(std::int64_t count, PlyType type) {
        std::int64_t value = 0;
        for (; count > 0; --count)
            if (!takeInteger(value, type)) return false;
        return true;
    }

    VELMAR_ALWAYS_INLINE bool takeFace(const Step& step) {
        if (!goToNumber()) return false;
        std::array<std::uint32_t, 3> corners;
        if (sizeOf(step.type) == 4) [[likely]]
            if (const char* const after = scanUsualFace(p, corners)) [[likely]] {
                p = after;
                return target.addTriangle(corners[0], corners[1], corners[2]);
            }
        return takeAnyFace(step);
    }

    /// Reads a list of three or four indices of up to eight digits, with one space between them. Returns the place
    /// after it, which is a blank, or null.
    VELMAR_ALWAYS_INLINE static const char* scanUsualFace(const char* first, std::array<std::uint32_t, 3>& corners) {
        const bool is_quad = first[0] == '4';
        if ((first[0] != '3' && !is_quad) || first[1] != ' ') return nullptr;
        std::uint64_t stops = Digits::findOthers<48>(first);
        stops &= stops - 1;
        const std::size_t a = takeLowestBit(stops);
        const std::size_t b = takeLowestBit(stops);
        const std::size_t c = takeLowestBit(stops);
        std::size_t end = c;
        if (!isIndexLength(a - 2) || !isIndexLength(b - a - 1) || !isIndexLength(c - b - 1)) return nullptr;
        if (is_quad) {
            end = takeLowestBit(stops);
            if (first[c] != ' ' || !isIndexLength(end - c - 1)) return nullptr;
        }
        if (first[a] != ' ' || first[b] != ' ' || !isBlank(first[end])) return nullptr;
        const Digits::Four numbers = Digits::join(Digits::makePair(first + 2, a - 2, first + a + 1, b - a - 1),
                                                  Digits::makePair(first + b + 1, c - b - 1, first, 0));
        corners = {numbers.get<0>(), numbers.get<1>(), numbers.get<2>()};
        return first + end;
    }

    static std::size_t takeLowestBit(std::uint64_t& bits) {
        const std::size_t bit = lowestBit(bits);
        bits &= bits - 1;
        return bit;
    }

    /// Returns false for negative lengths too.
    static bool isIndexLength(std::size_t length) {
        constexpr std::size_t max_index_length = 8;
        return length - 1 < max_index_length;
    }

    bool takeAnyFace(const Step& step) {
        std::int64_t length = 0;
        if (!takeInteger(length, step.length_type)) return false;
        if (length < 3) return passIntegers(length, step.type);
        std::int64_t a = 0;
        std::int64_t b = 0;
        std::int64_t c = 0;
        return takeInteger(a, step.type) && takeInteger(b, step.type) && takeInteger(c, step.type) &&
               target.addTriangle(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b),
                                  static_cast<std::uint32_t>(c)) &&
               passIntegers(length - 3, step.type);
    }

    static bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

    /// Skips blanks. Afterwards `number_reach` bytes are readable. False at the end of the text and for so many blanks
    /// that RPly, whose buffer they could fill, may refuse them.
    VELMAR_ALWAYS_INLINE bool goToNumber() {
        if (p > last_far_from_end) [[unlikely]]
            continueInTail(static_cast<std::size_t>(last_far_from_end + margin - p));
        for (std::size_t i = 0; i < max_blanks; ++i, ++p)
            if (!isBlank(*p)) return true;
        return false;
    }

    /// Goes on in a copy of the last bytes, which are followed by line ends. RPly gets one after a text without.
    void continueInTail(std::size_t size) {
        tail.fill('\n');
        std::memcpy(tail.data(), p, size);
        p = tail.data();
        last_far_from_end = tail.data() + tail.size();
    }

    static constexpr std::size_t max_blanks = 32;
    static constexpr std::size_t number_reach = PlainFloats::reach;
    static_assert(FloatScanner::reach <= number_reach);
    static constexpr std::size_t margin = max_blanks + number_reach;

    const char* p;
    /// So many bytes as `margin` are readable from here on.
    const char* last_far_from_end = nullptr;
    std::size_t size_left_at_start = 0;
    Target& target;
    std::array<char, 2 * margin> tail;
};

} // namespace Velmar::PlyParts
