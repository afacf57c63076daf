#pragma once

#include <limits>

namespace TestSupport {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

} // namespace TestSupport
