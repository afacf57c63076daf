#pragma once

#include <string>
#include <string_view>

namespace FileUtils {

/// UTF-8 to UTF-16. Empty when `text` is empty or isn't UTF-8.
std::wstring utf8ToWide(std::string_view text);

/// UTF-16 to UTF-8. Empty when `text` is empty or can't be converted.
std::string wideToUtf8(std::wstring_view text);

/// The path as this system's file calls take it: UTF-16, and a long path in the form that has no length limit.
std::wstring toSystemPath(std::string_view path);

} // namespace FileUtils
