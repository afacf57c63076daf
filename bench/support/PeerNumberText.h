#pragma once

#include <cstddef>
#include <double-conversion/double-conversion.h>
#include <string_view>

namespace BenchSupport {

/// A number of a document as double-conversion writes it, which is what the other library has to write.
class PeerNumberText {
  public:
    explicit PeerNumberText(double value) {
        using double_conversion::DoubleToStringConverter;
        static const DoubleToStringConverter converter(DoubleToStringConverter::UNIQUE_ZERO, "Inf", "NaN", 'e', -6, 21,
                                                       0, 0);
        double_conversion::StringBuilder builder(text, sizeof text);
        converter.ToShortest(value, &builder);
        size = static_cast<std::size_t>(builder.position());
        builder.Finalize();
    }

    std::string_view view() const { return {text, size}; }

  private:
    char text[128];
    std::size_t size;
};

} // namespace BenchSupport
