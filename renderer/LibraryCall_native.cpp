#include "renderer/LibraryCall.h"

#include <cstdlib>

// The library throws what this compiler's frames catch and clean up for, so nothing is ever carried.

namespace Velmar {

class LibraryException::Carried {};

LibraryException::LibraryException(const LibraryException& other) = default;
LibraryException::~LibraryException() = default;

const char* LibraryException::text() const {
    return "";
}

LibraryException::Carried* LibraryException::release() {
    return carried;
}

void callGuarded(void (*function)(void* argument), void* argument) {
    function(argument);
}

void callGuardedInDestructor(void (*function)(void* argument), void* argument) noexcept {
    function(argument);
}

LibraryException::Carried* takePending() {
    return nullptr;
}

void throwOriginal(LibraryException::Carried*) {
    std::abort();
}

} // namespace Velmar
