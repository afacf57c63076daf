#include "scene/NumberText.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <double-conversion/double-conversion.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace NumberTextTests {

using namespace Velmar;

namespace {

/// The texts of double-conversion, which documents have had from the start.
template <class Float>
std::string expectedText(Float value) {
    using double_conversion::DoubleToStringConverter;
    static const DoubleToStringConverter converter(DoubleToStringConverter::UNIQUE_ZERO, "Inf", "NaN", 'e', -6, 21, 0,
                                                   0);
    char text[128];
    double_conversion::StringBuilder builder(text, sizeof text);
    if constexpr (std::is_same_v<Float, double>)
        converter.ToShortest(value, &builder);
    else
        converter.ToShortestSingle(value, &builder);
    return builder.Finalize();
}

std::vector<double> doublesOfAnyBits() {
    std::mt19937_64 random(7);
    std::vector<double> doubles(100000);
    for (double& value : doubles)
        value = std::bit_cast<double>(std::uint64_t{random()});
    return doubles;
}

void expectSameText(double value) {
    for (const double x : {value, -value, std::nextafter(value, 0.0), std::nextafter(value, 1e300)})
        ASSERT_EQ(doubleToString(x), expectedText(x));
    const auto narrow = static_cast<float>(value);
    ASSERT_EQ(floatToString(narrow), expectedText(narrow));
    ASSERT_EQ(doubleToString(static_cast<double>(narrow)), expectedText(static_cast<double>(narrow)));
}

} // namespace

TEST(DoubleToString, WritesTheShortestDigitsInTheDocumentsForm) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, const char*> cases[] = {
        {1.0, "1"},
        {0.1, "0.1"},
        {1.0 / 3.0, "0.3333333333333333"},
        {1000000.0, "1000000"},
        {1e20, "100000000000000000000"},
        {1e21, "1e21"},
        {0.000001, "0.000001"},
        {1.5e-7, "1.5e-7"},
        {infinity, "Inf"},
        {-infinity, "-Inf"},
        {std::numeric_limits<double>::quiet_NaN(), "NaN"},
        {-1.0, "-1"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e308"},
        {std::numeric_limits<double>::denorm_min(), "5e-324"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(doubleToString(value), text);
}

TEST(DoubleToString, BothZerosAreZeroWithoutASign) {
    EXPECT_EQ(doubleToString(0.0), "0");
    EXPECT_EQ(doubleToString(-0.0), "0");
}

TEST(DoubleToString, AWidenedFloatShowsAllDigitsOfTheDouble) {
    EXPECT_EQ(doubleToString(static_cast<double>(0.1f)), "0.10000000149011612");
}

TEST(DoubleToString, ReadsBackAsTheSameDouble) {
    for (const double value : doublesOfAnyBits()) {
        if (!std::isfinite(value)) continue;
        ASSERT_EQ(std::strtod(doubleToString(value).c_str(), nullptr), value);
    }
}

TEST(DoubleToString, AnyBitsHaveTheTextOfDoubleConversion) {
    for (const double value : doublesOfAnyBits())
        ASSERT_NO_FATAL_FAILURE(expectSameText(value));
}

TEST(DoubleToString, NumbersOfAllLengthsHaveTheTextOfDoubleConversion) {
    std::mt19937_64 random(12);
    for (int exponent = -30; exponent <= 30; ++exponent)
        for (std::uint64_t bound = 10; bound <= 100'000'000'000'000'000; bound *= 10)
            for (int i = 0; i < 100; ++i) {
                const double value = static_cast<double>(random() % bound) * std::pow(10.0, exponent);
                ASSERT_NO_FATAL_FAILURE(expectSameText(value));
                ASSERT_NO_FATAL_FAILURE(expectSameText(static_cast<double>(bound) * std::pow(10.0, exponent)));
            }
}

TEST(DoubleToString, PowersOfTwoHaveTheTextOfDoubleConversion) {
    for (int exponent = -1080; exponent <= 1023; ++exponent)
        ASSERT_NO_FATAL_FAILURE(expectSameText(std::ldexp(1.0, exponent)));
}

TEST(FloatToString, WritesTheShortestDigitsOfTheFloat) {
    EXPECT_EQ(floatToString(0.1f), "0.1");
    EXPECT_EQ(floatToString(0.25f), "0.25");
    EXPECT_EQ(floatToString(-0.0f), "0");
    EXPECT_EQ(floatToString(1e21f), "1e21");
    EXPECT_EQ(floatToString(std::numeric_limits<float>::infinity()), "Inf");
    EXPECT_EQ(floatToString(std::numeric_limits<float>::quiet_NaN()), "NaN");
}

TEST(IntegerToString, WritesPlainDecimalDigits) {
    EXPECT_EQ(int32ToString(0), "0");
    EXPECT_EQ(int32ToString(std::numeric_limits<std::int32_t>::min()), "-2147483648");
    EXPECT_EQ(uint32ToString(0xFFFFFFFF), "4294967295");
}

TEST(BoolToString, WritesWords) {
    EXPECT_EQ(boolToString(true), "true");
    EXPECT_EQ(boolToString(false), "false");
}

} // namespace NumberTextTests
