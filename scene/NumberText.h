#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Velmar {

/// The forms of numbers in a scene document. None depends on a locale.

std::string_view boolToString(bool value);
std::string int32ToString(std::int32_t value);
std::string uint32ToString(std::uint32_t value);

/// The shortest digits that read back as the same double: "1", "0.1", "1e21", "Inf", "-Inf", "NaN"; "0" for both zeros.
std::string doubleToString(double value);
/// The same for a float.
std::string floatToString(float value);

/// The longest text of a number has 25 characters.
inline constexpr std::size_t max_number_length = 32;

/// Write the same texts to `to`, which has room for `max_number_length` bytes. Return the place after the text.
char* writeNumber(char* to, double value);
char* writeNumber(char* to, float value);
char* writeNumber(char* to, std::int32_t value);
char* writeNumber(char* to, std::uint32_t value);

/// A number's text in storage of its own, for writing without an allocation.
class NumberText {
  public:
    template <class Number>
    explicit NumberText(Number value) : size_(static_cast<std::size_t>(writeNumber(text_, value) - text_)) {}

    std::string_view view() const { return {text_, size_}; }

  private:
    char text_[max_number_length];
    std::size_t size_;
};

} // namespace Velmar
