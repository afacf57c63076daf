#pragma once

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

/// A number's text in storage of its own, for writing without an allocation.
class NumberText {
  public:
    explicit NumberText(double value);
    explicit NumberText(float value);
    explicit NumberText(std::int32_t value);
    explicit NumberText(std::uint32_t value);

    std::string_view view() const { return {text_, size_}; }

  private:
    // The longest number has 24 characters; the converter asks for this much.
    static constexpr int capacity = 128;

    char text_[capacity];
    std::size_t size_;
};

} // namespace Velmar
