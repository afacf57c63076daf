#pragma once

#include "velmarstring.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// What a channel of the image store holds.
enum class ChannelType : std::uint32_t {
    LightLayer = 0,
    Alpha = 1,
    Auxiliary = 2,
    MaterialMask = 3,
    ObjectMask = 4,
    LightingPass = 5,
    Spectral = 6,
};

/// Where a channel lies among the floats of a pixel.
struct ChannelDescriptor {
    ChannelType type = ChannelType::LightLayer;
    String name;
    /// Of the first component, in floats; negative when the channel is absent.
    std::int32_t offset = -1;
    std::int32_t components = 0;

    bool isPresent() const { return offset >= 0; }
};

static_assert(offsetof(ChannelDescriptor, type) == 0);
static_assert(offsetof(ChannelDescriptor, name) == 8);
static_assert(offsetof(ChannelDescriptor, offset) == 48);
static_assert(offsetof(ChannelDescriptor, components) == 52);
static_assert(sizeof(ChannelDescriptor) == 56);

} // namespace Velmar
