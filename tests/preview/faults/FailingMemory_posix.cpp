#include "tests/preview/faults/FailingMemory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> allocations_to_go = 0;
std::atomic<bool> fails_for_ever = false;
std::atomic<bool> struck = false;
/// Threads of the library are always inside.
thread_local bool is_inside = true;

bool mustFail() {
    if (!is_inside || allocations_to_go <= 0) return false;
    if (--allocations_to_go > 0) return false;
    struck = true;
    // The next one is the last again.
    if (fails_for_ever) allocations_to_go = 1;
    return true;
}

void* allocate(std::size_t size, std::size_t alignment) {
    if (mustFail()) return nullptr;
    return std::aligned_alloc(alignment, (std::max<std::size_t>(size, 1) + alignment - 1) / alignment * alignment);
}

} // namespace

/// Embree's own: what it had allocated for a build that failed.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libembree3.so\n";
}

// The program's definitions serve the renderer library and Embree too. The forms for arrays call these.
void* operator new(std::size_t size) {
    void* const block = allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    void* const block = allocate(size, static_cast<std::size_t>(alignment));
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}

namespace TestSupport {

FailingMemory::FailingMemory(const PreviewFolder&, std::int64_t nth, Lasting lasting_)
    : arm([](std::int64_t number, bool lasting) {
          is_inside = false;
          struck = false;
          fails_for_ever = lasting;
          allocations_to_go = number;
      }),
      disarm([] {
          allocations_to_go = 0;
          return struck.load();
      }) {
    arm(nth, lasting_ == Lasting::for_ever);
}

FailingMemory::~FailingMemory() {
    end();
}

void FailingMemory::enter() {
    is_inside = true;
}

void FailingMemory::leave() {
    is_inside = false;
}

bool FailingMemory::end() {
    return disarm();
}

} // namespace TestSupport
