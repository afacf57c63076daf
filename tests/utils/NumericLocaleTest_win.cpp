#include "utils/NumericLocale.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>

using namespace Velmar;

TEST(PlainNumericLocale, GivesTheHostItsLocaleBack) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "German_Germany.1252"), nullptr);
    const std::string hosts = std::setlocale(LC_NUMERIC, nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    {
        const PlainNumericLocale plain;
        EXPECT_STREQ(std::localeconv()->decimal_point, ".");
    }
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), hosts);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(PlainNumericLocale, LeavesTheLocaleToTheWholeProcessAgain) {
    constexpr int ask = 0;
    const int before = _configthreadlocale(ask);
    { const PlainNumericLocale plain; }
    EXPECT_EQ(_configthreadlocale(ask), before);
}
