#include "utils/CLibraryPath.h"
#include "utils/WideText_win.h"

#include <windows.h>

namespace FileUtils {

namespace {

/// The path with each name in its short form, which is plain ASCII; empty where the volume keeps none.
std::wstring shortPath(const std::wstring& path) {
    const DWORD room = GetShortPathNameW(path.c_str(), nullptr, 0);
    if (room == 0) return {};
    std::wstring result(room, L'\0');
    const DWORD length = GetShortPathNameW(path.c_str(), result.data(), room);
    result.resize(length < room ? length : 0);
    return result;
}

/// The path in the code page of the C runtime's narrow functions; empty when it holds other characters.
std::string narrow(const std::wstring& path) {
    BOOL lost = FALSE;
    const int units = static_cast<int>(path.size());
    const int room = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.data(), units, nullptr, 0, nullptr, &lost);
    if (room <= 0 || lost != FALSE) return {};
    std::string result(static_cast<std::size_t>(room), '\0');
    WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.data(), units, result.data(), room, nullptr, nullptr);
    return result;
}

} // namespace

std::string toCLibraryPath(std::string_view path) {
    const std::wstring long_path = toSystemPath(path);
    constexpr std::wstring_view prefix = L"\\\\?\\";
    if (!long_path.starts_with(prefix)) {
        std::string name = narrow(long_path);
        if (!name.empty()) return name;
    }
    std::wstring short_path = shortPath(long_path);
    constexpr std::size_t longest_plain_path = MAX_PATH - 1;
    // Short enough now to do without the prefix, which the narrow functions don't always take. Network paths keep it.
    if (short_path.starts_with(prefix) && !short_path.starts_with(L"\\\\?\\UNC") &&
        short_path.size() - prefix.size() <= longest_plain_path)
        short_path.erase(0, prefix.size());
    return narrow(short_path);
}

} // namespace FileUtils
