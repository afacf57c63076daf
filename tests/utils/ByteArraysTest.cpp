#include "utils/ByteArrays.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

namespace ByteArraysTests {

using Velmar::AlignedByteArray;
using Velmar::ByteVector;

TEST(ByteVector, BeginsEmpty) {
    const ByteVector bytes;
    EXPECT_EQ(nullptr, bytes.data());
    EXPECT_EQ(0U, bytes.size());
    EXPECT_EQ(0U, bytes.capacity());
    EXPECT_TRUE(bytes.empty());
}

TEST(ByteVector, GrowsByHalfOfItsCapacity) {
    ByteVector bytes;
    bytes.resize(8);
    EXPECT_EQ(8U, bytes.capacity());
    bytes.resize(9);
    EXPECT_EQ(12U, bytes.capacity());
    bytes.resize(13);
    EXPECT_EQ(18U, bytes.capacity());
}

TEST(ByteVector, GrowsToTheNewSizeWhenThatIsLarger) {
    ByteVector bytes;
    bytes.resize(8);
    bytes.resize(13);
    EXPECT_EQ(13U, bytes.capacity());
}

TEST(ByteVector, SingleBytesGrowAsBlocksDo) {
    ByteVector bytes;
    std::string capacities;
    for (int i = 0; i < 14; ++i) {
        bytes.append("x", 1);
        capacities += std::to_string(bytes.capacity()) + " ";
    }
    EXPECT_EQ("1 2 3 4 6 6 9 9 9 13 13 13 13 19 ", capacities);
}

TEST(ByteVector, StaysInPlaceWhileThereIsRoom) {
    ByteVector bytes;
    bytes.reserve(8);
    const std::uint8_t* const before = bytes.data();
    bytes.append("12345", 5);
    bytes.resize(8);
    EXPECT_EQ(before, bytes.data());
    EXPECT_EQ(8U, bytes.capacity());
}

TEST(ByteVector, ReserveIsExactAndNeverShrinks) {
    ByteVector bytes;
    bytes.reserve(100);
    EXPECT_EQ(100U, bytes.capacity());
    bytes.reserve(101);
    EXPECT_EQ(101U, bytes.capacity());
    bytes.reserve(5);
    EXPECT_EQ(101U, bytes.capacity());
    EXPECT_EQ(0U, bytes.size());
}

TEST(ByteVector, BytesAddedByAResizeAreZero) {
    ByteVector bytes;
    bytes.resize(4);
    std::memset(bytes.data(), 0xFF, 4);
    bytes.resize(1);
    bytes.resize(4);
    EXPECT_EQ(0xFF, bytes[0]);
    EXPECT_EQ(0, bytes[1]);
    EXPECT_EQ(0, bytes[2]);
    EXPECT_EQ(0, bytes[3]);
    bytes.resize(5000);
    EXPECT_EQ(4999, std::count(bytes.data(), bytes.data() + bytes.size(), 0));
}

TEST(ByteVector, ExtendReturnsTheFirstNewByte) {
    ByteVector bytes;
    bytes.append("ab", 2);
    std::uint8_t* const place = bytes.extendUninitialized(2);
    EXPECT_EQ(bytes.data() + 2, place);
    std::memcpy(place, "cd", 2);
    EXPECT_EQ(0, std::memcmp(bytes.data(), "abcd", 4));
    EXPECT_EQ(4U, bytes.size());
}

TEST(ByteVector, AboveTheLargestSizeItIsTooLong) {
    ByteVector bytes;
    bytes.resize(2);
    const auto expectTooLong = [&](auto operation) {
        try {
            operation();
            FAIL() << "nothing was thrown";
        } catch (const std::length_error& failure) {
            EXPECT_STREQ("vector<T> too long", failure.what());
        }
        EXPECT_EQ(2U, bytes.size());
    };
    expectTooLong([&] { bytes.resize(ByteVector::max_size + 1); });
    expectTooLong([&] { bytes.reserve(ByteVector::max_size + 1); });
    expectTooLong([&] { bytes.extendUninitialized(ByteVector::max_size - 1); });
    expectTooLong([&] { bytes.append("", std::numeric_limits<std::size_t>::max()); });
}

TEST(ByteVector, ExhaustedMemoryLeavesTheOldContents) {
    ByteVector bytes;
    bytes.append("ab", 2);
    EXPECT_THROW(bytes.resize(ByteVector::max_size - 1), std::bad_alloc);
    EXPECT_THROW(bytes.reserve(ByteVector::max_size), std::bad_alloc);
    EXPECT_EQ(2U, bytes.size());
    EXPECT_EQ(2U, bytes.capacity());
    EXPECT_EQ(0, std::memcmp(bytes.data(), "ab", 2));
}

TEST(AlignedByteArray, BeginsEmpty) {
    const AlignedByteArray bytes;
    EXPECT_EQ(nullptr, bytes.data());
    EXPECT_EQ(0U, bytes.size());
    EXPECT_EQ(0U, bytes.capacity());
}

TEST(AlignedByteArray, StartsAtAMultipleOfSixteen) {
    for (std::size_t n = 1; n < 200; n += 13) {
        AlignedByteArray bytes;
        bytes.resizeUninitialized(n);
        EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(bytes.data()) % 16);
        std::memset(bytes.data(), 1, n);
    }
}

TEST(AlignedByteArray, KeepsItsBytesOverGrowth) {
    AlignedByteArray bytes;
    bytes.resizeUninitialized(3);
    std::memcpy(bytes.data(), "abc", 3);
    bytes.resizeUninitialized(100000);
    EXPECT_EQ(0, std::memcmp(bytes.data(), "abc", 3));
    EXPECT_EQ(100000U, bytes.size());
}

TEST(AlignedByteArray, ShrinkingKeepsTheStorage) {
    AlignedByteArray bytes;
    bytes.resizeUninitialized(64);
    const std::uint8_t* const before = bytes.data();
    bytes.resizeUninitialized(0);
    bytes.resizeUninitialized(64);
    EXPECT_EQ(before, bytes.data());
    EXPECT_EQ(64U, bytes.capacity());
}

TEST(AlignedByteArray, ExhaustedMemoryChangesNothing) {
    AlignedByteArray bytes;
    bytes.resizeUninitialized(3);
    std::memcpy(bytes.data(), "abc", 3);
    constexpr std::size_t greatest = std::numeric_limits<std::size_t>::max();
    for (const std::size_t n : {greatest, greatest - 15, greatest / 2}) {
        EXPECT_THROW(bytes.resizeUninitialized(n), std::bad_alloc);
        EXPECT_EQ(3U, bytes.size());
        EXPECT_EQ(0, std::memcmp(bytes.data(), "abc", 3));
    }
}

} // namespace ByteArraysTests
