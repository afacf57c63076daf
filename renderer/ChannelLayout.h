#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "renderer/AlignedFloatVector.h"
#include "renderer/ChannelDescriptor.h"
#include "renderer/RenderChannelRequest.h"

#include <array>
#include <cstdint>

namespace Velmar {

/// The image store and the places of its channels: the part of `MasterBuffer` from offset 312 on. The renderer library
/// works on it in place.
struct ChannelBlock {
    explicit ChannelBlock(const Reference<quorl::Allocator>& allocator)
        : main_buffer(allocator), second_buffer(allocator), third_buffer(allocator) {}

    std::uint64_t layer_width = 0;
    std::uint64_t layer_height = 0;
    std::uint64_t floats_per_pixel = 0;
    std::uint64_t second_width = 0;
    std::uint64_t second_height = 0;
    AlignedFloatVector main_buffer;
    AlignedFloatVector second_buffer;
    AlignedFloatVector third_buffer;
    Vector<ChannelDescriptor> layers;
    ChannelDescriptor alpha;
    ChannelDescriptor normals;
    ChannelDescriptor normals_pre_bump;
    ChannelDescriptor depth;
    ChannelDescriptor position;
    ChannelDescriptor material_id;
    ChannelDescriptor object_id;
    Vector<ChannelDescriptor> material_masks;
    Vector<ChannelDescriptor> object_masks;
    std::array<ChannelDescriptor, RenderChannelRequest::lighting_pass_count> lighting_passes;
    ChannelDescriptor spectral;
    /// All channels that are present. Their order isn't that of their offsets.
    Vector<ChannelDescriptor> all_channels;
};

static_assert(sizeof(ChannelBlock) == 1128);

/// Gives each light layer and each requested channel its place among the floats of a pixel, and sets
/// `floats_per_pixel` and the list of all channels. `block` must be fresh.
/// With `gpu`, colours have four components and alpha is the fourth of the first layer.
/// Throws `std::bad_alloc`.
void layOutChannels(ChannelBlock& block, const Vector<String>& layer_names, bool gpu,
                    const RenderChannelRequest& request);

} // namespace Velmar
