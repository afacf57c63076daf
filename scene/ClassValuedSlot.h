#pragma once

#include "velmarvector.h"

#include <cstddef>
#include <utility>

namespace Velmar {

template <class T>
void takeValue(T& to, T& from) {
    to = from;
}

/// With the capacity, which a copy wouldn't have.
template <class T>
void takeValue(Vector<T>& to, Vector<T>& from) {
    to.swap(from);
}

/// The value of a virtual operation that constructs its result in a place it is given: `call(place)` constructs a `T`
/// there and returns the place.
template <class T, class Call>
T valueOfSlot(Call call) {
    alignas(T) std::byte place[sizeof(T)];
    T* const made = call(reinterpret_cast<T*>(place));
    struct Destroyer {
        T* value;
        ~Destroyer() { value->~T(); }
    } const destroyer{made};
    T value;
    takeValue(value, *made);
    return value;
}

/// The other side of that: constructs `value` in `result`, without a copy, and returns the place.
template <class T>
Vector<T>* moveIntoResult(Vector<T>& value, Vector<T>* result) {
    auto* const made = new (static_cast<void*>(result)) Vector<T>();
    made->swap(value);
    return made;
}

} // namespace Velmar
