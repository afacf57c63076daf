#pragma once

#include "velmarmemory.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

/// Allocation of arrays that may be large. Blocks are those of velmarmemory.h and are freed the same way.
namespace Velmar {

/// Asks the system to back a block by large pages: with small ones the first touch of a mesh's arrays takes longer than
/// reading the mesh into them. Only a hint; without it the block works the same, and no memory is taken before it is
/// touched. Does nothing on Windows, where large pages need a privilege that hosts don't have.
inline void preferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t size) {
#ifdef __linux__
    // The call costs more than it saves on smaller blocks.
    constexpr std::size_t min_size = std::size_t{4} << 20;
    if (size < min_size) return;
    // Whole pages inside the block only: it shares its first and last page with the allocator's own data.
    constexpr std::uintptr_t page = 4096;
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (start + page - 1) / page * page;
    const std::uintptr_t last = (start + size) / page * page;
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

/// `sdkMalloc` with the hint for large pages.
inline void* bulkMalloc(std::size_t size) {
    void* const block = sdkMalloc(size);
    preferLargePages(block, size);
    return block;
}

/// `sdkAlignedMalloc` with the hint for large pages.
inline void* bulkAlignedMalloc(std::size_t size, std::size_t alignment) {
    void* const block = sdkAlignedMalloc(size, alignment);
    preferLargePages(block, size);
    return block;
}

} // namespace Velmar
