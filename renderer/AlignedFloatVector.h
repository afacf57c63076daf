#pragma once

#include "reference.h"

#include "renderer/Allocator.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// An array of floats at 16-byte aligned addresses, released by the allocator that made it. The renderer library reads
/// and writes it in place.
class AlignedFloatVector {
  public:
    AlignedFloatVector() = default;
    /// `allocator_` may be null: the SDK's own entry points then serve.
    explicit AlignedFloatVector(const Reference<quorl::Allocator>& allocator_) : allocator(allocator_) {}
    ~AlignedFloatVector();
    AlignedFloatVector(const AlignedFloatVector&) = delete;
    AlignedFloatVector& operator=(const AlignedFloatVector&) = delete;

    /// Makes the array `n` elements long. When it must grow, the elements are left unwritten and the old ones are lost:
    /// the array is sized once and then filled. Throws `std::bad_alloc` and then keeps what it has.
    void resize(std::uint64_t n);

    float* data() { return e; }
    const float* data() const { return e; }
    std::uint64_t size() const { return size_; }
    std::uint64_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }
    const Reference<quorl::Allocator>& getAllocator() const { return allocator; }

  private:
    friend struct AlignedFloatVectorLayout;

    float* allocate(std::uint64_t count) const;
    void release() const;

    float* e = nullptr;
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = 0;
    Reference<quorl::Allocator> allocator;
};

static_assert(sizeof(AlignedFloatVector) == 32);

} // namespace Velmar
