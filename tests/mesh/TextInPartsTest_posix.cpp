#include "velmarexceptions.h"

#include "mesh/TextInParts.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"

#include <filesystem>
#include <gtest/gtest.h>

// A file with a hole costs no disk here.

TEST(ParserOver, RefusesAFileThatItsOffsetsCantReach) {
    const TestSupport::TempDir dir;
    const std::string path = dir.file("large");
    TestSupport::writeFileBytes(path, "v");
    std::filesystem::resize_file(TestSupport::systemPath(path), std::uintmax_t{1} << 32);
    const MappedFile file(path);
    try {
        parserOver(file);
        FAIL() << "nothing was thrown";
    } catch (const Velmar::Exception& failure) {
        EXPECT_EQ("File is too large to be parsed: 4294967296 bytes, at most 4294967295 are possible.",
                  failure.getMessage());
    }
}

TEST(TextInParts, RefusesAPartThatNoParserReaches) {
    const TestSupport::TempDir dir;
    const std::string path = dir.file("large");
    TestSupport::writeFileBytes(path, "v");
    std::filesystem::resize_file(TestSupport::systemPath(path), std::uintmax_t{1} << 33);
    const MappedFile file(path);
    const auto findPartEnd = [](std::string_view, std::size_t start, std::size_t) {
        return start == 0 ? (std::size_t{1} << 32) - 1 : std::size_t{1} << 33;
    };
    Velmar::TextInParts text(file.getText(), 1, findPartEnd);
    EXPECT_EQ(text.parser.size, 0xFFFFFFFF);
    EXPECT_FALSE(text.nextPart()) << "the first isn't read yet";
    text.parser.pos = text.parser.size;
    try {
        text.nextPart();
        FAIL() << "nothing was thrown";
    } catch (const Velmar::Exception& failure) {
        EXPECT_EQ("A line is too long: 4294967297 bytes.", failure.getMessage());
    }
}

TEST(ParserOver, TakesTheLargestFileThatItsOffsetsReach) {
    const TestSupport::TempDir dir;
    const std::string path = dir.file("large");
    TestSupport::writeFileBytes(path, "12");
    std::filesystem::resize_file(TestSupport::systemPath(path), (std::uintmax_t{1} << 32) - 1);
    const MappedFile file(path);
    Parser parser = parserOver(file);
    float value = 0;
    EXPECT_TRUE(parser.parseFloat(value));
    EXPECT_EQ(12.0F, value);
    parser.pos = parser.size - 1;
    EXPECT_FALSE(parser.parseFloat(value));
    EXPECT_EQ(parser.size - 1, parser.pos);
}
