#include "renderer/Allocator.h"

#include <gtest/gtest.h>

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
