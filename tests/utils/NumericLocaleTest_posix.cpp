#include "utils/NumericLocale.h"

#include <gtest/gtest.h>
#include <locale.h>

using namespace Velmar;

TEST(PlainNumericLocale, GivesTheThreadItsOwnLocaleBack) {
    const locale_t hosts = newlocale(LC_ALL_MASK, "C.UTF-8", locale_t{});
    ASSERT_NE(hosts, locale_t{});
    const locale_t before = uselocale(hosts);
    {
        const PlainNumericLocale plain;
        EXPECT_NE(uselocale(locale_t{}), hosts);
        EXPECT_STREQ(localeconv()->decimal_point, ".");
    }
    EXPECT_EQ(uselocale(locale_t{}), hosts);
    uselocale(before);
    freelocale(hosts);
}
