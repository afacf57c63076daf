#include "tests/steps/AllocatedBytes.h"

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <pugixml.hpp>

namespace {

std::size_t live_bytes = 0;
std::size_t peak_bytes = 0;
std::size_t bytes_at_start = 0;

std::size_t sizeOf(void* block) {
    constexpr std::size_t heap_header = 8;
    if (block == nullptr) return 0;
#ifdef _WIN32
    return _msize(block) + heap_header;
#else
    return malloc_usable_size(block) + heap_header;
#endif
}

void* counted(void* block) {
    live_bytes += sizeOf(block);
    peak_bytes = std::max(peak_bytes, live_bytes);
    return block;
}

} // namespace

// The linker gives calls of the C allocation functions these names, and the functions themselves the other ones.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);

void* __wrap_malloc(std::size_t size) {
    return counted(__real_malloc(size));
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
    const std::size_t old_size = sizeOf(block);
    void* const moved = __real_realloc(block, size);
    if (moved != nullptr) live_bytes -= old_size;
    return counted(moved);
}
void __wrap_free(void* block) {
    live_bytes -= sizeOf(block);
    __real_free(block);
}
}

std::size_t Steps::takePeakBytes() {
    // The parser may be in a library of its own.
    pugi::set_memory_management_functions(std::malloc, std::free);
    const std::size_t peak = peak_bytes - bytes_at_start;
    bytes_at_start = peak_bytes = live_bytes;
    return peak;
}
