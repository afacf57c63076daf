#pragma once

#include <cstdint>
#include <cstring>

namespace TestSupport {

/// The reference count of the object of a handle: its second 64-bit word.
inline std::int64_t refCountOf(const void* handle) {
    std::int64_t count = 0;
    std::memcpy(&count, static_cast<const char*>(handle) + 8, sizeof count);
    return count;
}

} // namespace TestSupport
