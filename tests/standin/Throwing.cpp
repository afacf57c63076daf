// Libraries of the host's own compiler that fail by exceptions, one for each value of STANDIN_THROWS.

#include "velmarexceptions.h"

#include <cstdint>
#include <exception>
#include <new>
#include <stdexcept>

#ifdef _WIN32
#define ENTRY_POINT extern "C" __declspec(dllexport)
#else
#define ENTRY_POINT extern "C" __attribute__((visibility("default")))
#endif

ENTRY_POINT std::int32_t velmarCreateInstance(const void*, void**) {
    return 1;
}

ENTRY_POINT std::int32_t velmarGlobalLibraryInit(const Velmar::String*, Velmar::String*) {
    throw STANDIN_THROWS;
}

ENTRY_POINT void velmarGlobalLibraryShutdown() {}

ENTRY_POINT void setMemAllocFunctions(const void*) {}
