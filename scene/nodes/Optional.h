#pragma once

#include "velmarvec.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// A setting that may be absent: only what was set reaches a document. The value of one that wasn't is zero. Its layout
/// is shared with the renderer library.
template <class T>
struct Optional {
    T value{};
    bool has_value = false;

    void set(const T& new_value) {
        value = new_value;
        has_value = true;
    }

    bool operator==(const Optional&) const = default;
};

static_assert(sizeof(Optional<bool>) == 2 && offsetof(Optional<bool>, has_value) == 1);
static_assert(sizeof(Optional<std::int32_t>) == 8 && offsetof(Optional<std::int32_t>, has_value) == 4);
static_assert(sizeof(Optional<double>) == 16 && offsetof(Optional<double>, has_value) == 8);
static_assert(sizeof(Optional<Vec3d>) == 32 && offsetof(Optional<Vec3d>, has_value) == 24);

} // namespace Velmar
