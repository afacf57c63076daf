#include "utils/WideText_win.h"

#include <limits>
#include <windows.h>

namespace FileUtils {

namespace {

// Directories can be made up to this length without the prefix below, files a little longer.
constexpr std::size_t first_long_path = 248;

/// The absolute form of a path without `.`, `..` and `/`; empty on failure.
std::wstring getFullPath(const std::wstring& path) {
    const DWORD room = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (room == 0) return {};
    std::wstring full(room, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), room, full.data(), nullptr);
    full.resize(length < room ? length : 0);
    return full;
}

} // namespace

std::wstring utf8ToWide(std::string_view text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {};
    const int bytes = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    if (length <= 0) return {};
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    if (MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, wide.data(), length) != length) return {};
    return wide;
}

std::string wideToUtf8(std::wstring_view text) {
    if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {};
    const int units = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string utf8(static_cast<std::size_t>(length), '\0');
    if (WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), length, nullptr, nullptr) != length) return {};
    return utf8;
}

std::wstring toSystemPath(std::string_view path) {
    const std::wstring wide = utf8ToWide(path);
    if (wide.starts_with(L"\\\\?\\") || wide.starts_with(L"\\\\.\\")) return wide;
    // The limit holds for the absolute path, so a short relative one may be too long as well.
    const std::wstring full = getFullPath(wide);
    if (full.size() < first_long_path) return wide;
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + full.substr(2);
    return L"\\\\?\\" + full;
}

} // namespace FileUtils
