#include "utils/CLibraryPath.h"
#include "utils/SystemPath_posix.h"

namespace FileUtils {

std::string toCLibraryPath(std::string_view path) {
    return toSystemPath(path);
}

} // namespace FileUtils
