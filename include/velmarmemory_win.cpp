#include "velmarmemory.h"

namespace Velmar {

// Large pages need a privilege here that hosts don't have.
void* mallocLargeBlock(std::size_t size) noexcept {
    return std::malloc(size);
}

} // namespace Velmar
