#pragma once

#include "velmarthreadsaferefcounted.h"

#include <memory>

namespace Velmar {

struct DestroyObject {
    void operator()(ThreadSafeRefCounted* object) const { object->destroy(1); }
};

/// A new object with count 0, to be returned to the host. It is destroyed if an exception is thrown before.
template <class T>
using NewObject = std::unique_ptr<T, DestroyObject>;

} // namespace Velmar
