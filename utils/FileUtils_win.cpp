#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"
#include "utils/WideText_win.h"

#include <filesystem>
#include <windows.h>

namespace FileUtils {

bool fileExists(std::string_view path) {
    return GetFileAttributesW(toSystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void createDir(std::string_view path) {
    if (!CreateDirectoryW(toSystemPath(path).c_str(), nullptr))
        throw FileUtilsExcep("Failed to create directory '" + std::string(path) +
                             "': " + PlatformUtils::getLastErrorText());
}

bool openOutputFile(std::ofstream& file, std::string_view path, bool text_mode) {
    const std::ios_base::openmode mode = std::ios_base::out | std::ios_base::trunc;
    file.open(std::filesystem::path(toSystemPath(path)), text_mode ? mode : mode | std::ios_base::binary);
    return file.is_open();
}

std::FILE* openInputFile(std::string_view path) {
    return _wfopen(toSystemPath(path).c_str(), L"rb");
}

} // namespace FileUtils
