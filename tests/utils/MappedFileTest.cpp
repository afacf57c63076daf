#include "utils/MappedFile.h"

#include "velmarexceptions.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "tests/utils/OpeningFailure.h"

#include <gtest/gtest.h>
#include <string>

namespace MappedFileTests {

using namespace TestSupport;

TEST(MappedFile, GivesTheBytesOfTheFile) {
    const TempDir dir;
    const std::string bytes("a\r\n\0\x1A\xFF", 6);
    writeFileBytes(dir.file("a"), bytes);
    const MappedFile file(dir.file("a"));
    EXPECT_EQ(6U, file.getSize());
    EXPECT_EQ(bytes, std::string(file.getData(), file.getData() + file.getSize()));
    EXPECT_EQ(bytes, file.getText());
    EXPECT_EQ(6U, file.getBytes().size());
    EXPECT_EQ(file.getData(), file.getBytes().data());
}

TEST(MappedFile, AnEmptyFileIsNoError) {
    const TempDir dir;
    writeFileBytes(dir.file("empty"), "");
    const MappedFile file(dir.file("empty"));
    EXPECT_EQ(0U, file.getSize());
    EXPECT_EQ(nullptr, file.getData());
    EXPECT_TRUE(file.getText().empty());
}

TEST(MappedFile, AMissingFileIsNamedWithTheSystemsText) {
    const TempDir dir;
    const std::string path = dir.file("missing");
    const std::string message = openingFailure(path);
    const std::string beginning = "Failed to open file '" + path + "': ";
    EXPECT_TRUE(message.starts_with(beginning)) << message;
    EXPECT_TRUE(message.ends_with(" (code 2)")) << message;
    EXPECT_GT(message.size(), beginning.size() + std::string(" (code 2)").size());
}

TEST(MappedFile, AnEmptyPathCantBeOpened) {
    EXPECT_TRUE(openingFailure("").starts_with("Failed to open file '': "));
}

TEST(MappedFile, ADirectoryCantBeOpened) {
    const TempDir dir;
    EXPECT_TRUE(openingFailure(dir.path()).starts_with("Failed to open file '" + dir.path() + "': "));
}

TEST(MappedFile, OpensNonAsciiPaths) {
    const TempDir dir;
    const std::string path = dir.file("Größe # 一 \xF0\x9F\x98\x80.obj");
    writeFileBytes(path, "v");
    EXPECT_EQ("v", MappedFile(path).getText());
}

TEST(MappedFile, TakesBothSeparators) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "v");
    EXPECT_EQ("v", MappedFile(dir.path() + "/a").getText());
    EXPECT_EQ("v", MappedFile(dir.path() + "\\a").getText());
}

TEST(MappedFile, OneFileCanBeMappedTwice) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "v");
    const MappedFile first(dir.file("a"));
    const MappedFile second(dir.file("a"));
    EXPECT_EQ(first.getText(), second.getText());
}

TEST(MappedFile, TheFileCanBeReplacedAfterwards) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "old");
    { const MappedFile file(dir.file("a")); }
    writeFileBytes(dir.file("a"), "new one");
    EXPECT_EQ("new one", MappedFile(dir.file("a")).getText());
}

} // namespace MappedFileTests
