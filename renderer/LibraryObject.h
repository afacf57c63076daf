#pragma once

#include "velmarcompiler.h"

#include "renderer/LibraryCall.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The beginning of every object that the renderer library makes, as far as this side touches it. Such objects are
/// never classes of ours: they are called by the position of the operation, through `callSlot`.
struct LibraryObject {
    using Operation = void (*)();
    using Destroy = void (*)(LibraryObject* object);

    const Operation* operations;
    /// Changed without atomicity: one thread at a time.
    std::int32_t refcount;
    Destroy destroy;
};

static_assert(offsetof(LibraryObject, operations) == 0);
static_assert(offsetof(LibraryObject, refcount) == 8);
static_assert(offsetof(LibraryObject, destroy) == 16);

/// Calls the operation at position `slot` of the object's table, with the object as first argument. The arguments are
/// numbers and pointers alone: a reference or class value travels as its address, so that what the compiler emits here
/// is what it emits for a virtual call of the library's own class. Throws what the library throws, as `callLibrary`.
template <class Result, class... Arguments>
Result callSlot(LibraryObject* object, std::size_t slot, Arguments... arguments) {
    assertThat(object != nullptr, "object != NULL");
    using Typed = Result (*)(LibraryObject*, Arguments...);
    return callLibrary([=] { return reinterpret_cast<Typed>(object->operations[slot])(object, arguments...); });
}

} // namespace Velmar
