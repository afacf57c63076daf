#pragma once

#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// An owned array of bytes that starts at a multiple of 16, for bulk data.
class AlignedByteArray {
  public:
    AlignedByteArray() = default;
    AlignedByteArray(const AlignedByteArray&) = delete;
    AlignedByteArray& operator=(const AlignedByteArray&) = delete;
    ~AlignedByteArray() { sdkAlignedFree(e); }

    /// Makes the size `n`. Present bytes stay, new ones are unwritten: the caller fills all of them next. Memory is
    /// asked for but not touched, so a claimed size costs address space alone until it is filled.
    /// Throws `BadAlloc` and changes nothing when memory is exhausted.
    void resizeUninitialized(std::size_t n);

    std::uint8_t* data() { return e; }
    const std::uint8_t* data() const { return e; }
    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }

  private:
    static constexpr std::size_t alignment = 16;

    std::uint8_t* e = nullptr;
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = 0;
};

static_assert(sizeof(AlignedByteArray) == 24);

} // namespace Velmar
