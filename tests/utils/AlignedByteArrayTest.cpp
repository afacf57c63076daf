#include "utils/AlignedByteArray.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>

using Velmar::AlignedByteArray;

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
