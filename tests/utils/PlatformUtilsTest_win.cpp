#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"
#include "utils/System.h"

#include <gtest/gtest.h>
#include <windows.h>
// After windows.h, which it needs.
#include <shlobj.h>
#include <string>

namespace {

std::string roamingFolder() {
    wchar_t folder[MAX_PATH + 1] = {};
    EXPECT_EQ(S_OK, SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, folder));
    return FileUtils::wideToUtf8(folder);
}

void removeDirectory(const std::string& path) {
    RemoveDirectoryW(FileUtils::toSystemPath(path).c_str());
}

} // namespace

TEST(ErrorText, OfTheLastErrorIsThatOfItsCode) {
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(5U, PlatformUtils::getLastErrorCode());
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(PlatformUtils::getErrorText(5), PlatformUtils::getLastErrorText());
}

TEST(ErrorText, ResultCodesWithATextAreNegativeToo) {
    const std::string text = PlatformUtils::getErrorText(static_cast<std::uint32_t>(E_OUTOFMEMORY));
    EXPECT_TRUE(text.ends_with(" (code -2147024882)")) << text;
}

TEST(AppDataDirectory, IsMadeOnceUnderTheUsersFolder) {
    const std::string name = "VelmarTest" + std::to_string(GetCurrentProcessId());
    const std::string expected = FileUtils::join(roamingFolder(), name);
    ASSERT_FALSE(FileUtils::fileExists(expected));
    EXPECT_EQ(expected, PlatformUtils::ensureAppDataDirectory(name));
    EXPECT_TRUE(FileUtils::fileExists(expected));
    EXPECT_EQ(expected, PlatformUtils::ensureAppDataDirectory(name));
    removeDirectory(expected);
}

TEST(AppDataDirectory, BearsTheProductsName) {
    EXPECT_EQ(FileUtils::join(roamingFolder(), "Velmar Renderer"), PlatformUtils::getAppDataDirectory());
    EXPECT_TRUE(FileUtils::fileExists(PlatformUtils::getAppDataDirectory()));
}

TEST(AppDataDirectory, FailsWithTheTextOfTheDirectory) {
    try {
        PlatformUtils::ensureAppDataDirectory("missing folder\\name");
        FAIL() << "nothing was thrown";
    } catch (const PlatformUtils::PlatformUtilsExcep& failure) {
        const std::string path = FileUtils::join(roamingFolder(), "missing folder\\name");
        EXPECT_TRUE(failure.getMessage().starts_with("Failed to create directory '" + path + "': "))
            << failure.getMessage();
    }
}
