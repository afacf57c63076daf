#include "renderer/AlignedFloatVector.h"

#include "velmarmemory.h"

#include <gtest/gtest.h>
#include <limits>

namespace AlignedFloatVectorTests {

using Velmar::AlignedFloatVector;
using Velmar::Reference;

TEST(VelmarSDKAllocator, AllocatesAligned) {
    const Reference<quorl::Allocator> allocator(new Velmar::VelmarSDKAllocator);
    void* const memory = allocator->alloc(100, 64);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0u);
    allocator->free(memory);
}

TEST(VelmarSDKAllocator, FreeOfNullDoesNothing) {
    const Reference<quorl::Allocator> allocator(new Velmar::VelmarSDKAllocator);
    allocator->free(nullptr);
    EXPECT_EQ(allocator->getRefCount(), 1);
}

TEST(VelmarSDKAllocator, MayBeDestroyedWhateverItsCount) {
    auto* const allocator = new Velmar::VelmarSDKAllocator;
    allocator->increment();
    EXPECT_EQ(allocator->destroy(1), allocator);
}

namespace {

/// Counts how often it was asked.
class CountingAllocator : public Velmar::Destroyable<CountingAllocator, quorl::Allocator> {
  public:
    void* alloc(std::uint64_t size, std::uint64_t alignment) override {
        ++allocs;
        last_size = size;
        last_alignment = alignment;
        return Velmar::sdkAlignedMalloc(size, alignment);
    }
    void free(void* memory) override {
        if (memory != nullptr) ++frees;
        Velmar::sdkAlignedFree(memory);
    }

    static inline int allocs = 0;
    static inline int frees = 0;
    static inline std::uint64_t last_size = 0;
    static inline std::uint64_t last_alignment = 0;
};

class AlignedFloatVectors : public testing::Test {
  protected:
    void SetUp() override { CountingAllocator::allocs = CountingAllocator::frees = 0; }

    Reference<quorl::Allocator> allocator{new CountingAllocator};
};

} // namespace

TEST_F(AlignedFloatVectors, FreshVectorHoldsNothing) {
    const AlignedFloatVector vector(allocator);
    EXPECT_EQ(vector.data(), nullptr);
    EXPECT_EQ(vector.size(), 0u);
    EXPECT_EQ(vector.capacity(), 0u);
    EXPECT_EQ(CountingAllocator::allocs, 0);
}

TEST_F(AlignedFloatVectors, HoldsItsAllocator) {
    {
        const AlignedFloatVector vector(allocator);
        EXPECT_EQ(allocator->getRefCount(), 2);
    }
    EXPECT_EQ(allocator->getRefCount(), 1);
}

TEST_F(AlignedFloatVectors, FirstResizeAllocatesExactlySixteenByteAligned) {
    AlignedFloatVector vector(allocator);
    vector.resize(5);
    EXPECT_EQ(vector.size(), 5u);
    EXPECT_EQ(vector.capacity(), 5u);
    EXPECT_EQ(CountingAllocator::last_size, 20u);
    EXPECT_EQ(CountingAllocator::last_alignment, 16u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(vector.data()) % 16, 0u);
}

TEST_F(AlignedFloatVectors, GrowthAtLeastDoubles) {
    AlignedFloatVector vector(allocator);
    vector.resize(5);
    vector.resize(6);
    EXPECT_EQ(vector.size(), 6u);
    EXPECT_EQ(vector.capacity(), 10u);
    vector.resize(50);
    EXPECT_EQ(vector.capacity(), 50u);
    EXPECT_EQ(CountingAllocator::frees, 2);
}

TEST_F(AlignedFloatVectors, ResizeWithinTheCapacityChangesTheSizeAlone) {
    AlignedFloatVector vector(allocator);
    vector.resize(5);
    vector.data()[0] = 7.0f;
    const float* const array = vector.data();
    vector.resize(2);
    vector.resize(5);
    EXPECT_EQ(vector.data(), array);
    EXPECT_EQ(vector.data()[0], 7.0f);
    EXPECT_EQ(vector.size(), 5u);
    EXPECT_EQ(CountingAllocator::allocs, 1);
}

TEST_F(AlignedFloatVectors, ArrayGoesBackToTheAllocatorThatMadeIt) {
    {
        AlignedFloatVector vector(allocator);
        vector.resize(5);
    }
    EXPECT_EQ(CountingAllocator::frees, 1);
}

TEST_F(AlignedFloatVectors, WithoutAnAllocatorTheSdksEntryPointsServe) {
    AlignedFloatVector vector;
    vector.resize(3);
    vector.resize(7);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(vector.data()) % 16, 0u);
    EXPECT_EQ(CountingAllocator::allocs, 0);
}

TEST_F(AlignedFloatVectors, SizeThatWouldWrapIsAFailedAllocation) {
    AlignedFloatVector vector(allocator);
    vector.resize(5);
    EXPECT_THROW(vector.resize(std::numeric_limits<std::uint64_t>::max() / 4 + 1), std::bad_alloc);
    EXPECT_EQ(vector.size(), 5u);
    EXPECT_EQ(vector.capacity(), 5u);
}

} // namespace AlignedFloatVectorTests
