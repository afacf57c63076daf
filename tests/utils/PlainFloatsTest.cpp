#include "utils/PlainFloats.h"

#include "tests/support/ExactBlock.h"
#include "utils/Parser.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>

using TestSupport::ExactBlock;

namespace {

/// What `scan` reads of `text`, which is followed by no more bytes than it may look at; null and zeros for nothing.
template <std::size_t count>
std::size_t scanned(const std::string& text, float (&numbers)[count]) {
    std::string padded = text;
    padded.resize(std::max(padded.size(), PlainFloats::reach), 'x');
    const ExactBlock block(padded);
    const char* const behind = PlainFloats::scan(block.data(), numbers);
    return behind == nullptr ? 0 : static_cast<std::size_t>(behind - block.data());
}

/// Whatever `scan` reads is what the parser reads there: every bit of the numbers, and the place behind them.
template <std::size_t count>
testing::AssertionResult agreesWithParser(const std::string& text, bool must_be_plain) {
    float numbers[count] = {};
    const std::size_t consumed = scanned(text, numbers);
    if (consumed == 0)
        return must_be_plain ? testing::AssertionFailure() << "'" << text << "' isn't plain"
                             : testing::AssertionSuccess();

    Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
    for (const float number : numbers) {
        float expected = 0;
        parser.skipBlanks();
        if (!parser.parseFloat(expected)) return testing::AssertionFailure() << "'" << text << "': not a number";
        if (std::bit_cast<std::uint32_t>(number) != std::bit_cast<std::uint32_t>(expected))
            return testing::AssertionFailure() << "'" << text << "': " << number << ", expected " << expected;
    }
    if (parser.pos != consumed) return testing::AssertionFailure() << "'" << text << "': up to " << consumed;
    return testing::AssertionSuccess();
}

std::string format(const char* form, double value) {
    std::array<char, 64> buffer = {};
    const int length = std::snprintf(buffer.data(), buffer.size(), form, value);
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string join(const std::string& a, const std::string& b, const std::string& c) {
    return a + " " + b + " " + c + "\n";
}

TEST(PlainFloats, AreThoseOfMostFiles) {
    EXPECT_TRUE(agreesWithParser<3>("-50.000000 12.345678 0.000001\n", true));
    EXPECT_TRUE(agreesWithParser<3>("0 -1 1234567 0.5 0.5 0.5", true)) << "a blank may end the numbers";
    EXPECT_TRUE(agreesWithParser<3>("-0 -0.0 -0.00000000\r\n", true)) << "zeros have signs";
    EXPECT_TRUE(agreesWithParser<3>("1234567.12345678 0.1 9\t", true));
    EXPECT_TRUE(agreesWithParser<2>("1234567.12345678 -23456.1234567\n", true));
    EXPECT_TRUE(agreesWithParser<2>("0.123456 1.000000\n", true));
}

TEST(PlainFloats, LeaveAllElseToTheParser) {
    float numbers[3] = {};
    for (const char* text :
         {"",          "x 1 2\n",   "1 2\n",        "1 2 ",        "1 2 x\n",        "1 2 3",
          "1 2 3f\n",  "1 2 3e4\n", "1 2 3.5e-1\n", "1  2 3\n",    "1\t2 3\n",       "1 2 \n3\n",
          ".5 1 2\n",  "5. 1 2\n",  "+1 2 3\n",     "--1 2 3\n",   "1-2 3 4\n",      "1.-2 3 4\n",
          "- 1 2\n",   "-.5 1 2\n", "1..5 2 3\n",   "1.5.5 2 3\n", "12345678 1 2\n", "0.123456789 1 2\n",
          "1,5 2 3\n", "nan 1 2\n", "1 2 3\\\n",    "1 2 3/4\n",   " 1 2 3\n"})
        EXPECT_EQ(scanned(text, numbers), 0U) << text;
}

TEST(PlainFloats, MayFillTheWholeWindow) {
    // The third number ends at the last bytes that are looked at together, and behind them.
    const std::string two = "1234567.12345678 1234567.12345678 ";
    float numbers[3] = {};
    std::string digits;
    for (std::size_t count = 1; count <= 15; ++count) {
        digits = count == 8 ? digits + '.' : digits + static_cast<char>('0' + count % 10);
        const std::string text = two + digits + "\n";
        EXPECT_TRUE(agreesWithParser<3>(text, false)) << text;
        if (count < 14 && count != 8) {
            EXPECT_EQ(scanned(text, numbers), text.size() - 1) << text;
        }
    }
}

TEST(PlainFloats, RoundAsTheParserDoes) {
    std::mt19937_64 random(20);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < 60000; ++i) {
        const auto number = [&] {
            static const std::array<const char*, 6> forms = {"%.6f", "%.8f", "%.3f", "%.1f", "%.0f", "%.7f"};
            const double magnitude = std::pow(10.0, static_cast<double>(random() % 6));
            return format(forms[random() % forms.size()], unit(random) * magnitude * 0.99);
        };
        ASSERT_TRUE(agreesWithParser<3>(join(number(), number(), number()), false));
        ASSERT_TRUE(agreesWithParser<2>(number() + " " + number() + "\r", true));
    }
}

TEST(PlainFloats, RoundRightNearTheMiddleOfTwoFloats) {
    std::mt19937_64 random(21);
    for (int i = 0; i < 60000; ++i) {
        // Two floats side by side, and the decimal numbers next to their middle.
        const auto bits = static_cast<std::uint32_t>(
            std::bit_cast<std::uint32_t>(1e-6F) +
            random() % (std::bit_cast<std::uint32_t>(1e5F) - std::bit_cast<std::uint32_t>(1e-6F)));
        const double low = std::bit_cast<float>(bits);
        const double high = std::bit_cast<float>(bits + 1);
        const std::string middle = format("%.8f", (low + high) / 2);
        const std::string above = format("%.8f", (low + high) / 2 + 1e-8);
        const std::string below = format("%.8f", (low + high) / 2 - 1e-8);
        ASSERT_TRUE(agreesWithParser<2>(middle + " -" + above + "\n", true));
        ASSERT_TRUE(agreesWithParser<2>(below + " " + middle + "\n", true));
    }
}

TEST(PlainFloats, AreNeverReadFromBrokenText) {
    const std::string alphabet = "0123456789.-+eE \t\r\n/fx\\";
    std::mt19937_64 random(22);
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (std::size_t length = random() % 50; text.size() < length;)
            text += random() % 4 == 0 ? alphabet[random() % alphabet.size()] : alphabet[random() % 13];
        text += "\n";
        ASSERT_TRUE(agreesWithParser<2>(text, false));
        ASSERT_TRUE(agreesWithParser<3>(text, false));
    }
}

} // namespace
