#pragma once

/// What all classes of velmar.hpp have in common.

#include "errors.hpp"

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace velmar {

/// x, y, z.
using Vec3 = std::array<double, 3>;
/// A matrix, row by row.
using Mat3 = std::array<double, 9>;

namespace detail {

/// A count for a C function.
inline std::int32_t countOf(std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throw BadArgumentError("an array has more than 2147483647 elements");
    return static_cast<std::int32_t>(size);
}

/// Text for a C function, for which it ends at a zero byte.
inline const char* textOf(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw BadArgumentError("a text contains a zero byte");
    return text.c_str();
}

/// Text of a C function.
inline std::string textOf(const char* bytes, std::uint64_t size) {
    return allocating([&] { return std::string(bytes, static_cast<std::size_t>(size)); });
}

} // namespace detail

/// A scene, or a node that may be part of one. An object of this class holds the node, and copies hold the same node:
/// it is destroyed when no scene, model, renderer or C++ object holds it any more. A class with no other rule throws
/// ClosedError from every function once it was closed or moved from, and another Error if the library fails.
template <class Handle>
class Node {
  public:
    Node(const Node& other) noexcept : held(other.held) { retain(); }
    Node(Node&& other) noexcept : held(std::exchange(other.held, nullptr)) {}
    Node& operator=(Node other) noexcept {
        std::swap(held, other.held);
        return *this;
    }

    bool isClosed() const noexcept { return held == nullptr; }
    /// Releases the node. Closing twice is harmless.
    void close() noexcept { release(); }

    /// For the functions of velmarkit.h. This object still holds the node.
    Handle* handle() const {
        if (isClosed()) throw ClosedError("the object was closed or moved from");
        return held;
    }

    std::string name() const {
        const char* bytes = nullptr;
        std::uint64_t size = 0;
        detail::check(VelmarKit_Node_GetName(handle(), &bytes, &size));
        return detail::textOf(bytes, size);
    }

    friend bool operator==(const Node& a, const Node& b) noexcept { return a.held == b.held; }

  protected:
    /// Holds a node that is new, or that another object holds too.
    explicit Node(Handle* node) noexcept : held(node) { retain(); }
    ~Node() { release(); }

    /// What a C function creates.
    template <class... Parameters, class... Arguments>
    static Handle* created(std::int32_t (*function)(Parameters...), Arguments... arguments) {
        Handle* result = nullptr;
        detail::check(function(arguments..., &result));
        return result;
    }

    /// Calls a C function with the handle and `arguments`.
    template <class... Parameters, class... Arguments>
    void call(std::int32_t (*function)(Parameters...), Arguments... arguments) const {
        detail::check(function(handle(), arguments...));
    }

    /// What a C function stores through its last argument.
    template <class Value>
    Value get(std::int32_t (*function)(const Handle*, Value*)) const {
        Value value{};
        detail::check(function(handle(), &value));
        return value;
    }
    Vec3 get(std::int32_t (*function)(const Handle*, double*, double*, double*)) const {
        Vec3 value{};
        detail::check(function(handle(), &value[0], &value[1], &value[2]));
        return value;
    }
    std::string get(std::int32_t (*function)(const Handle*, const char**, std::uint64_t*)) const {
        const char* bytes = nullptr;
        std::uint64_t size = 0;
        detail::check(function(handle(), &bytes, &size));
        return detail::textOf(bytes, size);
    }

  private:
    void retain() const noexcept {
        if (held != nullptr) VelmarKit_Node_Retain(held);
    }
    void release() noexcept {
        if (held != nullptr) VelmarKit_Node_Release(std::exchange(held, nullptr));
    }

    Handle* held;
};

} // namespace velmar
