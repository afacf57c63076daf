#pragma once

#include "velmarexceptions.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Questions to the operating system.
namespace PlatformUtils {

/// The system's sentence for an error code, followed by the code; or a text that says that the code is unknown.
std::string getErrorText(std::uint32_t code);

/// `getErrorText` of this thread's last system error.
std::string getLastErrorText();

/// This thread's last system error.
std::uint32_t getLastErrorCode();

/// Path of the directory `name` under the user's application data folder, made if it doesn't exist (one level).
/// Throws `PlatformUtilsExcep` when the folder is unknown or the directory can't be made.
std::string ensureAppDataDirectory(std::string_view name);

/// `ensureAppDataDirectory` of "Velmar Renderer", or "dummy_appdata" when that fails.
std::string getAppDataDirectory();

/// A number that nobody can foresee, for seeds of hash tables.
std::uint64_t getRandomNumber() noexcept;

/// A text of digits and dashes that no other thread of any process has at the same time, for names of temporary files.
std::string makeUniqueSuffix();

/// Sets up the clock; once at library setup, before `getTimeSeconds`.
void initClock();

/// Seconds since a zero point that the system chooses; 0 before `initClock`.
double getTimeSeconds();

} // namespace PlatformUtils
