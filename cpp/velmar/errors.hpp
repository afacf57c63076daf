#pragma once

/// The exceptions of velmar.hpp, one class for each status of velmarkit.h.

#include "velmarkit.h"

#include <cstdint>
#include <exception>
#include <new>
#include <string>

namespace velmar {

/// The base of all exceptions that this header throws. `what` and `message` are the whole text, in UTF-8.
class Error : public std::exception {
  public:
    Error(std::int32_t status_, std::string message_) noexcept : code(status_), text(std::move(message_)) {}

    /// A VelmarKitStatus.
    std::int32_t status() const noexcept { return code; }
    const std::string& message() const noexcept { return text; }
    const char* what() const noexcept override { return text.c_str(); }

  private:
    std::int32_t code;
    std::string text;
};

/// An error of one status.
template <std::int32_t status_of_class>
class ErrorOf : public Error {
  public:
    explicit ErrorOf(std::string message) noexcept : Error(status_of_class, std::move(message)) {}
};

/// An argument is out of range, or of another kind than the function takes. Nothing was changed.
class BadArgumentError : public ErrorOf<VELMARKIT_BAD_ARGUMENT> {
    using ErrorOf::ErrorOf;
};
/// An object was used that was closed, or destroyed with the scene, model or renderer that owned it.
class ClosedError : public BadArgumentError {
    using BadArgumentError::BadArgumentError;
};
/// Memory is exhausted. Every object is still alive.
class OutOfMemoryError : public ErrorOf<VELMARKIT_OUT_OF_MEMORY> {
    using ErrorOf::ErrorOf;
};
/// A file or folder can't be read or written.
class FileError : public ErrorOf<VELMARKIT_FILE_ERROR> {
    using ErrorOf::ErrorOf;
};
/// A mesh or mesh file isn't valid.
class MeshError : public ErrorOf<VELMARKIT_MESH_ERROR> {
    using ErrorOf::ErrorOf;
};
/// The scene can't be written as a document.
class DocumentError : public ErrorOf<VELMARKIT_DOCUMENT_ERROR> {
    using ErrorOf::ErrorOf;
};
/// The renderer library is missing or failed.
class RendererError : public ErrorOf<VELMARKIT_RENDERER_ERROR> {
    using ErrorOf::ErrorOf;
};
/// A failed assertion of the library, or a status that this header doesn't know.
class InternalError : public ErrorOf<VELMARKIT_INTERNAL_ERROR> {
    using ErrorOf::ErrorOf;
};

namespace detail {

/// Short enough to need no memory.
inline OutOfMemoryError outOfMemory() {
    return OutOfMemoryError("Out of memory.");
}

[[noreturn]] inline void throwStatus(std::int32_t status) {
    std::string text;
    try {
        text = VelmarKit_LastError();
    } catch (const std::bad_alloc&) {
        throw outOfMemory();
    }
    switch (status) {
    case VELMARKIT_BAD_ARGUMENT:
        throw BadArgumentError(std::move(text));
    case VELMARKIT_OUT_OF_MEMORY:
        throw OutOfMemoryError(std::move(text));
    case VELMARKIT_FILE_ERROR:
        throw FileError(std::move(text));
    case VELMARKIT_MESH_ERROR:
        throw MeshError(std::move(text));
    case VELMARKIT_DOCUMENT_ERROR:
        throw DocumentError(std::move(text));
    case VELMARKIT_RENDERER_ERROR:
        throw RendererError(std::move(text));
    default:
        throw InternalError(std::move(text));
    }
}

/// Throws if the status isn't 0.
inline void check(std::int32_t status) {
    if (status != VELMARKIT_SUCCESS) throwStatus(status);
}

/// Calls `body`, which allocates. Exhausted memory becomes an exception of this header.
template <class Body>
decltype(auto) allocating(const Body& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        throw outOfMemory();
    }
}

} // namespace detail
} // namespace velmar
