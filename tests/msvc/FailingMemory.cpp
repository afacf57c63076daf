#include "FailingMemory.h"

extern "C" {
__declspec(dllimport) char* GetModuleHandleA(const char* name);
__declspec(dllimport) int VirtualProtect(void* address, size_t size, unsigned protection, unsigned* old);
}

namespace {

void* (*former_malloc)(size_t size) = nullptr;
void* (*former_calloc)(size_t count, size_t size) = nullptr;
void* (*former_realloc)(void* block, size_t size) = nullptr;
void (*former_free)(void* block) = nullptr;
int64_t live_blocks = 0;
int remaining = 0;
bool failed = false;

bool failsNow() {
    if (remaining == 0 || --remaining != 0) return false;
    failed = true;
    return true;
}

void* watchedMalloc(size_t size) {
    if (failsNow()) return nullptr;
    ++live_blocks;
    return former_malloc(size);
}

void* watchedCalloc(size_t count, size_t size) {
    if (failsNow()) return nullptr;
    ++live_blocks;
    return former_calloc(count, size);
}

void* watchedRealloc(void* block, size_t size) {
    if (block == nullptr) ++live_blocks;
    return former_realloc(block, size);
}

void watchedFree(void* block) {
    if (block != nullptr) --live_blocks;
    former_free(block);
}

template <class Function>
void replace(void* entry, Function& former, Function function) {
    constexpr unsigned read_and_write = 4;
    unsigned old = 0;
    VirtualProtect(entry, sizeof function, read_and_write, &old);
    memcpy(&former, entry, sizeof former);
    memcpy(entry, &function, sizeof function);
    VirtualProtect(entry, sizeof function, old, &old);
}

template <class T>
T at(const char* place) {
    T value;
    memcpy(&value, place, sizeof value);
    return value;
}

/// A module's table of what it imports from one library.
struct Imports {
    uint32_t names;
    uint32_t unused[3];
    uint32_t addresses;
};

} // namespace

void failAllocation(int countdown) {
    remaining = countdown;
    failed = false;
}

bool allocationFailed() {
    return failed;
}

int64_t liveBlocks() {
    return live_blocks;
}

void watchMemory(const char* name) {
    char* const module = GetModuleHandleA(name);
    // The image's headers: the second entry of the directory is that of imports.
    const char* const headers = module + at<uint32_t>(module + 60);
    const char* table = module + at<uint32_t>(headers + 24 + 112 + 8);
    for (Imports imports = at<Imports>(table); imports.names != 0;
         table += sizeof imports, imports = at<Imports>(table)) {
        for (size_t i = 0; at<uint64_t>(module + imports.names + 8 * i) != 0; ++i) {
            // Two bytes of a hint come before each name.
            const char* const function = module + at<uint64_t>(module + imports.names + 8 * i) + 2;
            void* const entry = module + imports.addresses + 8 * i;
            if (strcmp(function, "malloc") == 0) replace(entry, former_malloc, watchedMalloc);
            if (strcmp(function, "calloc") == 0) replace(entry, former_calloc, watchedCalloc);
            if (strcmp(function, "realloc") == 0) replace(entry, former_realloc, watchedRealloc);
            if (strcmp(function, "free") == 0) replace(entry, former_free, watchedFree);
        }
    }
}
