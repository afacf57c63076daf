#include "utils/FileUtils.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/MappedFile.h"

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace FileUtilsTests {

using TestSupport::readFileBytes;
using TestSupport::TempDir;
using TestSupport::withSystemLineEnds;
using TestSupport::writeFileBytes;

TEST(Join, PutsABackslashBetween) {
    EXPECT_EQ("a\\b", FileUtils::join("a", "b"));
    EXPECT_EQ("/a\\b/c", FileUtils::join("/a", "b/c"));
}

TEST(Join, EmptyDirectoryGivesThePath) {
    EXPECT_EQ("b", FileUtils::join("", "b"));
    EXPECT_EQ("", FileUtils::join("", ""));
}

TEST(Join, PathWithDriveIgnoresDirectory) {
    EXPECT_EQ("C:\\b", FileUtils::join("a", "C:\\b"));
    EXPECT_EQ("c:", FileUtils::join("a", "c:"));
    EXPECT_EQ("::", FileUtils::join("a", "::"));
}

TEST(Join, PathFromTheRootIgnoresDirectory) {
    EXPECT_EQ("\\b", FileUtils::join("a", "\\b"));
    EXPECT_EQ("/b", FileUtils::join("a", "/b"));
    EXPECT_EQ("/", FileUtils::join("a", "/"));
}

TEST(Join, ColonElsewhereIsNoDrive) {
    EXPECT_EQ("a\\:", FileUtils::join("a", ":"));
    EXPECT_EQ("a\\ab:c", FileUtils::join("a", "ab:c"));
}

TEST(Join, TrailingSeparatorOfTheDirectoryIsDoubled) {
    EXPECT_EQ("a\\\\b", FileUtils::join("a\\", "b"));
    EXPECT_EQ("a/\\b", FileUtils::join("a/", "b"));
}

TEST(Join, EmptyPathEndsInASeparator) {
    EXPECT_EQ("a\\", FileUtils::join("a", ""));
}

TEST(GetDirectory, EndsBeforeTheLastSeparatorOfEitherKind) {
    EXPECT_EQ("a/b", FileUtils::getDirectory("a/b\\c"));
    EXPECT_EQ("a\\b", FileUtils::getDirectory("a\\b/c"));
    EXPECT_EQ("a", FileUtils::getDirectory("a/"));
    EXPECT_EQ("a/", FileUtils::getDirectory("a//b"));
}

TEST(GetDirectory, IsEmptyWithoutASeparatorBehindTheFirstByte) {
    EXPECT_EQ("", FileUtils::getDirectory("x"));
    EXPECT_EQ("", FileUtils::getDirectory(""));
    EXPECT_EQ("", FileUtils::getDirectory("/x"));
    EXPECT_EQ("", FileUtils::getDirectory("\\"));
}

TEST(GetExtension, FollowsTheLastDot) {
    EXPECT_EQ("gz", FileUtils::getExtension("a.tar.gz"));
    EXPECT_EQ("x", FileUtils::getExtension(".x"));
}

TEST(GetExtension, IsEmptyWithoutADotOrBehindAFinalOne) {
    EXPECT_EQ("", FileUtils::getExtension("a"));
    EXPECT_EQ("", FileUtils::getExtension("a."));
    EXPECT_EQ("", FileUtils::getExtension(""));
}

TEST(GetExtension, DotOfADirectoryCounts) {
    EXPECT_EQ("old\\file", FileUtils::getExtension("dir.old\\file"));
}

TEST(RemoveExtension, CutsTheExtensionAndItsDot) {
    EXPECT_EQ("scene", FileUtils::removeExtension("scene.xml"));
    EXPECT_EQ("a.tar", FileUtils::removeExtension("a.tar.gz"));
    EXPECT_EQ("v1", FileUtils::removeExtension("v1.2\\scene"));
    EXPECT_EQ("", FileUtils::removeExtension(".xml"));
}

TEST(RemoveExtension, CutsOneFinalDotOnly) {
    EXPECT_EQ("scene", FileUtils::removeExtension("scene."));
    EXPECT_EQ("scene.", FileUtils::removeExtension("scene.."));
}

TEST(RemoveExtension, KeepsAPathWithoutADot) {
    EXPECT_EQ("scene", FileUtils::removeExtension("scene"));
    EXPECT_EQ("", FileUtils::removeExtension(""));
}

TEST(RemoveSuffix, CutsItFromTheEndOnly) {
    EXPECT_EQ("a", FileUtils::removeSuffix("abc", "bc"));
    EXPECT_EQ("abc", FileUtils::removeSuffix("abc", "x"));
    EXPECT_EQ("abc", FileUtils::removeSuffix("abc", "ab"));
    EXPECT_EQ("abc", FileUtils::removeSuffix("abc", "zabc"));
    EXPECT_EQ("", FileUtils::removeSuffix("abc", "abc"));
    EXPECT_EQ("abc", FileUtils::removeSuffix("abc", ""));
    EXPECT_EQ("ab", FileUtils::removeSuffix("abcc", "cc"));
}

TEST(ToBackslashes, TurnsEverySlash) {
    EXPECT_EQ("\\a\\b\\\\", FileUtils::toBackslashes("/a\\b//"));
}

TEST(ReplaceChar, WorksInPlace) {
    std::string text = "a.b.c";
    FileUtils::replaceChar(text, '.', '-');
    EXPECT_EQ("a-b-c", text);
}

TEST(TrimTrailingWhitespace, CutsTheFinalRun) {
    EXPECT_EQ(" a b", FileUtils::trimTrailingWhitespace(" a b \t\r\n"));
    EXPECT_EQ("", FileUtils::trimTrailingWhitespace(" \t\r\n"));
    EXPECT_EQ("", FileUtils::trimTrailingWhitespace(""));
    EXPECT_EQ("a\v", FileUtils::trimTrailingWhitespace("a\v"));
}

TEST(WithoutByteOrderMark, CutsTheWholeMarkAtTheBeginningOnly) {
    EXPECT_EQ("v 1", FileUtils::withoutByteOrderMark("\xEF\xBB\xBFv 1"));
    EXPECT_EQ("v\xEF\xBB\xBF", FileUtils::withoutByteOrderMark("v\xEF\xBB\xBF"));
    EXPECT_EQ("\xEF\xBB", FileUtils::withoutByteOrderMark("\xEF\xBB"));
    EXPECT_EQ("", FileUtils::withoutByteOrderMark(""));
}

TEST(ToLowerCase, ChangesAsciiLettersOnly) {
    EXPECT_EQ("azaz09@[`{\xC3\x84", FileUtils::toLowerCase("AZaz09@[`{\xC3\x84"));
}

TEST(FileExists, SeesFilesAndDirectories) {
    const TempDir dir;
    writeFileBytes(dir.file("a"), "");
    EXPECT_TRUE(FileUtils::fileExists(dir.file("a")));
    EXPECT_TRUE(FileUtils::fileExists(dir.path()));
    EXPECT_FALSE(FileUtils::fileExists(dir.file("b")));
    EXPECT_FALSE(FileUtils::fileExists(""));
}

TEST(CreateDir, MakesOneLevel) {
    const TempDir dir;
    FileUtils::createDir(dir.file("one"));
    EXPECT_TRUE(FileUtils::fileExists(dir.file("one")));
    EXPECT_THROW(FileUtils::createDir(dir.file("two\\three")), FileUtils::FileUtilsExcep);
    EXPECT_FALSE(FileUtils::fileExists(dir.file("two")));
}

TEST(CreateDir, RefusesWhatExists) {
    const TempDir dir;
    try {
        FileUtils::createDir(dir.path());
        FAIL() << "nothing was thrown";
    } catch (const FileUtils::FileUtilsExcep& failure) {
        const std::string& message = failure.getMessage();
        EXPECT_TRUE(message.starts_with("Failed to create directory '" + dir.path() + "': ")) << message;
        EXPECT_TRUE(message.ends_with(")")) << message;
    }
}

TEST(OpenOutputFile, BinaryKeepsLineFeeds) {
    const TempDir dir;
    std::ofstream file;
    ASSERT_TRUE(FileUtils::openOutputFile(file, dir.file("a"), false));
    file << "a\nb\r\n";
    file.close();
    EXPECT_EQ("a\nb\r\n", readFileBytes(dir.file("a")));
}

TEST(OpenOutputFile, TextGetsTheSystemsLineEnds) {
    const TempDir dir;
    std::ofstream file;
    ASSERT_TRUE(FileUtils::openOutputFile(file, dir.file("a"), true));
    file << "a\n";
    file.close();
    EXPECT_EQ(withSystemLineEnds("a\n"), readFileBytes(dir.file("a")));
}

TEST(OpenOutputFile, TellsOfFailure) {
    const TempDir dir;
    std::ofstream file;
    EXPECT_FALSE(FileUtils::openOutputFile(file, dir.file("missing\\a"), false));
    EXPECT_TRUE(file.fail());
}

TEST(TemporaryFile, TakesThePlaceOfTheFinalOne) {
    const TempDir dir;
    writeFileBytes(dir.file("ä"), "old");
    {
        FileUtils::TemporaryFile file(dir.file("ä"));
        writeFileBytes(file.path(), "new");
        EXPECT_TRUE(file.moveToFinalPath());
    }
    EXPECT_EQ(readFileBytes(dir.file("ä")), "new");
    EXPECT_EQ(dir.names(), std::vector<std::string>{"ä"});
}

TEST(TemporaryFile, IsRemovedWhenItDoesNotTakeIt) {
    const TempDir dir;
    FileUtils::createDir(dir.file("folder"));
    {
        FileUtils::TemporaryFile file(dir.file("folder"));
        writeFileBytes(file.path(), "new");
        EXPECT_FALSE(file.moveToFinalPath()) << "a folder has the name";
    }
    EXPECT_EQ(dir.names(), std::vector<std::string>{"folder"});
}

TEST(TemporaryFile, HasANameOfItsOwnInTheFolderOfTheFinalOne) {
    const FileUtils::TemporaryFile one("a\\b.vmmesh");
    const FileUtils::TemporaryFile other("a\\b.vmmesh");
    EXPECT_NE(one.path(), other.path());
    EXPECT_EQ(FileUtils::getDirectory(one.path()), "a");
    EXPECT_TRUE(one.path().ends_with(".tmp"));
}

TEST(Paths, WorkWithBlanksHashesAndAllOfUnicode) {
    const TempDir dir;
    for (const std::string name :
         {"with blank", "#1", "Größe", "一二", "\xF0\x9F\x98\x80", "a%20b&c;d", "dot.in.name"}) {
        const std::string folder = FileUtils::join(dir.path(), name);
        const std::string path = FileUtils::join(folder, name + ".xml");
        EXPECT_FALSE(FileUtils::fileExists(folder));
        FileUtils::createDir(folder);
        std::ofstream file;
        ASSERT_TRUE(FileUtils::openOutputFile(file, path, false)) << path;
        file << name;
        file.close();
        EXPECT_TRUE(FileUtils::fileExists(path));
        EXPECT_EQ(name, MappedFile(path).getText());
        EXPECT_EQ(name, readFileBytes(path));
    }
}

TEST(Paths, MayBeLongerThanTheSystemsOldLimit) {
    const TempDir dir;
    std::string folder = dir.path();
    // Lengths around the limits for directories and for files are all met on the way.
    while (folder.size() < 400) {
        folder += "\\folder17charslong";
        FileUtils::createDir(folder);
        ASSERT_TRUE(FileUtils::fileExists(folder)) << folder.size();
    }
    for (std::size_t length = 1; length < 100; length += 9) {
        const std::string path = folder + "/" + std::string(length, 'n');
        std::ofstream file;
        ASSERT_TRUE(FileUtils::openOutputFile(file, path, false)) << path.size();
        file << length;
        file.close();
        EXPECT_EQ(std::to_string(length), MappedFile(path).getText());
    }
    EXPECT_FALSE(FileUtils::fileExists(folder + "\\missing"));
}

TEST(Paths, OfEachLengthAroundTheOldLimitWork) {
    const TempDir dir;
    const std::string base = dir.path() + '\\';
    for (std::size_t length = 240; length <= 265; ++length) {
        // Two levels, since one name has a limit of its own.
        const std::string folder = base + std::string(length - base.size(), 'd');
        FileUtils::createDir(folder);
        EXPECT_TRUE(FileUtils::fileExists(folder)) << length;
        const std::string path = base + std::string(length - base.size(), 'f');
        std::ofstream file;
        ASSERT_TRUE(FileUtils::openOutputFile(file, path, false)) << length;
        file << "x";
        file.close();
        EXPECT_EQ("x", MappedFile(path).getText());
    }
}

} // namespace FileUtilsTests
