#include "scene/NumberText.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <utility>

namespace NumberTextTests {

using namespace Velmar;

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
    std::mt19937_64 random(7);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        ASSERT_EQ(std::strtod(doubleToString(value).c_str(), nullptr), value);
    }
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
