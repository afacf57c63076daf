#include "velmarexceptions.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "tests/utils/OpeningFailure.h"
#include "utils/MappedFile.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>

using namespace TestSupport;

namespace {

auto countOpenFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

TEST(MappedFile, SaysThatADirectoryIsOne) {
    const TempDir dir;
    EXPECT_EQ("Failed to open file '" + dir.path() + "': Is a directory (code 21)", openingFailure(dir.path()));
}

TEST(MappedFile, RefusesWhatIsNoRegularFileWithoutWaiting) {
    const TempDir dir;
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(0, mkfifo(systemPath(pipe).c_str(), 0600));
    EXPECT_EQ("Failed to open file '" + pipe + "': Not a regular file", openingFailure(pipe));
    EXPECT_EQ("Failed to open file '/dev/null': Not a regular file", openingFailure("/dev/null"));
}

TEST(MappedFile, SaysWhatIsWrongWithAPath) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "v");
    const std::string below_file = dir.file("a\\b");
    EXPECT_EQ("Failed to open file '" + below_file + "': Not a directory (code 20)", openingFailure(below_file));
    const std::string long_name = dir.file(std::string(300, 'n'));
    EXPECT_EQ("Failed to open file '" + long_name + "': File name too long (code 36)", openingFailure(long_name));
}

TEST(MappedFile, LeavesNoFileOpen) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "v");
    writeFileBytes(dir.file("empty"), "");
    const auto before = countOpenFiles();
    for (int i = 0; i < 3; ++i) {
        const MappedFile file(dir.file("a"));
        const MappedFile empty(dir.file("empty"));
        openingFailure(dir.file("missing"));
        openingFailure(dir.path());
    }
    EXPECT_EQ(before, countOpenFiles());
}
