#pragma once

#include "velmarcompiler.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

/// The allocation functions of the SDK side. The renderer library gets them too, so that either side may free memory of
/// the other.

namespace Velmar {

/// The failure of an allocation. It says "bad allocation" with every runtime: hosts see this text.
class BadAlloc final : public std::bad_alloc {
  public:
    const char* what() const noexcept override { return "bad allocation"; }
};

/// Allocates `size` bytes. Release with `sdkFree`.
/// Throws `BadAlloc` when memory is exhausted.
inline void* sdkMalloc(std::size_t size) {
    // malloc may answer 0 bytes with null, which would look like exhausted memory.
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw BadAlloc();
    return block;
}

/// Releases what `sdkMalloc` returned. Null does nothing.
inline void sdkFree(void* block) {
    std::free(block);
}

/// Changes the size of what `sdkMalloc` returned, keeping its bytes, and returns the block, which may have moved; null
/// when memory is exhausted, and the block is then as it was.
inline void* sdkRealloc(void* block, std::size_t size) noexcept {
    return std::realloc(block, size == 0 ? 1 : size);
}

/// Allocates `size` bytes at an address that is a multiple of `alignment`, a power of two; below 4 it is taken as 4.
/// The distance to the start of the block is stored in the four bytes before the result. Release with `sdkAlignedFree`.
/// Throws `BadAlloc` when memory is exhausted or the sum would wrap.
inline void* sdkAlignedMalloc(std::size_t size, std::size_t alignment) {
    constexpr std::size_t distance_size = sizeof(std::uint32_t);
    const std::size_t step = alignment < distance_size ? distance_size : alignment;
    if (size > std::numeric_limits<std::size_t>::max() - step) throw BadAlloc();
    void* const block = std::malloc(size + step);
    if (block == nullptr) throw BadAlloc();

    const std::size_t misalignment = reinterpret_cast<std::uintptr_t>(block) % step;
    const std::size_t distance = step - misalignment;
    char* const result = static_cast<char*>(block) + distance;
    const auto stored = static_cast<std::uint32_t>(distance);
    std::memcpy(result - sizeof stored, &stored, sizeof stored);
    return result;
}

/// Releases what `sdkAlignedMalloc` returned. Null does nothing.
inline void sdkAlignedFree(void* aligned) {
    if (aligned == nullptr) return;
    char* const result = static_cast<char*>(aligned);
    std::uint32_t distance = 0;
    std::memcpy(&distance, result - sizeof distance, sizeof distance);
    std::free(result - distance);
}

/// Gives a class its own `new`: memory of `sdkMalloc`, zero-filled before construction, so that padding and unwritten
/// bytes are the same in every run and either side of the seam may free the object by `sdkFree`.
class SdkAllocated {
  public:
    static void* operator new(std::size_t size) { return std::memset(hideOrigin(sdkMalloc(size)), 0, size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept { sdkFree(block); }
    static void operator delete(void*, void*) noexcept {}
};

} // namespace Velmar
