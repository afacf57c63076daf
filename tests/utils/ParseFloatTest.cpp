#include "tests/support/ExactBlock.h"
#include "tests/support/ReferenceFloat.h"
#include "tests/utils/Format.h"
#include "utils/Parser.h"

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace ParseFloatTests {

using namespace TestSupport;

namespace {

/// The parser reads `text` exactly as the reference does: success, every bit of the value, cursor.
testing::AssertionResult agrees(std::string_view text) {
    const ReferenceFloat expected = readReferenceFloat(text);
    Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    constexpr float untouched = -12345.5F;
    float value = untouched;
    const bool parsed = parser.parseFloat(value);
    const bool same_value = std::bit_cast<std::uint32_t>(value) ==
                            std::bit_cast<std::uint32_t>(expected.parsed ? expected.value : untouched);
    if (parsed == expected.parsed && same_value && parser.pos == expected.consumed) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "'" << text << "': " << parsed << " " << value << " up to " << parser.pos
                                       << ", expected " << expected.parsed << " " << expected.value << " up to "
                                       << expected.consumed;
}

/// As `agrees`, at the very end of a buffer and with more text after it.
testing::AssertionResult agreesEverywhere(const std::string& text) {
    const ExactBlock alone(text);
    if (auto result = agrees({alone.data(), alone.size()}); !result) return result << " (at the end)";
    static const std::array<std::string, 8> followers = {" ", "\n", "/", "f", "e", ".", "-", "x"};
    for (const std::string& follower : followers)
        if (auto result = agrees(text + follower + std::string(80, ' ')); !result)
            return result << " (followed by '" << follower << "')";
    return testing::AssertionSuccess();
}

float parsed(const std::string& text) {
    Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    float value = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(parser.parseFloat(value)) << text;
    return value;
}

} // namespace

TEST(ParseFloat, PassesOneSuffixLetter) {
    const std::string text = "1.5ff";
    Parser parser(text.data(), 5);
    float value = 0;
    ASSERT_TRUE(parser.parseFloat(value));
    EXPECT_EQ(1.5F, value);
    EXPECT_EQ(4U, parser.pos);
}

TEST(ParseFloat, ReadsExponentsAndBarePoints) {
    EXPECT_EQ(1000.0F, parsed("1e3"));
    EXPECT_EQ(0.5F, parsed(".5"));
    EXPECT_EQ(5.0F, parsed("5."));
    EXPECT_EQ(-0.25F, parsed("-2.5E-1"));
    EXPECT_TRUE(std::signbit(parsed("-0")));
}

TEST(ParseFloat, FailsWithTheCursorInPlace) {
    for (const std::string text : {"",  " 1", "\t1", "nan", "inf",  "-inf", "NaN", "Infinity", "abc", ".",
                                   "-", "+",  "-.",  ".e3", "+.e3", "e5",   "--1", "+-1",      "- 1", "f"}) {
        Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
        float value = 7;
        EXPECT_FALSE(parser.parseFloat(value)) << text;
        EXPECT_EQ(0U, parser.pos) << text;
        EXPECT_EQ(7, value) << text;
    }
}

TEST(ParseFloat, ReadsFromTheCursorOn) {
    const std::string text = "1 -2.5 3e2";
    Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    float value = 0;
    for (const float expected : {1.0F, -2.5F, 300.0F}) {
        ASSERT_TRUE(parser.parseFloat(value));
        EXPECT_EQ(expected, value);
        parser.skipBlanks();
    }
    EXPECT_TRUE(parser.atEnd());
    EXPECT_FALSE(parser.parseFloat(value));
}

TEST(ParseFloat, IgnoresTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    bool comma = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "German_Germany.1252", "de-DE"})
        comma = comma || std::setlocale(LC_ALL, name) != nullptr;
    EXPECT_TRUE(agreesEverywhere("1.5"));
    EXPECT_TRUE(agreesEverywhere("1,5"));
    EXPECT_EQ(1.5F, parsed("1.5"));
    EXPECT_EQ(1.0F, parsed("1,5"));
    std::setlocale(LC_ALL, before.c_str());
    RecordProperty("comma_locale", comma ? "yes" : "no");
}

TEST(ParseFloat, AgreesWithTheReferenceOnAwkwardForms) {
    const std::vector<std::string> signs = {"", "+", "-", "--", "+-"};
    const std::vector<std::string> integers = {"",
                                               "0",
                                               "00",
                                               "1",
                                               "007",
                                               "16777217",
                                               "4294967296",
                                               "9007199254740993",
                                               "18446744073709551615",
                                               "18446744073709551616",
                                               std::string(30, '0'),
                                               std::string(40, '9'),
                                               std::string(800, '1'),
                                               "x",
                                               "0x10",
                                               "inf",
                                               "nan"};
    const std::vector<std::string> fractions = {"",
                                                ".",
                                                ".0",
                                                ".5",
                                                ".00000000",
                                                ".12345678",
                                                ".123456789",
                                                ".0000000000000000000000000000000000000001",
                                                ".1234567812345678",
                                                "..",
                                                ".-1",
                                                "." + std::string(800, '3')};
    const std::vector<std::string> exponents = {
        "",    "e",    "E",    "e+",    "e-",   "e5",           "E+05",         "e-7",           "e22", "e-22", "e38",
        "e39", "e-45", "e-46", "e-400", "e400", "e00000000005", "e99999999999", "e-99999999999", "ex",  "e5.5", "e+-3"};
    const std::vector<std::string> suffixes = {"", "f", "F", "ff", "fe", "d"};
    for (const auto& sign : signs)
        for (const auto& integer : integers)
            for (const auto& fraction : fractions)
                for (const auto& exponent : exponents)
                    for (const auto& suffix : suffixes)
                        ASSERT_TRUE(agreesEverywhere(sign + integer + fraction + exponent + suffix));
}

TEST(ParseFloat, AgreesWithTheReferenceOnEveryShortText) {
    const std::string letters = "+-.059eEfx \n";
    for (std::size_t length = 1; length <= 5; ++length) {
        std::vector<std::size_t> digits(length, 0);
        for (bool more = true; more;) {
            std::string text;
            for (const std::size_t digit : digits)
                text += letters[digit];
            ASSERT_TRUE(agrees(text));
            ASSERT_TRUE(agrees(text + std::string(FloatScanner::reach, ' ')));
            std::size_t place = 0;
            while (place < length && ++digits[place] == letters.size())
                digits[place++] = 0;
            more = place < length;
        }
    }
}

TEST(ParseFloat, AgreesWithTheReferenceAroundTheMiddleOfTwoFloats) {
    std::mt19937_64 random(11);
    for (int i = 0; i < 60000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random() % 0x7F800000U);
        const auto below = static_cast<double>(std::bit_cast<float>(bits));
        const auto above = static_cast<double>(std::bit_cast<float>(bits + 1));
        const double middle = std::isinf(above) ? 0x1.ffffffp127 : below / 2 + above / 2;
        for (const double value : {middle, std::nextafter(middle, 0.0), std::nextafter(middle, 1e300)}) {
            // The last form shows most middles exactly.
            for (const char* form : {"%.17g", "%.18e", "%.60g", "%.150g"})
                ASSERT_TRUE(agrees(format(form, value) + (i % 2 == 0 ? "" : std::string(FloatScanner::reach, ' '))));
        }
    }
}

TEST(ParseFloat, AgreesWithTheReferenceOnMiddlesWithinTheFastRange) {
    std::mt19937_64 random(12);
    for (int i = 0; i < 300000; ++i) {
        // An odd number of 25 bits is the middle of two floats, whatever power of two it is multiplied by.
        const std::uint64_t odd = (random() & 0xFFFFFF) | 0x1000001;
        const std::uint64_t shifted = odd << random() % 38;
        const std::int64_t nudge = static_cast<std::int64_t>(random() % 5) - 2;
        const std::string number = std::to_string(shifted + static_cast<std::uint64_t>(nudge));
        ASSERT_TRUE(agrees(number + std::string(FloatScanner::reach, ' ')));
        ASSERT_TRUE(agrees(number + ".00000000001 " + std::string(FloatScanner::reach, ' ')));
        const double fraction = static_cast<double>(odd) / static_cast<double>(std::uint64_t{1} << random() % 60);
        ASSERT_TRUE(agrees(format("%.19f", fraction) + std::string(FloatScanner::reach, ' ')));
        ASSERT_TRUE(agrees(format("%.16f", fraction) + std::string(FloatScanner::reach, ' ')));
    }
}

TEST(ParseFloat, AgreesWithTheReferenceOnSubnormalsAndOverflow) {
    std::mt19937_64 random(13);
    for (int i = 0; i < 50000; ++i) {
        const float small = std::bit_cast<float>(static_cast<std::uint32_t>(random() & 0x00FFFFFF));
        const float large = std::bit_cast<float>(static_cast<std::uint32_t>(0x7E000000U + (random() & 0x017FFFFF)));
        for (const char* form : {"%.9g", "%.60f", "%.20e"}) {
            ASSERT_TRUE(agrees(format(form, static_cast<double>(small))));
            ASSERT_TRUE(agrees(format(form, static_cast<double>(large) * 1.00001)));
        }
    }
}

TEST(ParseFloat, AgreesWithTheReferenceOnMillionsOfPrintedNumbers) {
    std::mt19937_64 random(14);
    const std::array<const char*, 12> forms = {"%.6f", "%.3f",  "%g",    "%.9g",  "%.17g", "%e",
                                               "%.0f", "%.12e", "%+.8f", "%010f", "%.18g", "%.19e"};
    const std::string following = " " + std::string(FloatScanner::reach, '1');
    for (int i = 0; i < 1500000; ++i) {
        const char* const form = forms[random() % forms.size()];
        const double unit = static_cast<double>(random() >> 11) * 0x1p-53;
        const double scale = std::ldexp(1.0, static_cast<int>(random() % 60) - 30);
        ASSERT_TRUE(agrees(format(form, (unit - 0.5) * scale) + following));
    }
}

TEST(ParseFloat, AgreesWithTheReferenceOnMillionsOfRandomTexts) {
    std::mt19937_64 random(15);
    // Digits most often, so that many texts are numbers of all lengths.
    const std::string letters = "01234567890123456789012345678901234567890000....eE+-fF x\n\0";
    std::string text;
    for (int i = 0; i < 3000000; ++i) {
        text.clear();
        const std::size_t length = 1 + random() % 45;
        for (std::size_t k = 0; k < length; ++k)
            text += letters[random() % letters.size()];
        ASSERT_TRUE(agrees(text));
    }
}

TEST(ParseFloat, ReadsNothingBehindTheEndOfTheBuffer) {
    const std::string text = "-123456.78901234567e-12f";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const ExactBlock block(std::string_view(text).substr(0, length));
        EXPECT_TRUE(agrees({block.data(), block.size()}));
    }
}

TEST(ParseFloat, DigitsBehindTheEndOfTheBufferDontCount) {
    const std::string text = "1.2345678";
    Parser parser(text.data(), 4);
    float value = 0;
    ASSERT_TRUE(parser.parseFloat(value));
    EXPECT_EQ(1.23F, value);
    EXPECT_EQ(4U, parser.pos);
}

} // namespace ParseFloatTests
