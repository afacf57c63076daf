#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"
#include "utils/Module.h"
#include "utils/WideText_win.h"

#include <gtest/gtest.h>
#include <string>
#include <windows.h>

using TestSupport::TempDir;

TEST(Module, FindsTheSymbolsOfALoadedLibrary) {
    void* const module = Velmar::loadModule("version.dll");
    ASSERT_NE(nullptr, module) << Velmar::getModuleErrorText();
    EXPECT_NE(nullptr, Velmar::findSymbol(module, "GetFileVersionInfoSizeW"));
    EXPECT_EQ(nullptr, Velmar::findSymbol(module, "NoSuchSymbol"));
    Velmar::unloadModule(module);
}

TEST(Module, LoadsFromNonAsciiAndLongPaths) {
    wchar_t system_folder[MAX_PATH + 1] = {};
    GetSystemDirectoryW(system_folder, MAX_PATH);
    const std::string library = TestSupport::readFileBytes(FileUtils::wideToUtf8(system_folder) + "\\version.dll");
    const TempDir dir;
    const std::string path = dir.file("Größe 一.dll");
    TestSupport::writeFileBytes(path, library);
    void* const module = Velmar::loadModule(Velmar::getAbsolutePath(path));
    ASSERT_NE(nullptr, module) << Velmar::getModuleErrorText();
    wchar_t loaded_from[MAX_PATH + 1] = {};
    GetModuleFileNameW(static_cast<HMODULE>(module), loaded_from, MAX_PATH);
    EXPECT_EQ(path, FileUtils::wideToUtf8(loaded_from));
    Velmar::unloadModule(module);
}

TEST(Module, SearchDirectoryReachesTheSystem) {
    const TempDir dir;
    Velmar::setModuleSearchDirectory(dir.path());
    wchar_t directory[MAX_PATH + 1] = {};
    GetDllDirectoryW(MAX_PATH, directory);
    EXPECT_EQ(dir.path(), FileUtils::wideToUtf8(directory));
    SetDllDirectoryW(nullptr);
}

TEST(AbsolutePath, IsOfTheSystemsForm) {
    EXPECT_EQ("C:\\a\\c", Velmar::getAbsolutePath("C:/a/b/../c"));
}
