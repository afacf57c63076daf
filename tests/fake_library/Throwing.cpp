// Libraries of the host's own compiler that fail by exceptions, one for each value of FAKE_LIBRARY_THROWS: when they
// are set up, or, with FAKE_LIBRARY_THROWS_ON_CREATE, when they are to make an object.

#include "velmarexceptions.h"

#include <cstdint>
#include <exception>
#include <new>
#include <stdexcept>
#include <typeinfo>

#ifdef _WIN32
#define ENTRY_POINT extern "C" __declspec(dllexport)
#else
#define ENTRY_POINT extern "C" __attribute__((visibility("default")))
#endif

namespace {

/// An exception whose code is the library's own: it can't be used when the library is unloaded.
class [[maybe_unused]] OfTheLibrary final : public std::exception {
  public:
    const char* what() const noexcept override { return "thrown by the library"; }
};

[[noreturn]] void fail() {
    throw FAKE_LIBRARY_THROWS;
}

} // namespace

#ifdef FAKE_LIBRARY_THROWS_ON_CREATE

ENTRY_POINT std::int32_t velmarCreateInstance(const void*, void**) {
    fail();
}

ENTRY_POINT std::int32_t velmarGlobalLibraryInit(const Velmar::String*, Velmar::String*) {
    return 0;
}

#else

ENTRY_POINT std::int32_t velmarCreateInstance(const void*, void**) {
    return 1;
}

ENTRY_POINT std::int32_t velmarGlobalLibraryInit(const Velmar::String*, Velmar::String*) {
    fail();
}

#endif

ENTRY_POINT void velmarGlobalLibraryShutdown() {}

ENTRY_POINT void setMemAllocFunctions(const void*) {}
