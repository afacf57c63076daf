#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"
#include "utils/SystemPath_posix.h"

#include <sys/stat.h>

namespace FileUtils {

std::string toSystemPath(std::string_view path) {
    std::string result(path);
    replaceChar(result, '\\', '/');
    return result;
}

bool fileExists(std::string_view path) {
    struct stat status = {};
    return stat(toSystemPath(path).c_str(), &status) == 0;
}

void createDir(std::string_view path) {
    constexpr mode_t everyone = 0777;
    if (mkdir(toSystemPath(path).c_str(), everyone) != 0)
        throw FileUtilsExcep("Failed to create directory '" + std::string(path) +
                             "': " + PlatformUtils::getLastErrorText());
}

bool openOutputFile(std::ofstream& file, std::string_view path, bool text_mode) {
    const std::ios_base::openmode mode = std::ios_base::out | std::ios_base::trunc;
    file.open(toSystemPath(path), text_mode ? mode : mode | std::ios_base::binary);
    return file.is_open();
}

std::FILE* openInputFile(std::string_view path) {
    return std::fopen(toSystemPath(path).c_str(), "rb");
}

} // namespace FileUtils
