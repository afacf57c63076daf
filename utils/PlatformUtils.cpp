#include "utils/PlatformUtils.h"

#include "utils/FileUtils.h"
#include "utils/System.h"

#include <chrono>
#include <exception>
#include <functional>
#include <random>
#include <thread>

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

std::uint64_t getRandomNumber() noexcept {
    try {
        std::random_device random;
        return std::uint64_t{random()} << 32 | random();
    } catch (const std::exception&) {
        // The system has no source of random numbers.
        return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
}

std::string makeUniqueSuffix() {
    // Processes of two machines may have the same number and write into one folder.
    return std::to_string(getProcessNumber()) + '-' +
           std::to_string(std::hash<std::thread::id>()(std::this_thread::get_id())) + '-' +
           std::to_string(getRandomNumber());
}

} // namespace PlatformUtils
