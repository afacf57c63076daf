#pragma once

#include <string>
#include <string_view>

namespace FileUtils {

/// A name by which the C runtime's `fopen` of this system opens the existing file `path` (UTF-8), for libraries that
/// take no other. Where there is none, a name that can't be opened.
std::string toCLibraryPath(std::string_view path);

} // namespace FileUtils
