#include "velmarstring.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <string>

namespace StringTests {

using testing::HasSubstr;
using Velmar::BorrowedString;
using Velmar::String;

namespace {

const std::string sixteen = "0123456789abcdef";
const std::string seventeen = sixteen + "g";
const std::string twenty = sixteen + "ghij";

String make(const std::string& text) {
    return Velmar::toVelmarString(text);
}

bool isInline(const String& text) {
    return text.data() == reinterpret_cast<const char*>(&text) + 8;
}

/// The fields of a String as the five words that another module sees.
std::array<std::uint64_t, 5> wordsOf(const String& text) {
    std::array<std::uint64_t, 5> words = {};
    std::memcpy(words.data(), static_cast<const void*>(&text), sizeof text);
    return words;
}

void setWord(String& text, std::size_t index, std::uint64_t value) {
    std::memcpy(reinterpret_cast<char*>(&text) + 8 * index, &value, sizeof value);
}

constexpr std::size_t size_word = 3;
constexpr std::size_t capacity_word = 4;

} // namespace

TEST(String, BeginsEmptyAndInline) {
    String text;
    EXPECT_EQ(0U, text.size());
    EXPECT_EQ(16U, text.capacity());
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(isInline(text));
}

TEST(String, SixteenBytesStayInline) {
    const String text(sixteen.c_str());
    EXPECT_EQ(16U, text.size());
    EXPECT_EQ(16U, text.capacity());
    EXPECT_TRUE(isInline(text));
    EXPECT_EQ(sixteen, text.view());
}

TEST(String, SeventeenBytesFitExactlyOnTheHeap) {
    const String text(seventeen.c_str());
    EXPECT_EQ(17U, text.size());
    EXPECT_EQ(17U, text.capacity());
    EXPECT_FALSE(isInline(text));
    EXPECT_EQ(seventeen, text.view());
}

TEST(String, FieldsAreInTheirOrder) {
    const String text(seventeen.c_str());
    const auto words = wordsOf(text);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(text.data()), words[0]);
    EXPECT_EQ(17U, words[size_word]);
    EXPECT_EQ(17U, words[capacity_word]);
    const String inside("abc");
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&inside) + 8, wordsOf(inside)[0]);
}

TEST(String, CopyTakesTheSizeNotTheCapacity) {
    String wide = make(twenty);
    wide = make(seventeen);
    const String copy(wide);
    EXPECT_EQ(17U, copy.capacity());
    EXPECT_EQ(seventeen, copy.view());
    wide = "short";
    const String short_copy(wide);
    EXPECT_EQ(16U, short_copy.capacity());
    EXPECT_TRUE(isInline(short_copy));
}

TEST(String, CopyHasBytesOfItsOwn) {
    const String first = make(seventeen);
    const String second = first;
    EXPECT_NE(first.data(), second.data());
    EXPECT_TRUE(first == second);
}

TEST(String, FromACountIsThatManyOfAByte) {
    EXPECT_EQ("\t\t\t", String(3, '\t').view());
    EXPECT_EQ(std::string(40, 'x'), String(40, 'x').view());
    EXPECT_EQ(40U, String(40, 'x').capacity());
    EXPECT_TRUE(String(0, 'x').empty());
}

TEST(String, AssignmentKeepsStorageThatIsLargeEnough) {
    String text = make(twenty);
    const char* const storage = text.data();
    text = make(seventeen);
    EXPECT_EQ(20U, text.capacity());
    EXPECT_EQ(storage, text.data());
    EXPECT_EQ(seventeen, text.view());
    text = "";
    EXPECT_EQ(0U, text.size());
    EXPECT_EQ(20U, text.capacity());
    EXPECT_EQ(storage, text.data());
}

TEST(String, AssignmentNeverMovesBackInside) {
    String text = make(seventeen);
    text = "abc";
    EXPECT_FALSE(isInline(text));
    EXPECT_EQ("abc", text.view());
}

TEST(String, AssignmentAllocatesExactly) {
    String text("abc");
    text = make(seventeen);
    EXPECT_EQ(17U, text.capacity());
    text = make(twenty);
    EXPECT_EQ(20U, text.capacity());
    EXPECT_EQ(twenty, text.view());
}

TEST(String, AssigningItselfChangesNothing) {
    String text = make(seventeen);
    const char* const storage = text.data();
    const String& same = text;
    text = same;
    EXPECT_EQ(storage, text.data());
    EXPECT_EQ(seventeen, text.view());
}

TEST(String, SumIsGrownOnce) {
    const String sum = String("0123456789") + String("abcdefgh");
    EXPECT_EQ("0123456789abcdefgh", sum.view());
    EXPECT_EQ(18U, sum.capacity());
}

TEST(String, SumOfSixteenStaysInline) {
    const String sum = String("01234567") + String("89abcdef");
    EXPECT_EQ(sixteen, sum.view());
    EXPECT_TRUE(isInline(sum));
    EXPECT_EQ("ab", (String("ab") + String()).view());
    EXPECT_EQ("ab", (String() + String("ab")).view());
    EXPECT_TRUE((String() + String()).empty());
}

TEST(String, EqualityGoesBySizeThenBytes) {
    EXPECT_TRUE(String() == String(""));
    EXPECT_TRUE(make(seventeen) == make(seventeen));
    EXPECT_FALSE(String("a") == String("ab"));
    EXPECT_FALSE(String("ab") == String("a"));
    EXPECT_FALSE(String("a") == String("b"));
    EXPECT_FALSE(make(std::string("a\0b", 3)) == make(std::string("a\0c", 3)));
    String roomy = make(twenty);
    roomy = "a";
    EXPECT_TRUE(roomy == String("a"));
}

TEST(String, ZeroBytesSurviveBothConversions) {
    for (const std::string& text : {std::string("a\0b", 3), std::string(20, '\0'), std::string()}) {
        const String converted = Velmar::toVelmarString(text);
        EXPECT_EQ(text.size(), converted.size());
        EXPECT_EQ(text, Velmar::toStdString(converted));
    }
}

TEST(String, ATerminatedTextEndsAtItsZero) {
    EXPECT_EQ("ab", String("ab\0cd").view());
}

TEST(String, ExhaustedMemoryLeavesTheOldText) {
    const std::uint64_t impossible = std::numeric_limits<std::uint64_t>::max() / 2;
    EXPECT_THROW(String(impossible, 'x'), std::bad_alloc);

    String claims_much("x");
    setWord(claims_much, size_word, impossible);
    String text = make(seventeen);
    const char* const storage = text.data();
    EXPECT_THROW(text = claims_much, std::bad_alloc);
    EXPECT_EQ(storage, text.data());
    EXPECT_EQ(seventeen, text.view());
}

TEST(StringDeathTest, ASmallCapacityThatIsntTheBuffersIsReported) {
    String bent;
    setWord(bent, capacity_word, 2);
    EXPECT_DEATH(bent = String("abc"), HasSubstr("other.size_ > BUFSIZE"));
}

TEST(BorrowedString, LendsLongTextsInPlace) {
    const BorrowedString lent(seventeen);
    const String& text = lent;
    EXPECT_EQ(seventeen.data(), text.data());
    EXPECT_EQ(17U, text.size());
    EXPECT_EQ(17U, text.capacity());
}

TEST(BorrowedString, CopiesShortTextsInside) {
    for (const std::string& bytes : {std::string(), std::string("abc"), sixteen}) {
        const BorrowedString lent(bytes);
        const String& text = lent;
        EXPECT_TRUE(isInline(text));
        EXPECT_EQ(bytes, text.view());
        EXPECT_EQ(16U, text.capacity());
    }
}

} // namespace StringTests
