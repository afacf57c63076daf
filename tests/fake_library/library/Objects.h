#pragma once

#include "Sdk.h"

namespace FakeSdk {

/// The beginning of every object that hosts get: a table, a count that hosts change, and how it ends.
class LibraryObject {
  public:
    LibraryObject() : refcount(0), destroyed(destroyObject) {}

    static void* operator new(size_t size) { return host_memory.malloc(size); }
    static void operator delete(void* block) { host_memory.free(block); }

#ifdef _MSC_VER
    virtual ~LibraryObject() {}
#else
    virtual void end() = 0;
#endif

    int32_t refcount;
    void (*destroyed)(LibraryObject* object);

  private:
    static void destroyObject(LibraryObject* object);
};

/// Makes the object of the class, or null for a class that the library doesn't have.
LibraryObject* makeObject(const String& class_name);

} // namespace FakeSdk
