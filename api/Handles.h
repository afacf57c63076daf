#pragma once

/// A handle of the flat interface is the plain address of an object, seen by hosts as an opaque type.

#include "velmarapi.h"

#include "api/HandleClasses.h"

#include <cstddef>
#include <cstring>

namespace Velmar {

template <class Handle>
typename ObjectOf<Handle>::type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::type* object) {
    return reinterpret_cast<Handle*>(object);
}

/// Stores into the field at `offset` of the handle's object: for functions of several classes that have the field at
/// the same offset.
template <class T>
void storeField(void* handle, std::size_t offset, T value) {
    std::memcpy(static_cast<std::byte*>(handle) + offset, &value, sizeof value);
}

} // namespace Velmar
