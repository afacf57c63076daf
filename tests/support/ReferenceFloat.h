#pragma once

#include <cmath>
#include <cstddef>
#include <double-conversion/string-to-double.h>
#include <limits>
#include <string_view>

namespace TestSupport {

/// What double-conversion reads at the start of a text.
struct ReferenceFloat {
    bool parsed;
    float value;
    /// With one `f` or `F` after the number.
    std::size_t consumed;
};

inline ReferenceFloat readReferenceFloat(std::string_view text) {
    using Converter = double_conversion::StringToDoubleConverter;
    constexpr double failure = std::numeric_limits<double>::quiet_NaN();
    if (text.empty()) return {false, 0, 0};
    const Converter converter(Converter::ALLOW_TRAILING_JUNK, failure, failure, nullptr, nullptr);
    int processed = 0;
    const float value = converter.StringToFloat(text.data(), static_cast<int>(text.size()), &processed);
    if (std::isnan(value)) return {false, 0, 0};
    auto consumed = static_cast<std::size_t>(processed);
    if (consumed < text.size() && (text[consumed] == 'f' || text[consumed] == 'F')) ++consumed;
    return {true, value, consumed};
}

} // namespace TestSupport
