#pragma once

#include <cstddef>
#include <utility>

namespace Velmar {

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
    return T(*made);
}

} // namespace Velmar
