#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace TestSupport {

/// `path` (UTF-8, with `\` or `/`, of any length) as the standard library's file functions take it on this system.
std::filesystem::path systemPath(std::string_view path);

/// All bytes of a file. Throws `std::runtime_error` when it can't be read.
std::string readFileBytes(std::string_view path);

/// Makes or replaces a file. Throws `std::runtime_error` when it can't be written.
void writeFileBytes(std::string_view path, std::string_view bytes);

/// `text` with each line feed as a text-mode file of this system holds it.
std::string withSystemLineEnds(std::string_view text);

} // namespace TestSupport
