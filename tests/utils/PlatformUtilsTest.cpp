#include "utils/PlatformUtils.h"

#include <gtest/gtest.h>
#include <string>

namespace PlatformUtilsTests {

TEST(ErrorText, UnknownCodesAreShownAsSuch) {
    EXPECT_EQ("[Unknown (error code=1234567)]", PlatformUtils::getErrorText(1234567));
}

TEST(ErrorText, CodesWithTheTopBitPrintAsNegative) {
    EXPECT_EQ("[Unknown (error code=-559038737)]", PlatformUtils::getErrorText(0xDEADBEEF));
}

TEST(ErrorText, KnownCodesGiveASentenceOnOneLineAndTheCode) {
    const std::string text = PlatformUtils::getErrorText(2);
    const std::string code = " (code 2)";
    ASSERT_TRUE(text.ends_with(code)) << text;
    const std::string sentence = text.substr(0, text.size() - code.size());
    EXPECT_FALSE(sentence.empty());
    EXPECT_EQ(std::string::npos, sentence.find_first_of("\r\n"));
    EXPECT_NE(' ', sentence.back());
}

TEST(Clock, MeasuresSeconds) {
    PlatformUtils::initClock();
    const double first = PlatformUtils::getTimeSeconds();
    const double second = PlatformUtils::getTimeSeconds();
    EXPECT_GT(first, 0.0);
    EXPECT_GE(second, first);
    // Two calls in a row can't be a day apart, whatever the machine is doing.
    EXPECT_LT(second - first, 86400.0);
}

} // namespace PlatformUtilsTests
