#include "utils/numbers/PlainFloats.h"

#include "tests/support/ExactBlock.h"
#include "tests/utils/Format.h"
#include "utils/Parser.h"

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace PlainFloatsTests {

using namespace TestSupport;

namespace {

/// How far a function reads in `text`, which is followed by no more bytes than it may look at; 0 for nothing.
template <class Scan>
std::size_t consumedBy(const std::string& text, Scan scan) {
    std::string padded = text;
    padded.resize(std::max(padded.size(), PlainFloats::reach), 'x');
    const ExactBlock block(padded);
    const char* const next = scan(block.data());
    return next == nullptr ? 0 : static_cast<std::size_t>(next - block.data());
}

template <std::size_t count>
std::size_t scanned(const std::string& text, float (&numbers)[count]) {
    return consumedBy(text, [&](const char* p) { return PlainFloats::scan(p, numbers); });
}

std::size_t scannedWithExponents(const std::string& text, float (&numbers)[3]) {
    return consumedBy(text, [&](const char* p) { return PlainFloats::scanWithExponents(p, numbers); });
}

/// The `consumed` bytes at the start of `text` are what the parser reads there, and `numbers` its numbers to the bit.
template <std::size_t count>
testing::AssertionResult areTheParsers(const std::string& text, std::size_t consumed, const float (&numbers)[count]) {
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

/// Whatever is read is what the parser reads there.
template <std::size_t count>
testing::AssertionResult agreesWithParser(const std::string& text, bool must_be_plain) {
    float numbers[count] = {};
    if (const std::size_t consumed = scanned(text, numbers); consumed != 0)
        return areTheParsers(text, consumed, numbers);
    if (must_be_plain) return testing::AssertionFailure() << "'" << text << "' isn't plain";
    return testing::AssertionSuccess();
}

testing::AssertionResult agreesWithExponents(const std::string& text, bool must_be_plain) {
    float numbers[3] = {};
    const std::size_t consumed = scannedWithExponents(text, numbers);
    const std::size_t passed = consumedBy(text, PlainFloats::pass);
    if (passed < consumed) return testing::AssertionFailure() << "'" << text << "' isn't passed";
    if (consumed != 0) return areTheParsers(text, consumed, numbers);
    if (must_be_plain) return testing::AssertionFailure() << "'" << text << "' isn't plain";
    return testing::AssertionSuccess();
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
    // The third number ends at the last bytes that are looked at together, and after them.
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

TEST(PlainFloats, MayHaveExponents) {
    EXPECT_TRUE(agreesWithExponents("1.000000e+00 -2.5e-03 3E+05\n", true));
    EXPECT_TRUE(agreesWithExponents("1.5 -0.0e+00 0e-10 ", true));
    EXPECT_TRUE(agreesWithExponents("1e+22 9.999999e-16 1234567.12345678e-14\n", true));
    float numbers[3] = {};
    for (const char* text : {"1e5 2 3\n", "1e+5 2 3\n", "1e+005 2 3\n", "1e 2 3\n", "1e+ 2 3\n", "1e+2f 2 3\n",
                             "1ee+02 2 3\n", "1e+02e+02 2 3\n", "1 2 3e+0\n", "1e+0- 2 3\n"}) {
        EXPECT_EQ(scannedWithExponents(text, numbers), 0U) << text;
        EXPECT_EQ(consumedBy(text, PlainFloats::pass), 0U) << text;
    }
    const std::string small = "1.000000e-30 1.0e+38 1e-23\n";
    EXPECT_EQ(scannedWithExponents(small, numbers), 0U) << "not sure of their rounding";
    EXPECT_EQ(consumedBy(small, PlainFloats::pass), small.size() - 1);
}

TEST(PlainFloats, RoundWithExponentsAsTheParserDoes) {
    std::mt19937_64 random(23);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int i = 0; i < 60000; ++i) {
        const auto number = [&] {
            static const std::array<const char*, 4> forms = {"%e", "%.4e", "%.7e", "%.1E"};
            return format(forms[random() % forms.size()],
                          unit(random) * std::pow(10.0, static_cast<int>(random() % 40) - 20));
        };
        ASSERT_TRUE(agreesWithExponents(join(number(), number(), number()), false));
    }
}

TEST(PlainFloats, WithExponentsThatMeetTheMiddleOfTwoFloatsAreLeft) {
    // 2^24 + 1 lies in the middle of two floats.
    EXPECT_TRUE(agreesWithExponents("1.6777217e+07 1.6777217e+07 1.6777219e+07\n", false));
    float numbers[3] = {};
    EXPECT_EQ(scannedWithExponents("1 2 1.6777217e+07\n", numbers), 0U);
    EXPECT_EQ(scannedWithExponents("1.6777217e+07 1 2\n", numbers), 0U);
    EXPECT_EQ(scannedWithExponents("1 1.6777217e+07 2\n", numbers), 0U);
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
        ASSERT_TRUE(agreesWithExponents(text, false));
    }
}

} // namespace

} // namespace PlainFloatsTests
