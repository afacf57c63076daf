#include "velmarexceptions.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/MappedFile.h"
#include "utils/System.h"

#include <gtest/gtest.h>
#include <string>
#include <windows.h>

using TestSupport::TempDir;
using TestSupport::writeFileBytes;

namespace {

DWORD countHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

} // namespace

TEST(MappedFile, OthersMayReadButNotWriteMeanwhile) {
    const TempDir dir;
    const std::string path = dir.file("a");
    writeFileBytes(path, "v");
    const MappedFile file(path);
    const std::wstring wide = FileUtils::toSystemPath(path);
    HANDLE const reader = CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, reader);
    CloseHandle(reader);
    EXPECT_EQ(INVALID_HANDLE_VALUE,
              CreateFileW(wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(static_cast<DWORD>(ERROR_SHARING_VIOLATION), GetLastError());
}

TEST(MappedFile, LeavesNoHandleOpen) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "v");
    writeFileBytes(dir.file("empty"), "");
    const auto useAll = [&dir] {
        const MappedFile file(dir.file("a"));
        const MappedFile empty(dir.file("empty"));
        EXPECT_THROW(MappedFile(dir.file("missing")), Velmar::Exception);
        EXPECT_THROW(MappedFile(dir.path()), Velmar::Exception);
    };
    useAll();
    const DWORD before = countHandles();
    for (int i = 0; i < 5; ++i)
        useAll();
    EXPECT_EQ(before, countHandles());
}
