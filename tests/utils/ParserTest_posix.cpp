#include "velmarexceptions.h"

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
