#pragma once

#include "velmarthreadsaferefcounted.h"

#include <memory>

namespace Velmar {

struct DestroyObject {
    void operator()(ThreadSafeRefCounted* object) const { object->destroy(1); }
};

/// A new object on its way to the host, with count 0. It goes if filling it fails.
template <class T>
using NewObject = std::unique_ptr<T, DestroyObject>;

} // namespace Velmar
