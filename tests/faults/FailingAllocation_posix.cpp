#include "tests/faults/FailingAllocation.h"

// The one function of the system whose block we release.
extern "C" {
char* __real_realpath(const char* path, char* resolved);
char* __wrap_realpath(const char* path, char* resolved);

char* __wrap_realpath(const char* path, char* resolved) {
    char* const result = __real_realpath(path, resolved);
    if (result != nullptr && resolved == nullptr) Faults::countBlockOfSystem();
    return result;
}
}
