#include "tests/faults/FailingAllocation.h"

#include "velmarexceptions.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

namespace {

// Threads of the runtime may allocate too.
std::atomic<std::int64_t> live_blocks = 0;
std::atomic<std::int64_t> allocations_to_go = 0;
std::atomic<bool> armed = false;
std::atomic<bool> fails_for_ever = false;
std::atomic<bool> struck = false;
std::atomic<std::size_t> largest_request = 0;

void noteRequest(std::size_t size) {
    if (size > largest_request) largest_request = size;
}

bool mustFail() {
    if (!armed || --allocations_to_go > 0) return false;
    if (allocations_to_go < 0 && !fails_for_ever) return false;
    struck = true;
    return true;
}

void* counted(void* block) {
    if (block != nullptr) ++live_blocks;
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
    noteRequest(size);
    return mustFail() ? nullptr : counted(__real_malloc(size));
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return mustFail() ? nullptr : counted(__real_calloc(count, size));
}
void* __wrap_realloc(void* block, std::size_t size) {
    noteRequest(size);
    if (mustFail()) return nullptr;
    void* const moved = __real_realloc(block, size);
    if (block == nullptr) counted(moved);
    return moved;
}
void __wrap_free(void* block) {
    if (block != nullptr) --live_blocks;
    __real_free(block);
}
}

namespace Faults {

FailingAllocation::FailingAllocation(std::int64_t nth, Lasting lasting) {
    allocations_to_go = nth;
    fails_for_ever = lasting == Lasting::for_ever;
    struck = false;
    armed = nth > 0;
}

FailingAllocation::~FailingAllocation() {
    end();
}

void FailingAllocation::end() {
    armed = false;
}

bool FailingAllocation::hasStruck() const {
    return struck;
}

void prepareRuntime() {
    for (const std::int64_t nth : {1, 2, 3, 4}) {
        const FailingAllocation fault(nth, Lasting::once);
        try {
            throw Velmar::Exception(std::string());
        } catch (const Velmar::Exception&) {
        }
    }
}

std::size_t takeLargestRequest() {
    return largest_request.exchange(0);
}

std::int64_t liveBlocks() {
    return live_blocks;
}

void countBlockOfSystem() {
    ++live_blocks;
}

} // namespace Faults
