#pragma once

#include <string>

namespace PlatformUtils {

/// The folder in which each program has a directory for this user's data. It may be absent.
/// Throws `PlatformUtilsExcep` when the system can't tell.
std::string getAppDataFolder();

/// The names that `getAppDataDirectory` gives: of the product's own directory, and of what stands in for its path.
inline constexpr const char* app_data_directory_name = "Velmar Renderer";
inline constexpr const char* app_data_fallback = "dummy_appdata";

} // namespace PlatformUtils
