#include "utils/PlatformUtils.h"

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h, which it needs.
#include <shlobj.h>

// The linker replaces the pointer to the system's function by ours and gives it the second name.
using GetFolderPath = HRESULT(WINAPI*)(HWND, int, HANDLE, DWORD, LPWSTR);
extern "C" GetFolderPath __real___imp_SHGetFolderPathW; // NOLINT(bugprone-reserved-identifier)

namespace {

bool folder_is_missing = false;

HRESULT WINAPI getFolderPath(HWND window, int folder, HANDLE token, DWORD flags, LPWSTR path) {
    if (folder_is_missing) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    return __real___imp_SHGetFolderPathW(window, folder, token, flags, path);
}

} // namespace

extern "C" GetFolderPath __wrap___imp_SHGetFolderPathW; // NOLINT(bugprone-reserved-identifier)
GetFolderPath __wrap___imp_SHGetFolderPathW = getFolderPath;

TEST(AppDataDirectory, IsReplacedWhenTheUserHasNoFolder) {
    folder_is_missing = true;
    EXPECT_THROW(PlatformUtils::ensureAppDataDirectory("name"), PlatformUtils::PlatformUtilsExcep);
    EXPECT_EQ("dummy_appdata", PlatformUtils::getAppDataDirectory());
    folder_is_missing = false;
    EXPECT_NE("dummy_appdata", PlatformUtils::getAppDataDirectory());
}
