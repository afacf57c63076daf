#include "utils/AppDataFolder.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <pwd.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace PlatformUtils {

namespace {

/// Seconds between two values of the clock's counter; 0 until the clock is initialised.
std::atomic<double> clock_period = 0.0;

std::string getHomeDirectory() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return home;

    constexpr std::size_t room_for_entry = 16384;
    std::vector<char> buffer(room_for_entry);
    passwd entry = {};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    if (found == nullptr || found->pw_dir == nullptr) throw PlatformUtilsExcep("The user has no home directory.");
    return found->pw_dir;
}

} // namespace

std::string getErrorText(std::uint32_t code) {
    const auto signed_code = static_cast<std::int32_t>(code);
    const std::string number = std::to_string(signed_code);
    const std::string text = std::generic_category().message(signed_code);
    // What the runtime says of any number that it has no text for.
    if (text == "Unknown error " + number) return "[Unknown (error code=" + number + ")]";
    return text + " (code " + number + ")";
}

std::uint32_t getLastErrorCode() {
    return static_cast<std::uint32_t>(errno);
}

std::string getAppDataFolder() {
    const char* const data_home = std::getenv("XDG_DATA_HOME");
    // A relative path there is to be ignored by the rules of that variable.
    if (data_home != nullptr && *data_home == '/') return data_home;
    return getHomeDirectory() + "/.local/share";
}

std::string getAppDataDirectory() {
    try {
        return ensureAppDataDirectory(app_data_directory_name);
    } catch (const PlatformUtilsExcep&) {
        return app_data_fallback;
    }
}

void initClock() {
    using Period = std::chrono::steady_clock::period;
    clock_period = static_cast<double>(Period::num) / static_cast<double>(Period::den);
}

double getTimeSeconds() {
    return static_cast<double>(std::chrono::steady_clock::now().time_since_epoch().count()) * clock_period;
}

} // namespace PlatformUtils
