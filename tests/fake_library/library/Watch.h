#pragma once

#include <stdint.h>

namespace FakeSdk {

constexpr uint32_t slot_count = 16;

/// Gives an object of the host a table of this library, as a class derived here would have one. The table counts each
/// call and passes it on. Returns the number of calls of each slot.
uint32_t* watchObject(void* object);

} // namespace FakeSdk
