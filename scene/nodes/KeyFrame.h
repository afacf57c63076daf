#pragma once

#include "velmarvec.h"

#include "utils/OStream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

namespace Velmar {

/// One station of a motion during the exposure. Its layout is shared with the renderer library.
struct KeyFrame {
    static constexpr double identity_S[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    /// In metres.
    Vec3d pos{};
    /// 0 is the start of the exposure and 1 its end. Times outside are allowed.
    double time = 0.0;
    /// Of the rotation; need not be of unit length.
    Vec3d axis{0.0, 0.0, 1.0};
    /// In radians.
    double angle = 0.0;
    /// Scale and shear, row after row.
    double S[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

    bool hasIdentityS() const { return std::equal(std::begin(S), std::end(S), std::begin(identity_S)); }

    bool operator==(const KeyFrame&) const = default;
};

static_assert(std::is_standard_layout_v<KeyFrame> && std::is_trivially_copyable_v<KeyFrame>);
static_assert(offsetof(KeyFrame, pos) == 0);
static_assert(offsetof(KeyFrame, time) == 24);
static_assert(offsetof(KeyFrame, axis) == 32);
static_assert(offsetof(KeyFrame, angle) == 56);
static_assert(offsetof(KeyFrame, S) == 64);
static_assert(sizeof(KeyFrame) == 136);

/// Writes the element `keyframe` with `depth` tabs before it. A rotation is left out when its angle is 0, whatever its
/// axis, and `S` when it is the identity.
void writeKeyFrame(const KeyFrame& frame, OStream& stream, std::uint32_t depth);

} // namespace Velmar
