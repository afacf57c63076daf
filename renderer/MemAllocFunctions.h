#pragma once

#include "velmarmemory.h"

#include <cstddef>

namespace Velmar {

/// The allocation entry points in the order in which the library takes them. It copies the table.
struct MemAllocFunctions {
    void* (*malloc)(std::size_t) = sdkMalloc;
    void* (*aligned_malloc)(std::size_t, std::size_t) = sdkAlignedMalloc;
    void (*free)(void*) = sdkFree;
    void (*aligned_free)(void*) = sdkAlignedFree;
};

static_assert(sizeof(MemAllocFunctions) == 32);

/// What libraries are given. Changed, if at all, before the first is loaded.
extern MemAllocFunctions mem_alloc_functions;

} // namespace Velmar
