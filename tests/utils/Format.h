#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace TestSupport {

/// A number as `printf` writes it.
inline std::string format(const char* form, double value) {
    std::array<char, 512> buffer = {};
    const int length = std::snprintf(buffer.data(), buffer.size(), form, value);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

} // namespace TestSupport
