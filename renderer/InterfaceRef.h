#pragma once

#include "renderer/LibraryObject.h"

namespace Velmar {

/// Holds an object of the renderer library. Unlike `Reference` it counts without atomicity, destroys the object through
/// the function that the object carries, and on assignment lets the old object go before it counts the new one. One
/// thread at a time.
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

    /// Lets the object go; with the last holder it is destroyed.
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
