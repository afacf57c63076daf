#pragma once

/// How calls of the kit fail: an exception that leaves the call's body becomes a status and the text of the thread.

#include "kit/velmarkit/base.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Velmar::Kit {

/// What a call is about, one for each family: it decides the status of failures that don't name one.
enum class Subject {
    scene,
    mesh,
    model,
    material,
    background,
    camera,
    rendersettings,
    tonemapping,
    context,
    renderer,
    creators,
};

/// A failure that knows its status and text, which are literals. `what` comes first.
struct Refusal {
    std::int32_t status;
    const char* what;
    const char* text;
};

/// A failure with a text of its own.
struct KitFailure {
    std::int32_t status;
    std::string text;
};

[[noreturn]] inline void refuse(const char* what, const char* text) {
    throw Refusal{VELMARKIT_BAD_ARGUMENT, what, text};
}

/// Describes the exception that is being handled. Returns its status.
std::int32_t describeFailure(Subject subject) noexcept;

/// Calls `body`. Nothing is thrown.
template <class Body>
std::int32_t guarded(Subject subject, const Body& body) noexcept {
    try {
        body();
        return VELMARKIT_SUCCESS;
    } catch (...) {
        return describeFailure(subject);
    }
}

/// Stores a result where the host wants it.
template <class T, class Value>
void store(T* result, Value value) {
    if (result != nullptr) *result = static_cast<T>(value);
}

/// A block of one thread, released by `std::free` when the thread ends. Made of the system's own slots, because a
/// compiler's thread_local may allocate, and end the process when memory is exhausted.
void* getThreadBlock() noexcept;
/// False when the system has no slot for it; the caller keeps the block then.
bool setThreadBlock(void* block) noexcept;

/// The text of this thread's last failure.
const char* lastText() noexcept;
/// Replaces it by two pieces, with ": " or a space between them as given. Without memory for it a fixed text is kept.
void setLastText(std::string_view first, std::string_view second) noexcept;

/// Notes that this thread reported a line about a failure, and asks for it once.
void noteFailureLine() noexcept;
bool takeFailureLine() noexcept;

} // namespace Velmar::Kit
