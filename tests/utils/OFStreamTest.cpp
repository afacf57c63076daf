#include "utils/OFStream.h"

#include "tests/support/FileBytes.h"
#include "tests/support/Slots.h"
#include "tests/support/TempDir.h"
#include "utils/FileUtils.h"

#include <clocale>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <locale>
#include <string>

namespace OFStreamTests {

using TestSupport::readFileBytes;
using TestSupport::TempDir;
using TestSupport::withSystemLineEnds;
using Velmar::OFStream;
using Velmar::String;

namespace {

String stringOf(const std::string& text) {
    return Velmar::toVelmarString(text);
}

class CommaPoint : public std::numpunct<char> {
  protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// What is written for one double.
std::string written(double value) {
    const TempDir dir;
    const std::string path = dir.file("number");
    {
        OFStream stream(stringOf(path));
        stream.write(value);
    }
    return readFileBytes(path);
}

} // namespace

TEST(OFStream, WritesBytesAsTheyStandButForLineEnds) {
    const TempDir dir;
    const std::string path = dir.file("a.xml");
    const std::string text("\tä\0b\r \"<", 9);
    {
        OFStream stream(stringOf(path));
        stream.write(stringOf(text));
        stream.write("line\nnext\n");
        stream.write(String());
        EXPECT_FALSE(stream.failed());
    }
    EXPECT_EQ(text + withSystemLineEnds("line\nnext\n"), readFileBytes(path));
}

TEST(OFStream, ReplacesTheFileThatIsThere) {
    const TempDir dir;
    const std::string path = dir.file("a.xml");
    TestSupport::writeFileBytes(path, "something longer");
    {
        OFStream stream(stringOf(path));
        stream.write("new");
    }
    EXPECT_EQ("new", readFileBytes(path));
}

TEST(OFStream, DoublesHaveSixSignificantDigits) {
    EXPECT_EQ("0.333333", written(1.0 / 3));
    EXPECT_EQ("1", written(1.0));
    EXPECT_EQ("1e+06", written(1000000.0));
    EXPECT_EQ("1.23457e-05", written(0.0000123456789));
    EXPECT_EQ("-0", written(-0.0));
    EXPECT_EQ("inf", written(std::numeric_limits<double>::infinity()));
}

TEST(OFStream, NumbersIgnoreTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    const std::string text = written(12345.5);
    std::locale::global(before);
    EXPECT_EQ("12345.5", text);
}

TEST(OFStream, TextsAndNumbersKeepTheirOrder) {
    const TempDir dir;
    const std::string path = dir.file("a");
    {
        OFStream stream(stringOf(path));
        stream.write("x=");
        stream.write(0.5);
        stream.write(";");
    }
    EXPECT_EQ("x=0.5;", readFileBytes(path));
}

TEST(OFStream, MoreThanItsBufferComesOutWhole) {
    const TempDir dir;
    const std::string path = dir.file("large");
    std::string expected;
    {
        OFStream stream(stringOf(path));
        for (int i = 0; i < 40000; ++i) {
            const std::string line = "line " + std::to_string(i) + "\n";
            stream.write(stringOf(line));
            expected += line;
        }
        const std::string block(300000, 'b');
        stream.write(stringOf(block));
        expected += block;
        EXPECT_FALSE(stream.failed());
    }
    EXPECT_EQ(withSystemLineEnds(expected), readFileBytes(path));
}

TEST(OFStream, AFailedOpenOnlySetsTheState) {
    const TempDir dir;
    const std::string path = dir.file("missing\\a.xml");
    OFStream stream(stringOf(path));
    EXPECT_TRUE(stream.failed());
    stream.write("text");
    stream.write(1.0);
    stream.flush();
    EXPECT_TRUE(stream.failed());
    EXPECT_FALSE(FileUtils::fileExists(dir.file("missing")));
}

TEST(OFStream, ADirectoryCantBeOpened) {
    const TempDir dir;
    const OFStream stream(stringOf(dir.path()));
    EXPECT_TRUE(stream.failed());
}

TEST(OFStream, OpensNonAsciiPaths) {
    const TempDir dir;
    const std::string path = dir.file("Größe # 一 \xF0\x9F\x98\x80.xml");
    {
        OFStream stream(stringOf(path));
        stream.write("here");
    }
    EXPECT_EQ("here", readFileBytes(path));
}

TEST(OFStream, OperationsAreInTheOrderOfTheirSlots) {
    const TempDir dir;
    const std::string path = dir.file("a");
    auto* const stream = new OFStream(stringOf(path));
    const String text("text ");
    TestSupport::callSlot<void>(stream, 1, &text);
    TestSupport::callSlot<void>(stream, 2, 1.5);
    EXPECT_EQ(stream, TestSupport::callSlot<void*>(stream, 0, 1U));
    EXPECT_EQ("text 1.5", readFileBytes(path));
}

} // namespace OFStreamTests
