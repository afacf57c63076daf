// The renderer library's calls for memory, one of which fails, or all from one on. See FailingMemory.h.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <pthread.h>
#include <windows.h>

namespace {

std::atomic<std::int64_t> allocations_to_go = 0;
std::atomic<bool> fails_for_ever = false;
std::atomic<bool> struck = false;
/// Not null on a thread whose allocations pass. Not `thread_local`, which allocates.
const DWORD exempt_slot = TlsAlloc();

bool mustFail() {
    if (allocations_to_go <= 0 || TlsGetValue(exempt_slot) != nullptr) return false;
    if (--allocations_to_go > 0) return false;
    struck = true;
    // The next one is the last again.
    if (fails_for_ever) allocations_to_go = 1;
    return true;
}

/// As long as it lives, the thread's allocations pass.
class Exemption {
  public:
    Exemption() { TlsSetValue(exempt_slot, &struck); }
    ~Exemption() {
        TlsSetValue(exempt_slot, former);
        SetLastError(error);
    }
    Exemption(const Exemption&) = delete;
    Exemption& operator=(const Exemption&) = delete;

  private:
    const DWORD error = GetLastError();
    void* const former = TlsGetValue(exempt_slot);
};

} // namespace

// The linker gives calls of these functions the names with `wrap`, and the functions themselves those with `real`.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void* __real___emutls_get_address(void* object);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void* __wrap___emutls_get_address(void* object);
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex);

void* __wrap_malloc(std::size_t size) {
    return mustFail() ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return mustFail() ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* block, std::size_t size) {
    return mustFail() ? nullptr : __real_realloc(block, size);
}

/// The compiler's runtime allocates a thread's variables when they are first used, those for exceptions among them, and
/// mutexes when they are first locked, that of the memory for exceptions among them. It ends the process when it can't.
void* __wrap___emutls_get_address(void* object) {
    const Exemption exemption;
    return __real___emutls_get_address(object);
}
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    const Exemption exemption;
    return __real_pthread_mutex_lock(mutex);
}

// Embree's large blocks. The linker replaces the pointer to the system's function.
using Allocate = LPVOID(WINAPI*)(LPVOID, SIZE_T, DWORD, DWORD);
extern Allocate __real___imp_VirtualAlloc;
extern Allocate __wrap___imp_VirtualAlloc;
}

namespace {

LPVOID WINAPI allocatePages(LPVOID address, SIZE_T size, DWORD type, DWORD protection) {
    return mustFail() ? nullptr : __real___imp_VirtualAlloc(address, size, type, protection);
}

} // namespace

Allocate __wrap___imp_VirtualAlloc = allocatePages;
// NOLINTEND(bugprone-reserved-identifier)

void* operator new(std::size_t size) {
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

extern "C" {
__declspec(dllexport) void failAllocation(std::int64_t nth, bool for_ever);
__declspec(dllexport) bool endFailures();

void failAllocation(std::int64_t nth, bool for_ever) {
    struck = false;
    fails_for_ever = for_ever;
    allocations_to_go = nth;
}

bool endFailures() {
    allocations_to_go = 0;
    return struck;
}
}
