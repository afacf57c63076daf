#pragma once

/// A handle of the flat interface is the plain address of an object, seen by hosts as an opaque type.

#include "velmarapi.h"

#include "api/HandleClasses.h"

namespace Velmar {

template <class Handle>
typename ObjectOf<Handle>::type* fromHandle(Handle* handle) {
    return reinterpret_cast<typename ObjectOf<Handle>::type*>(handle);
}

template <class Handle>
Handle* toHandle(typename ObjectOf<Handle>::type* object) {
    return reinterpret_cast<Handle*>(object);
}

} // namespace Velmar
