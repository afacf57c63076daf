#include "Runtime.h"

// What a program's own runtime library would give it.

/// The table of type_info, which every description of a type names.
extern "C" {
extern const void* const type_info_table[1] __asm__("??_7type_info@@6B@");
const void* const type_info_table[1] = {nullptr};
}

extern "C" int _fltused = 0;

void* operator new(size_t size) {
    return malloc(size);
}

void operator delete(void* block) noexcept {
    free(block);
}

void operator delete(void* block, size_t) noexcept {
    free(block);
}

extern "C" int _purecall() {
    __builtin_trap();
}
