#include "velmarmemory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>

namespace MemoryTests {

using namespace Velmar;

namespace {

constexpr std::size_t all_of_memory = std::numeric_limits<std::size_t>::max();

std::uint32_t storedDistance(const void* aligned) {
    std::uint32_t distance = 0;
    std::memcpy(&distance, static_cast<const char*>(aligned) - sizeof distance, sizeof distance);
    return distance;
}

/// Where each tried block goes, so that the compiler can't leave out an allocation that nothing else looks at.
void* volatile tried_block = nullptr;

template <class Operation>
void expectBadAllocation(Operation operation) {
    try {
        operation();
        FAIL() << "nothing was thrown";
    } catch (const std::bad_alloc& failure) {
        EXPECT_STREQ("bad allocation", failure.what());
    }
}

} // namespace

TEST(SdkMalloc, GivesMemoryThatSdkFreeTakes) {
    void* const block = sdkMalloc(100);
    std::memset(block, 1, 100);
    sdkFree(block);
    sdkFree(nullptr);
}

TEST(SdkMalloc, NoBytesAreNotAFailure) {
    void* const block = sdkMalloc(0);
    EXPECT_NE(nullptr, block);
    sdkFree(block);
}

TEST(SdkMalloc, ExhaustedMemorySaysBadAllocation) {
    const volatile std::size_t too_much = all_of_memory / 2;
    expectBadAllocation([&] { tried_block = sdkMalloc(too_much); });
}

TEST(SdkAlignedMalloc, ResultIsAMultipleOfTheAlignment) {
    for (std::size_t alignment = 4; alignment <= 4096; alignment *= 2) {
        for (std::size_t size = 0; size < 40; size += 7) {
            void* const block = sdkAlignedMalloc(size, alignment);
            EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block) % alignment);
            std::memset(block, 1, size);
            sdkAlignedFree(block);
        }
    }
}

TEST(SdkAlignedMalloc, SmallAlignmentsAreTakenAsFour) {
    for (const std::size_t alignment : {0, 1, 2, 3, 4}) {
        void* const block = sdkAlignedMalloc(10, alignment);
        EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block) % 4);
        EXPECT_EQ(4U, storedDistance(block));
        sdkAlignedFree(block);
    }
}

TEST(SdkAlignedMalloc, AlignedBlockGivesTheNextMultiple) {
    // Blocks of this system lie at multiples of 16.
    void* const block = sdkAlignedMalloc(100, 16);
    EXPECT_EQ(16U, storedDistance(block));
    sdkAlignedFree(block);
}

TEST(SdkAlignedMalloc, StoresTheDistanceToTheBlock) {
    void* const block = sdkAlignedMalloc(100, 1024);
    const std::uint32_t distance = storedDistance(block);
    EXPECT_GE(distance, 1U);
    EXPECT_LE(distance, 1024U);
    std::free(static_cast<char*>(block) - distance);
}

TEST(SdkAlignedMalloc, ExhaustedMemorySaysBadAllocation) {
    const volatile std::size_t half = all_of_memory / 2;
    expectBadAllocation([&] { tried_block = sdkAlignedMalloc(half, 16); });
}

TEST(SdkAlignedMalloc, SumsThatWouldWrapAreFailedAllocations) {
    const volatile std::size_t all = all_of_memory;
    expectBadAllocation([&] { tried_block = sdkAlignedMalloc(all, 16); });
    expectBadAllocation([&] { tried_block = sdkAlignedMalloc(all - 15, 16); });
    expectBadAllocation([&] { tried_block = sdkAlignedMalloc(64, all - 15); });
}

TEST(SdkAlignedFree, NullDoesNothing) {
    sdkAlignedFree(nullptr);
}

TEST(SdkAllocated, MemoryIsZeroBeforeConstruction) {
    constexpr std::size_t size = 256;
    void* const used = sdkMalloc(size);
    std::memset(used, 0xEE, size);
    sdkFree(used);
    // Likely the block that was just given back.
    void* const block = SdkAllocated::operator new(size);
    const auto* const bytes = static_cast<const unsigned char*>(block);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(size), std::count(bytes, bytes + size, 0));
    SdkAllocated::operator delete(block);
}

} // namespace MemoryTests
