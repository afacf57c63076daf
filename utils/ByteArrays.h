#pragma once

#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// A growing array of bytes. When a new size doesn't fit, the capacity grows by half of itself or to the new size,
/// whichever is larger.
class ByteVector {
  public:
    ByteVector() = default;
    ByteVector(const ByteVector&) = delete;
    ByteVector& operator=(const ByteVector&) = delete;
    ~ByteVector();

    static constexpr std::size_t max_size = 0x7FFFFFFFFFFFFFFF;

    /// Makes room for exactly `n` bytes in all; does nothing when there is room.
    /// Throws `std::length_error` above `max_size`, `BadAlloc` when memory is exhausted.
    void reserve(std::size_t n);

    /// Makes the size `n`. New bytes are zero. Throws as `reserve` does, with the old contents in place.
    void resize(std::size_t n);

    /// Makes the size `count` larger and returns the first of the new bytes, which are unwritten: the caller fills all
    /// of them next. Throws as `reserve` does, with the old contents in place.
    std::uint8_t* extendUninitialized(std::size_t count);

    /// Appends a copy of `count` bytes, which must not be part of this vector. Throws like `reserve`.
    void append(const void* src, std::size_t count);

    std::uint8_t* data() { return first; }
    const std::uint8_t* data() const { return first; }
    std::size_t size() const { return static_cast<std::size_t>(last - first); }
    std::size_t capacity() const { return static_cast<std::size_t>(end_of_capacity - first); }
    bool empty() const { return first == last; }

    std::uint8_t& operator[](std::size_t index) { return first[index]; }
    const std::uint8_t& operator[](std::size_t index) const { return first[index]; }

  private:
    void reallocate(std::size_t new_capacity);

    std::uint8_t* first = nullptr;
    std::uint8_t* last = nullptr;
    std::uint8_t* end_of_capacity = nullptr;
};

static_assert(sizeof(ByteVector) == 24);

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
