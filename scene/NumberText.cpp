#include "scene/NumberText.h"

#include <charconv>
#include <double-conversion/double-conversion.h>

namespace Velmar {

namespace {

using double_conversion::DoubleToStringConverter;
using double_conversion::StringBuilder;

const DoubleToStringConverter& shortestConverter() {
    static const DoubleToStringConverter converter(DoubleToStringConverter::NO_FLAGS, "Inf", "NaN", 'e', -6, 21, 0, 0);
    return converter;
}

template <class Number, class Convert>
std::size_t writeShortest(Number value, char* text, int capacity, Convert convert) {
    // Catches negative zero too, which the converter would write with its sign.
    if (value == 0) {
        text[0] = '0';
        return 1;
    }
    StringBuilder builder(text, capacity);
    convert(shortestConverter(), value, &builder);
    const auto size = static_cast<std::size_t>(builder.position());
    builder.Finalize();
    return size;
}

template <class Integer>
std::size_t writeInteger(Integer value, char* text, int capacity) {
    return static_cast<std::size_t>(std::to_chars(text, text + capacity, value).ptr - text);
}

} // namespace

NumberText::NumberText(double value)
    : size_(writeShortest(value, text_, capacity, [](const auto& converter, double x, StringBuilder* builder) {
          converter.ToShortest(x, builder);
      })) {}

NumberText::NumberText(float value)
    : size_(writeShortest(value, text_, capacity, [](const auto& converter, float x, StringBuilder* builder) {
          converter.ToShortestSingle(x, builder);
      })) {}

NumberText::NumberText(std::int32_t value) : size_(writeInteger(value, text_, capacity)) {}

NumberText::NumberText(std::uint32_t value) : size_(writeInteger(value, text_, capacity)) {}

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
