#include "tools/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace Text {

std::string count(std::uint64_t number, std::string_view one, std::string_view many) {
    return std::to_string(number) + ' ' + std::string(number == 1 ? one : many);
}

std::string number(float value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, end.ptr};
}

std::string row(std::string_view name, std::string_view value) {
    constexpr std::size_t name_width = 11;
    std::string line(name);
    line.resize(std::max(name.size() + 1, name_width), ' ');
    return line.append(value);
}

std::string size(std::uint64_t bytes) {
    if (bytes < 1000) return count(bytes, "byte", "bytes");
    constexpr const char* units[] = {"KB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // What would be written as 1000.0 is written in the next unit.
    while (value >= 999.95 && unit + 1 < std::size(units)) {
        value /= 1000;
        ++unit;
    }
    const auto tenths = static_cast<std::uint64_t>(std::lround(value * 10));
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + ' ' + units[unit];
}

std::string printable(std::string_view text) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F)
            result += c;
        else
            result.append("\\x").append({hex[byte >> 4U], hex[byte & 15U]});
    }
    return result;
}

std::string fileName(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string joinPaths(std::string_view folder, std::string_view path) {
    const bool separated = folder.ends_with('/') || folder.ends_with('\\');
    return std::string(folder).append(separated ? "" : "/").append(path);
}

std::string fileStem(std::string_view path) {
    const std::string name = fileName(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

} // namespace Text
