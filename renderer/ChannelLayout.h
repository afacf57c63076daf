#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "renderer/AlignedFloatVector.h"

#include <array>
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

/// Which channels a render is to have beside its light layers.
struct RenderChannelRequest {
    /// A part of the image in pixels. The order of the words differs from that of a render settings node's regions.
    struct RenderRegion {
        std::uint32_t x1 = 0;
        std::uint32_t y1 = 0;
        std::uint32_t x2 = 0;
        std::uint32_t y2 = 0;

        bool operator==(const RenderRegion&) const = default;
    };

    static constexpr std::size_t lighting_pass_count = 8;

    Vector<RenderRegion> regions;
    bool alpha = false;
    bool spectral = false;
    std::int32_t num_spectral_components = 0;
    bool progressive = false;
    bool normals = false;
    bool depth = false;
    bool position = false;
    bool material_id = false;
    bool object_id = false;
    bool normals_pre_bump = false;
    bool foreground = false;
    /// Direct, indirect, specular reflection, refraction, transmission, emission, participating media, sss.
    std::array<bool, lighting_pass_count> lighting_passes{};
    Vector<String> material_masks;
    Vector<String> object_masks;
};

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

static_assert(offsetof(ChannelBlock, layer_width) == 0);
static_assert(offsetof(ChannelBlock, layer_height) == 8);
static_assert(offsetof(ChannelBlock, floats_per_pixel) == 16);
static_assert(offsetof(ChannelBlock, second_width) == 24);
static_assert(offsetof(ChannelBlock, second_height) == 32);
static_assert(offsetof(ChannelBlock, main_buffer) == 40);
static_assert(offsetof(ChannelBlock, second_buffer) == 72);
static_assert(offsetof(ChannelBlock, third_buffer) == 104);
static_assert(offsetof(ChannelBlock, layers) == 136);
static_assert(offsetof(ChannelBlock, alpha) == 160);
static_assert(offsetof(ChannelBlock, normals) == 216);
static_assert(offsetof(ChannelBlock, normals_pre_bump) == 272);
static_assert(offsetof(ChannelBlock, depth) == 328);
static_assert(offsetof(ChannelBlock, position) == 384);
static_assert(offsetof(ChannelBlock, material_id) == 440);
static_assert(offsetof(ChannelBlock, object_id) == 496);
static_assert(offsetof(ChannelBlock, material_masks) == 552);
static_assert(offsetof(ChannelBlock, object_masks) == 576);
static_assert(offsetof(ChannelBlock, lighting_passes) == 600);
static_assert(offsetof(ChannelBlock, spectral) == 1048);
static_assert(offsetof(ChannelBlock, all_channels) == 1104);
static_assert(sizeof(ChannelBlock) == 1128);

/// Gives each light layer and each requested channel its place among the floats of a pixel, and sets
/// `floats_per_pixel` and the list of all channels. `block` must be fresh.
/// With `gpu`, colours have four components and alpha is the fourth of the first layer.
/// Throws `std::bad_alloc`.
void layOutChannels(ChannelBlock& block, const Vector<String>& layer_names, bool gpu,
                    const RenderChannelRequest& request);

} // namespace Velmar
