#include "utils/AppDataFolder.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"
#include "utils/WideText_win.h"

#include <windows.h>
// After windows.h, which it needs.
#include <atomic>
#include <shlobj.h>
#include <vector>

namespace PlatformUtils {

namespace {

constexpr DWORD buffer_size = 2048;

/// Seconds between two values of the performance counter; 0 until the clock is initialised.
std::atomic<double> clock_period = 0.0;

} // namespace

std::string getErrorText(std::uint32_t code) {
    constexpr DWORD neutral_default_language = 1024;
    const std::string number = std::to_string(static_cast<std::int32_t>(code));
    std::vector<wchar_t> buffer(buffer_size);
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                                        neutral_default_language, buffer.data(), buffer_size, nullptr);
    if (length == 0) return "[Unknown (error code=" + number + ")]";
    return FileUtils::trimTrailingWhitespace(FileUtils::wideToUtf8(buffer.data())) + " (code " + number + ")";
}

std::uint32_t getLastErrorCode() {
    return GetLastError();
}

std::string getAppDataFolder() {
    wchar_t folder[MAX_PATH + 1] = {};
    const HRESULT result = SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder);
    if (result != S_OK) throw PlatformUtilsExcep("SHGetFolderPath() failed, Error code: " + std::to_string(result));
    return FileUtils::wideToUtf8(folder);
}

std::string getAppDataDirectory() {
    try {
        // A process that can't tell its own program gets no directory of its own.
        std::vector<wchar_t> program(buffer_size);
        if (GetModuleFileNameW(nullptr, program.data(), buffer_size) == 0)
            throw PlatformUtilsExcep("GetModuleFileName failed.");
        return ensureAppDataDirectory(app_data_directory_name);
    } catch (const PlatformUtilsExcep&) {
        return app_data_fallback;
    }
}

void initClock() {
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    clock_period = 1.0 / static_cast<double>(frequency.QuadPart);
}

double getTimeSeconds() {
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    return static_cast<double>(counter.QuadPart) * clock_period;
}

} // namespace PlatformUtils
