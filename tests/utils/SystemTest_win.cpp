#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"
#include "utils/System.h"

#include <clocale>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <thread>
#include <windows.h>

using TestSupport::TempDir;
using namespace Velmar;

TEST(WideText, GoesThereAndBack) {
    for (const std::string text : {"", "a", "C:\\Größe\\一", "\xF0\x9F\x98\x80", std::string("a\0b", 3).c_str()})
        EXPECT_EQ(text, FileUtils::wideToUtf8(FileUtils::utf8ToWide(text)));
    EXPECT_EQ(L"\u00E4\u4E00", FileUtils::utf8ToWide("\xC3\xA4\xE4\xB8\x80"));
    EXPECT_EQ(2U, FileUtils::utf8ToWide("\xF0\x9F\x98\x80").size());
}

TEST(WideText, InvalidTextIsReplaced) {
    EXPECT_EQ(L"a\uFFFDb", FileUtils::utf8ToWide("a\xFF"
                                                 "b"));
    const std::wstring lone_surrogate = {L'a', wchar_t{0xD800}};
    EXPECT_EQ("a\xEF\xBF\xBD", FileUtils::wideToUtf8(lone_surrogate));
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

TEST(Module, FindsTheSymbolsOfALoadedLibrary) {
    std::string error;
    void* const module = Velmar::loadModule("version.dll", error);
    ASSERT_NE(nullptr, module) << error;
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
    std::string error;
    void* const module = Velmar::loadModule(path, error);
    ASSERT_NE(nullptr, module) << error;
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

namespace {

CRITICAL_SECTION* sectionIn(Velmar::CriticalSectionSlot& slot) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(slot.bytes));
}

bool tryFromAnotherThread(CRITICAL_SECTION* section) {
    bool entered = false;
    std::thread([&] {
        entered = TryEnterCriticalSection(section) != 0;
        if (entered) LeaveCriticalSection(section);
    }).join();
    return entered;
}

void expectWorkingSection(Velmar::CriticalSectionSlot& slot) {
    CRITICAL_SECTION* const section = sectionIn(slot);
    EnterCriticalSection(section);
    EXPECT_TRUE(TryEnterCriticalSection(section)) << "the owner may enter again";
    EXPECT_FALSE(tryFromAnotherThread(section));
    LeaveCriticalSection(section);
    LeaveCriticalSection(section);
    EXPECT_TRUE(tryFromAnotherThread(section));
}

} // namespace

TEST(CriticalSection, WorksInItsSlot) {
    Velmar::CriticalSectionSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(slot);
    expectWorkingSection(slot);
    Velmar::destroyCriticalSection(slot);
}

TEST(ConditionVariable, WakesAWaiterFromItsSlot) {
    Velmar::CriticalSectionSlot section_slot;
    Velmar::ConditionVariableSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(section_slot);
    Velmar::constructConditionVariable(slot);
    CRITICAL_SECTION* const section = sectionIn(section_slot);
    auto* const condition = std::launder(reinterpret_cast<CONDITION_VARIABLE*>(slot.bytes));

    bool ready = false;
    EnterCriticalSection(section);
    std::thread waker([&] {
        EnterCriticalSection(section);
        ready = true;
        LeaveCriticalSection(section);
        WakeAllConditionVariable(condition);
    });
    while (!ready)
        ASSERT_TRUE(SleepConditionVariableCS(condition, section, INFINITE));
    LeaveCriticalSection(section);
    waker.join();
    Velmar::destroyCriticalSection(section_slot);
}

TEST(OwnedMutex, HoldsAWorkingSection) {
    const Velmar::OwnedMutex owned;
    expectWorkingSection(owned.getCriticalSection());
}

TEST(PlainNumericLocale, GivesTheHostItsLocaleBack) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "German_Germany.1252"), nullptr);
    const std::string hosts = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    {
        const PlainNumericLocale plain;
        EXPECT_STREQ(std::localeconv()->decimal_point, ".");
    }
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), hosts);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(PlainNumericLocale, LeavesTheLocaleToTheWholeProcessAgain) {
    constexpr int ask = 0;
    const int before = _configthreadlocale(ask);
    { const PlainNumericLocale plain; }
    EXPECT_EQ(_configthreadlocale(ask), before);
}
