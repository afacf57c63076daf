#include "utils/numbers/Digits.h"

#include <gtest/gtest.h>
#include <string>

namespace DigitsTests {

namespace {

TEST(Digits, AreToldFromAllOtherBytes) {
    for (int c = 0; c < 256; ++c) {
        const bool is_digit = c >= '0' && c <= '9';
        EXPECT_EQ(Digits::isDigit(static_cast<char>(c)), is_digit) << c;
        for (int place = 0; place < 48; ++place) {
            std::string text(48, '5');
            text[static_cast<std::size_t>(place)] = static_cast<char>(c);
            const auto expected = [&](int bytes) {
                const std::uint64_t after_end = ~std::uint64_t{0} << bytes;
                return after_end | (is_digit || place >= bytes ? 0 : std::uint64_t{1} << place);
            };
            EXPECT_EQ(Digits::findOthers<48>(text.data()), expected(48)) << c;
            EXPECT_EQ(Digits::findOthers<32>(text.data()), expected(32)) << c;
            EXPECT_EQ(Digits::findOthers<16>(text.data()), expected(16)) << c;
        }
    }
}

TEST(Digits, EightAreJoined) {
    EXPECT_EQ(Digits::join(Digits::loadEight("12345678")), 12345678U);
    EXPECT_EQ(Digits::join(Digits::loadEight("99999999")), 99999999U);
    EXPECT_EQ(Digits::join(Digits::loadEight("00000000")), 0U);
}

TEST(Digits, FourNumbersAreJoinedWhateverStandsBehindThem) {
    const std::string first = "98765432/1x\xFF";
    const std::string second = "40960001-9999999";
    for (std::size_t a = 0; a <= 8; ++a)
        for (std::size_t b = 0; b <= 8; ++b) {
            const Digits::Four numbers = Digits::join(Digits::makePair(first.data(), a, second.data(), b),
                                                      Digits::makePair(second.data(), a, first.data(), b));
            const auto value = [](const std::string& text, std::size_t count) {
                return count == 0 ? 0 : static_cast<std::uint32_t>(std::stoul(text.substr(0, count)));
            };
            EXPECT_EQ(numbers.get<0>(), value(first, a));
            EXPECT_EQ(numbers.get<1>(), value(second, b));
            EXPECT_EQ(numbers.get<2>(), value(second, a));
            EXPECT_EQ(numbers.get<3>(), value(first, b));
            EXPECT_EQ(numbers.minusOne().get<1>(), value(second, b) - 1);
        }
}

} // namespace

} // namespace DigitsTests
