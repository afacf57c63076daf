#include "utils/PlatformUtils.h"

#include "utils/FileUtils.h"
#include "utils/System.h"

namespace PlatformUtils {

std::string getLastErrorText() {
    return getErrorText(getLastErrorCode());
}

std::string ensureAppDataDirectory(std::string_view name) {
    const std::string directory = FileUtils::join(getAppDataFolder(), name);
    if (FileUtils::fileExists(directory)) return directory;
    try {
        FileUtils::createDir(directory);
    } catch (const FileUtils::FileUtilsExcep& failure) {
        throw PlatformUtilsExcep(failure.getMessage());
    }
    return directory;
}

std::string getAppDataDirectory() {
    try {
        requireProgramPath();
        return ensureAppDataDirectory("Velmar Renderer");
    } catch (const PlatformUtilsExcep&) {
        return "dummy_appdata";
    }
}

} // namespace PlatformUtils
