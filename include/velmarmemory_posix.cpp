#include "velmarmemory.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace Velmar {

void* mallocLargeBlock(std::size_t size) noexcept {
    void* const block = std::malloc(size);
    if (block == nullptr) return nullptr;
#ifdef MADV_HUGEPAGE
    // Whole pages inside the block alone: its ends share theirs with the allocator's own data.
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (start + page - 1) / page * page;
    const std::uintptr_t behind = (start + size) / page * page;
    // A wish only: without it the block works the same.
    if (behind > first) madvise(reinterpret_cast<void*>(first), behind - first, MADV_HUGEPAGE);
#endif
    return block;
}

} // namespace Velmar
