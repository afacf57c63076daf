#include "utils/WideText_win.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

TEST(WideText, GoesThereAndBack) {
    for (const std::string text : {"", "a", "C:\\Größe\\一", "\xF0\x9F\x98\x80", std::string("a\0b", 3).c_str()})
        EXPECT_EQ(text, FileUtils::wideToUtf8(FileUtils::utf8ToWide(text)));
    EXPECT_EQ(L"\u00E4\u4E00", FileUtils::utf8ToWide("\xC3\xA4\xE4\xB8\x80"));
    EXPECT_EQ(2U, FileUtils::utf8ToWide("\xF0\x9F\x98\x80").size());
}

TEST(WideText, ZeroBytesSurvive) {
    EXPECT_EQ(std::wstring(L"a\0b", 3), FileUtils::utf8ToWide(std::string("a\0b", 3)));
    EXPECT_EQ(std::string("a\0b", 3), FileUtils::wideToUtf8(std::wstring(L"a\0b", 3)));
}

TEST(SystemPath, ShortPathsStayAsTheyAre) {
    for (const std::string path : {"", "a", "a/b\\..\\c", "C:\\x", "NUL"})
        EXPECT_EQ(FileUtils::utf8ToWide(path), FileUtils::toSystemPath(path));
}

TEST(SystemPath, LongPathsGetTheFormWithoutALimit) {
    const std::string name(250, 'n');
    const std::wstring wide(250, L'n');
    EXPECT_EQ(L"\\\\?\\C:\\a\\" + wide, FileUtils::toSystemPath("C:/a/./" + name));
    EXPECT_EQ(L"\\\\?\\UNC\\server\\share\\" + wide, FileUtils::toSystemPath("\\\\server\\share\\" + name));
    EXPECT_EQ(L"\\\\?\\C:\\" + wide, FileUtils::toSystemPath("\\\\?\\C:\\" + name));
}

TEST(SystemPath, RelativePathsCountFromTheWorkingDirectory) {
    const std::wstring working = std::filesystem::current_path().native();
    const std::string name(250, 'n');
    EXPECT_EQ(L"\\\\?\\" + working + L"\\" + std::wstring(250, L'n'), FileUtils::toSystemPath(name));
    ASSERT_LT(working.size(), 240U);
    const std::size_t room = 248 - working.size() - 1;
    EXPECT_EQ(std::wstring(room - 1, L'n'), FileUtils::toSystemPath(std::string(room - 1, 'n')));
    EXPECT_EQ(L"\\\\?\\" + working + L"\\" + std::wstring(room, L'n'), FileUtils::toSystemPath(std::string(room, 'n')));
}
