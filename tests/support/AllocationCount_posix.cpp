#include "tests/support/AllocationCount.h"

#ifdef __has_feature
#define VELMAR_SANITIZER_ALLOCATES (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define VELMAR_SANITIZER_ALLOCATES 0
#endif

namespace {

// Of the initial TLS block, so that the first use of a thread allocates nothing itself.
thread_local std::size_t allocations = 0;

} // namespace

std::size_t TestSupport::countAllocations() {
    return allocations;
}

#if VELMAR_SANITIZER_ALLOCATES

// The sanitizer's own allocator tells of each block.
extern "C" void __sanitizer_malloc_hook(const volatile void*, std::size_t) {
    ++allocations;
}

#else

// The program's definitions come before the C runtime's, for shared libraries as well.
extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
}

#endif
