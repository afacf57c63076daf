#include "tests/support/FileBytes.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

namespace {

constexpr bool on_windows = std::filesystem::path::preferred_separator == '\\';

std::filesystem::path fromUtf8(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

} // namespace

std::filesystem::path systemPath(std::string_view path) {
    constexpr std::size_t first_long_path = 248;
    std::string text(path);
    if (!on_windows) {
        std::replace(text.begin(), text.end(), '\\', '/');
        return fromUtf8(text);
    }
    const std::filesystem::path absolute = std::filesystem::absolute(fromUtf8(text)).make_preferred();
    if (absolute.native().size() < first_long_path || text.starts_with("\\\\")) return absolute;
    std::filesystem::path prefixed = fromUtf8("\\\\?\\");
    prefixed += absolute;
    return prefixed;
}

std::string readFileBytes(std::string_view path) {
    std::ifstream file(systemPath(path), std::ios::binary);
    if (!file) throw std::runtime_error("can't read " + std::string(path));
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void writeFileBytes(std::string_view path, std::string_view bytes) {
    std::ofstream file(systemPath(path), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error("can't write " + std::string(path));
}

std::string withSystemLineEnds(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n' && on_windows) result += '\r';
        result += c;
    }
    return result;
}

} // namespace TestSupport
