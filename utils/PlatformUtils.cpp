#include "utils/PlatformUtils.h"

#include "utils/AppDataFolder.h"
#include "utils/FileUtils.h"

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

} // namespace PlatformUtils
