#pragma once

#include "velmarvector.h"

#include <cstddef>
#include <new>
#include <tuple>
#include <utility>

/// What the classes of the scene graph are written with.

namespace Velmar {

// ---- class values as results of slots

/// Constructs the result of a virtual operation in the place that it is given, and returns that place.
template <class T, class Value>
T* constructResult(T* result, const Value& value) {
    return new (static_cast<void*>(result)) T(value);
}

/// Without a copy, which would have another capacity.
template <class T>
Vector<T>* constructResult(Vector<T>* result, Vector<T>&& value) {
    auto* const made = new (static_cast<void*>(result)) Vector<T>();
    made->swap(value);
    return made;
}

template <class T>
void takeResult(T& to, T& from) {
    to = from;
}

template <class T>
void takeResult(Vector<T>& to, Vector<T>& from) {
    to.swap(from);
}

/// The caller's side: `call(place)` has a virtual operation construct a `T` in that place.
template <class T, class Call>
T valueOfSlot(Call call) {
    alignas(T) std::byte place[sizeof(T)];
    T* const made = call(reinterpret_cast<T*>(place));
    struct Destroyer {
        T* value;
        ~Destroyer() { value->~T(); }
    } const destroyer{made};
    T value;
    takeResult(value, *made);
    return value;
}

// ---- fields

/// Several fields of a class, listed once for copies and comparisons.
template <class Class, class... Types>
class FieldList {
  public:
    constexpr explicit FieldList(Types Class::*... fields_) : fields(fields_...) {}

    void copy(const Class& from, Class& to) const {
        std::apply([&](const auto... field) { ((to.*field = from.*field), ...); }, fields);
    }

    /// Exact, for floating point numbers too.
    bool areEqual(const Class& a, const Class& b) const {
        return std::apply([&](const auto... field) { return ((a.*field == b.*field) && ...); }, fields);
    }

  private:
    std::tuple<Types Class::*...> fields;
};

} // namespace Velmar
