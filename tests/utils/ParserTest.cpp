#include "utils/Parser.h"

#include "tests/support/ExactBlock.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"
#include "utils/MappedFile.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace ParserTests {

namespace {

Parser over(std::string_view text) {
    return Parser(text.data(), static_cast<std::uint32_t>(text.size()));
}

struct IntCase {
    const char* text;
    std::int32_t value;
    std::uint32_t consumed;
};

} // namespace

TEST(Parser, BeginsAtTheFirstByte) {
    const Parser parser = over("ab");
    EXPECT_EQ(0U, parser.pos);
    EXPECT_EQ(2U, parser.size);
    EXPECT_EQ('a', parser.current());
    EXPECT_FALSE(parser.atEnd());
}

TEST(Parser, FieldsAreInTheirOrder) {
    EXPECT_EQ(0U, offsetof(Parser, text));
    EXPECT_EQ(8U, offsetof(Parser, pos));
    EXPECT_EQ(12U, offsetof(Parser, size));
    EXPECT_EQ(0U, offsetof(Parser::Token, data));
    EXPECT_EQ(8U, offsetof(Parser::Token, size));
}

TEST(ParseAlpha, TakesTheLongestRunOfLetters) {
    Parser parser = over("AZaz0");
    Parser::Token token;
    EXPECT_TRUE(parser.parseAlpha(token));
    EXPECT_EQ("AZaz", token.view());
    EXPECT_EQ(4U, parser.pos);
}

TEST(ParseAlpha, SetsAnEmptyTokenWhenThereIsNoLetter) {
    Parser parser = over("123");
    Parser::Token token{"old", 3};
    EXPECT_FALSE(parser.parseAlpha(token));
    EXPECT_EQ(0U, token.size);
    EXPECT_EQ(parser.text, token.data);
    EXPECT_EQ(0U, parser.pos);
}

TEST(ParseAlpha, StopsAtTheNeighboursOfTheLetters) {
    for (const char c : {'@', '[', '`', '{', '_', '\x80', '\xC1', '\xE1'}) {
        const std::string text = std::string("v") + c;
        Parser parser = over(text);
        Parser::Token token;
        EXPECT_TRUE(parser.parseAlpha(token));
        EXPECT_EQ("v", token.view()) << text;
    }
}

TEST(ParseAlpha, FailsAtTheEnd) {
    Parser parser = over("");
    Parser::Token token;
    EXPECT_FALSE(parser.parseAlpha(token));
}

TEST(ParseIdentifier, TakesLettersDigitsAndUnderscores) {
    Parser parser = over("_map_Kd2-");
    Parser::Token token;
    EXPECT_TRUE(parser.parseIdentifier(token));
    EXPECT_EQ("_map_Kd2", token.view());
}

TEST(ParseIdentifier, MustNotBeginWithADigit) {
    Parser parser = over("2a");
    Parser::Token token;
    EXPECT_FALSE(parser.parseIdentifier(token));
    EXPECT_EQ(0U, parser.pos);
}

TEST(ParseNonBlankToken, EndsAtEachKindOfWhitespace) {
    for (const char c : {' ', '\t', '\n', '\r'}) {
        const std::string text = std::string("a\\#\v1") + c + "b";
        Parser parser = over(text);
        Parser::Token token;
        EXPECT_TRUE(parser.parseNonBlankToken(token));
        EXPECT_EQ("a\\#\v1", token.view());
    }
}

TEST(ParseNonBlankToken, FailsWhenNothingIsThere) {
    Parser::Token token;
    Parser at_end = over("");
    EXPECT_FALSE(at_end.parseNonBlankToken(token));
    Parser at_blank = over(" a");
    EXPECT_FALSE(at_blank.parseNonBlankToken(token));
    EXPECT_EQ(0U, at_blank.pos);
}

TEST(ParseString, MatchesAPrefix) {
    Parser parser = over("facets");
    EXPECT_TRUE(parser.parseString("facet"));
    EXPECT_EQ(5U, parser.pos);
}

TEST(ParseString, FailsOnATextThatEndsTooEarly) {
    const TestSupport::ExactBlock block("sol");
    Parser parser(block.data(), 3);
    EXPECT_FALSE(parser.parseString("solid"));
    EXPECT_EQ(0U, parser.pos);
}

TEST(ParseString, ReturnsToItsStartOnAMismatch) {
    Parser parser = over("solix");
    EXPECT_FALSE(parser.parseString("solid"));
    EXPECT_EQ(0U, parser.pos);
}

TEST(ParseString, EmptyLiteralMatchesAlways) {
    Parser parser(nullptr, 0);
    EXPECT_TRUE(parser.parseString(""));
    Parser further = over("x");
    EXPECT_TRUE(further.parseString(""));
    EXPECT_EQ(0U, further.pos);
}

TEST(ParseInt, ReadsWithinTheSignedRange) {
    const IntCase cases[] = {{"0", 0, 1},
                             {"12abc", 12, 2},
                             {"+7", 7, 2},
                             {"-7", -7, 2},
                             {"-0", 0, 2},
                             {"0000000000000000000012", 12, 22},
                             {"2147483647", std::numeric_limits<std::int32_t>::max(), 10},
                             {"-2147483647", -2147483647, 11},
                             {"-2147483648", std::numeric_limits<std::int32_t>::min(), 11},
                             {"1/2", 1, 1}};
    for (const IntCase& c : cases) {
        Parser parser = over(c.text);
        std::int32_t value = 99;
        EXPECT_TRUE(parser.parseInt(value)) << c.text;
        EXPECT_EQ(c.value, value) << c.text;
        EXPECT_EQ(c.consumed, parser.pos) << c.text;
    }
}

TEST(ParseInt, FailsWithTheCursorInPlace) {
    for (const char* text :
         {"", "+", "-", "--1", "+-1", "a", " 1", "2147483648", "+2147483648", "-2147483649", "2147483649", "2147483650",
          "4294967295", "4294967296", "4294967297", "99999999999", "-99999999999"}) {
        Parser parser = over(text);
        std::int32_t value = 99;
        EXPECT_FALSE(parser.parseInt(value)) << text;
        EXPECT_EQ(99, value) << text;
        EXPECT_EQ(0U, parser.pos) << text;
    }
}

TEST(SkipBlanks, PassesSpacesAndTabsOnly) {
    Parser parser = over(" \t \nx");
    parser.skipBlanks();
    EXPECT_EQ(3U, parser.pos);
}

TEST(SkipBlanks, PassesAContinuationUpToEachKindOfLineEnd) {
    for (const std::string end : {"\n", "\r", "\r\n"}) {
        const std::string text = " \\ ignored" + end + " x";
        Parser parser = over(text);
        parser.skipBlanks();
        ASSERT_FALSE(parser.atEnd());
        EXPECT_EQ('x', parser.current());
    }
}

TEST(SkipBlanks, ContinuationTakesOneLineEndOnly) {
    Parser parser = over("\\\n\nx");
    parser.skipBlanks();
    EXPECT_EQ(2U, parser.pos);
    Parser reversed = over("\\\n\rx");
    reversed.skipBlanks();
    EXPECT_EQ(2U, reversed.pos);
}

TEST(SkipBlanks, ContinuationWithoutALineEndPassesAll) {
    const TestSupport::ExactBlock block("\\ rest");
    Parser parser(block.data(), 6);
    parser.skipBlanks();
    EXPECT_TRUE(parser.atEnd());
    const TestSupport::ExactBlock cut("\\\r");
    Parser at_cut(cut.data(), 2);
    at_cut.skipBlanks();
    EXPECT_TRUE(at_cut.atEnd());
}

TEST(ParserOver, ReadsAMappedFile) {
    const TestSupport::TempDir dir;
    TestSupport::writeFileBytes(dir.file("a.obj"), "v 1");
    const MappedFile file(dir.file("a.obj"));
    Parser parser = parserOver(file);
    EXPECT_EQ(3U, parser.size);
    EXPECT_TRUE(parser.parseString("v 1"));
    EXPECT_TRUE(parser.atEnd());
}

TEST(ParserOver, AnEmptyFileIsAtItsEnd) {
    const TestSupport::TempDir dir;
    TestSupport::writeFileBytes(dir.file("empty"), "");
    const MappedFile file(dir.file("empty"));
    Parser parser = parserOver(file);
    Parser::Token token;
    float value = 0;
    std::int32_t integer = 0;
    EXPECT_TRUE(parser.atEnd());
    parser.skipBlanks();
    EXPECT_FALSE(parser.parseAlpha(token));
    EXPECT_FALSE(parser.parseFloat(value));
    EXPECT_FALSE(parser.parseInt(integer));
    EXPECT_FALSE(parser.parseString("a"));
}

} // namespace ParserTests
