#pragma once

#include "velmarcompiler.h"

#include <type_traits>

namespace Velmar {

/// Holds a counted object: adds 1 to its count while it points there, and destroys the object with the last holder.
/// A holder made for an object of count 0 is its first, so the object is destroyed with it.
template <class T>
class Reference {
  public:
    using Relocatable = void;

    Reference() = default;
    Reference(T* object) : ob(object) { incrementIfSet(); }
    Reference(const Reference& other) : ob(other.ob) { incrementIfSet(); }

    template <class Derived>
    requires std::is_convertible_v<Derived*, T*> Reference(const Reference<Derived>& other) : ob(other.getPointer()) {
        incrementIfSet();
    }

    ~Reference() { release(ob); }

    Reference& operator=(const Reference& other) { return *this = other.ob; }

    /// The new object is counted before the old one is released, so assigning what is held already is harmless.
    Reference& operator=(T* object) {
        T* const old = ob;
        ob = object;
        incrementIfSet();
        release(old);
        return *this;
    }

    T& operator*() const {
        assertThat(ob != nullptr, "ob");
        return *ob;
    }
    T* operator->() const {
        assertThat(ob != nullptr, "ob");
        return ob;
    }

    /// The held object or null. The count isn't touched.
    T* getPointer() const { return ob; }

    explicit operator bool() const { return ob != nullptr; }
    bool operator==(const Reference& other) const { return ob == other.ob; }

  private:
    void incrementIfSet() const {
        if (ob != nullptr) ob->increment();
    }

    static void release(T* object) {
        if (object != nullptr && object->decrement() == 1) object->destroy(1);
    }

    T* ob = nullptr;
};

} // namespace Velmar
