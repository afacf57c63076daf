#include "renderer/AlignedFloatVector.h"

#include "velmarbulkmemory.h"

#include <algorithm>
#include <limits>

namespace Velmar {

namespace {

constexpr std::uint64_t alignment = 16;

} // namespace

AlignedFloatVector::~AlignedFloatVector() {
    release();
}

void AlignedFloatVector::resize(std::uint64_t n) {
    const std::uint64_t new_capacity = std::max(n, 2 * capacity_);
    if (n > capacity_ && new_capacity > capacity_) {
        float* const grown = allocate(new_capacity);
        release();
        e = grown;
        capacity_ = new_capacity;
    }
    size_ = n;
}

float* AlignedFloatVector::allocate(std::uint64_t count) const {
    if (count > std::numeric_limits<std::uint64_t>::max() / sizeof(float)) throw BadAlloc();
    const std::uint64_t bytes = count * sizeof(float);
    return static_cast<float*>(allocator ? allocator->alloc(bytes, alignment) : bulkAlignedMalloc(bytes, alignment));
}

void AlignedFloatVector::release() const {
    if (allocator)
        allocator->free(e);
    else
        sdkAlignedFree(e);
}

} // namespace Velmar
