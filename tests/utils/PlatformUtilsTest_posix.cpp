#include "tests/support/FileBytes.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <string>

using TestSupport::ScopedVariable;
using TestSupport::TempDir;

TEST(ErrorText, OfTheLastErrorIsThatOfItsCode) {
    errno = ENOENT;
    EXPECT_EQ("No such file or directory (code 2)", PlatformUtils::getLastErrorText());
    errno = EACCES;
    EXPECT_EQ(13U, PlatformUtils::getLastErrorCode());
}

TEST(AppDataDirectory, IsMadeOnceUnderTheDataFolder) {
    const TempDir dir;
    const ScopedVariable data_home("XDG_DATA_HOME", dir.path().c_str());
    const std::string expected = dir.path() + "\\Velmar Renderer";
    EXPECT_EQ(expected, PlatformUtils::getAppDataDirectory());
    EXPECT_TRUE(FileUtils::fileExists(expected));
    EXPECT_EQ(expected, PlatformUtils::getAppDataDirectory());
    EXPECT_EQ(dir.path() + "\\other", PlatformUtils::ensureAppDataDirectory("other"));
}

TEST(AppDataDirectory, IsUnderTheHomeFolderByDefault) {
    const TempDir dir;
    const ScopedVariable home("HOME", dir.path().c_str());
    const ScopedVariable data_home("XDG_DATA_HOME", nullptr);
    FileUtils::createDir(dir.file(".local"));
    FileUtils::createDir(dir.file(".local\\share"));
    EXPECT_EQ(dir.path() + "/.local/share\\Velmar Renderer", PlatformUtils::getAppDataDirectory());
}

TEST(AppDataDirectory, IgnoresARelativeDataFolder) {
    const TempDir dir;
    const ScopedVariable home("HOME", dir.path().c_str());
    const ScopedVariable data_home("XDG_DATA_HOME", "relative");
    FileUtils::createDir(dir.file(".local"));
    FileUtils::createDir(dir.file(".local\\share"));
    EXPECT_EQ(dir.path() + "/.local/share\\Velmar Renderer", PlatformUtils::getAppDataDirectory());
}

TEST(AppDataDirectory, IsReplacedWhenItCantBeMade) {
    const TempDir dir;
    const ScopedVariable home("HOME", dir.path().c_str());
    const ScopedVariable data_home("XDG_DATA_HOME", nullptr);
    EXPECT_EQ("dummy_appdata", PlatformUtils::getAppDataDirectory());
    EXPECT_FALSE(FileUtils::fileExists(dir.file(".local")));
}

TEST(AppDataDirectory, FailsWithTheTextOfTheDirectory) {
    const TempDir dir;
    TestSupport::writeFileBytes(dir.file("file"), "");
    const ScopedVariable data_home("XDG_DATA_HOME", dir.file("file").c_str());
    try {
        PlatformUtils::ensureAppDataDirectory("name");
        FAIL() << "nothing was thrown";
    } catch (const PlatformUtils::PlatformUtilsExcep& failure) {
        EXPECT_EQ("Failed to create directory '" + dir.file("file") + "\\name': Not a directory (code 20)",
                  failure.getMessage());
    }
}

TEST(Clock, RunsWithTheSteadyClock) {
    using Seconds = std::chrono::duration<double>;
    const auto steadyNow = [] { return Seconds(std::chrono::steady_clock::now().time_since_epoch()).count(); };
    PlatformUtils::initClock();
    const double before = steadyNow();
    const double between = PlatformUtils::getTimeSeconds();
    EXPECT_GE(between, before - 1e-6);
    EXPECT_LE(between, steadyNow() + 1e-6);
}
