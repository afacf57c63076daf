#pragma once

#include "velmarcompiler.h"

#include "renderer/LibraryCall.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// Operations of the library's objects, by position. Only the first is one of all objects, the others are those of
/// "VelmarInterface". The meaning of those named `unknown` lies with the library; no export reaches them.
enum class LibrarySlot : std::size_t {
    initialise = 1,
    unknown_2 = 2,
    unknown_5 = 5,
    unknown_6 = 6,
    unknown_8 = 8,
    initialise_scene = 9,
    unknown_10 = 10,
    start = 11,
    pause = 12,
    resume = 13,
    stop = 14,
    update_scene = 15,
};

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

/// Calls an operation of the object, with the object as first argument. The arguments are numbers and pointers only:
/// references and class values are passed by address, as in a virtual call of the library's own class. Throws what the
/// library throws, as `callLibrary`.
template <class Result, class... Arguments>
Result callSlot(LibraryObject* object, LibrarySlot slot, Arguments... arguments) {
    assertThat(object != nullptr, "object != NULL");
    using Typed = Result (*)(LibraryObject*, Arguments...);
    const LibraryObject::Operation operation = object->operations[static_cast<std::size_t>(slot)];
    return callLibrary([=] { return reinterpret_cast<Typed>(operation)(object, arguments...); });
}

/// Holds an object of the renderer library. Unlike `Reference` it counts without atomicity, destroys the object by the
/// function in the object, and on assignment releases the old object before it counts the new one. One thread at a
/// time.
class InterfaceRef {
  public:
    InterfaceRef() = default;
    explicit InterfaceRef(LibraryObject* object) : ob(object) { increment(); }
    InterfaceRef(const InterfaceRef& other) : ob(other.ob) { increment(); }
    ~InterfaceRef() { release(); }

    InterfaceRef& operator=(const InterfaceRef& other) {
        if (this == &other) return *this;
        release();
        ob = other.ob;
        increment();
        return *this;
    }

    /// Releases the object, which is destroyed with its last holder.
    void clear() {
        release();
        ob = nullptr;
    }

    /// The held object or null. The count isn't touched.
    LibraryObject* getPointer() const { return ob; }

  private:
    void increment() const {
        if (ob != nullptr) ++ob->refcount;
    }

    void release() const {
        if (ob != nullptr && ob->refcount-- == 1) callLibraryInDestructor([this] { ob->destroy(ob); });
    }

    LibraryObject* ob = nullptr;
};

static_assert(sizeof(InterfaceRef) == 8);

} // namespace Velmar
