#pragma once

#include "reference.h"
#include "velmarmemory.h"
#include "velmarthreadsaferefcounted.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

/// The count of objects that aren't of the SDK's own namespace. It has the shape of `Velmar::ThreadSafeRefCounted` and
/// may be destroyed whatever its count.
class ThreadSafeRefCounted : public Velmar::SdkAllocated {
  public:
    ThreadSafeRefCounted() = default;
    ThreadSafeRefCounted(const ThreadSafeRefCounted&) = delete;
    ThreadSafeRefCounted& operator=(const ThreadSafeRefCounted&) = delete;

    /// Slot 0. Runs the destructor of the object's real class and, with bit 0 of `flags` set, frees its memory.
    virtual void* destroy(unsigned flags) = 0;

    void increment() const { refcount.fetch_add(1, std::memory_order_seq_cst); }
    /// Returns the count held before the decrement.
    std::int64_t decrement() const { return refcount.fetch_add(-1, std::memory_order_seq_cst); }
    std::int64_t getRefCount() const { return refcount.load(std::memory_order_seq_cst); }

  protected:
    ~ThreadSafeRefCounted() = default;

  private:
    mutable std::atomic<std::int64_t> refcount{0};
};

static_assert(sizeof(::ThreadSafeRefCounted) == 16);

namespace quorl {

/// Makes arrays that another module may release: who holds the array holds its allocator too.
class Allocator : public ::ThreadSafeRefCounted {
  public:
    /// Slot 1. Memory of `size` bytes at a multiple of `alignment`, a power of two. Throws `std::bad_alloc`.
    virtual void* alloc(std::uint64_t size, std::uint64_t alignment) = 0;
    /// Slot 2. Releases what `alloc` returned; null does nothing.
    virtual void free(void* memory) = 0;

  protected:
    ~Allocator() = default;
};

static_assert(sizeof(Allocator) == 16);

} // namespace quorl

namespace Velmar {

/// Arrays of the SDK's own allocation entry points.
class VelmarSDKAllocator : public Destroyable<VelmarSDKAllocator, quorl::Allocator> {
  public:
    void* alloc(std::uint64_t size, std::uint64_t alignment) override { return sdkAlignedMalloc(size, alignment); }
    void free(void* memory) override { sdkAlignedFree(memory); }
};

static_assert(sizeof(VelmarSDKAllocator) == 16);

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
    struct Layout;

    float* allocate(std::uint64_t count) const;
    void release() const;

    float* e = nullptr;
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = 0;
    Reference<quorl::Allocator> allocator;
};

struct AlignedFloatVector::Layout {
    static_assert(offsetof(AlignedFloatVector, e) == 0);
    static_assert(offsetof(AlignedFloatVector, size_) == 8);
    static_assert(offsetof(AlignedFloatVector, capacity_) == 16);
    static_assert(offsetof(AlignedFloatVector, allocator) == 24);
};

static_assert(sizeof(AlignedFloatVector) == 32);

} // namespace Velmar
