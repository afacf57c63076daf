#pragma once

#include <string>
#include <string_view>

namespace FileUtils {

/// The path as this system's calls take it: every `\` becomes `/`.
std::string toSystemPath(std::string_view path);

} // namespace FileUtils
