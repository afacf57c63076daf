#include "renderer/ChannelLayout.h"

#include <cstddef>

namespace Velmar {

namespace {

constexpr std::int32_t alpha_offset_in_gpu_layer = 3;

constexpr std::array<const char*, RenderChannelRequest::lighting_pass_count> lighting_pass_names{
    "direct_lighting",       "indirect_lighting", "specular_reflection_lighting", "refraction_lighting",
    "transmission_lighting", "emission_lighting", "participating_media_lighting", "sss_lighting"};

/// Hands out the floats of a pixel one channel after the other.
class PixelFloats {
  public:
    ChannelDescriptor take(ChannelType type, const String& name, std::int32_t components) {
        const ChannelDescriptor channel{type, name, static_cast<std::int32_t>(used_), components};
        used_ += static_cast<std::uint32_t>(components);
        return channel;
    }

    std::uint32_t used() const { return used_; }

  private:
    std::uint32_t used_ = 0;
};

void listPresent(Vector<ChannelDescriptor>& list, const ChannelDescriptor& channel) {
    if (channel.isPresent()) list.push_back(channel);
}

void listAllChannels(ChannelBlock& block) {
    Vector<ChannelDescriptor>& list = block.all_channels;
    for (const ChannelDescriptor& channel : block.layers)
        listPresent(list, channel);
    for (const ChannelDescriptor* channel : {&block.alpha, &block.normals, &block.normals_pre_bump, &block.depth,
                                             &block.position, &block.material_id, &block.object_id})
        listPresent(list, *channel);
    for (const ChannelDescriptor& channel : block.material_masks)
        listPresent(list, channel);
    for (const ChannelDescriptor& channel : block.object_masks)
        listPresent(list, channel);
    for (const ChannelDescriptor& channel : block.lighting_passes)
        listPresent(list, channel);
    listPresent(list, block.spectral);
}

} // namespace

void layOutChannels(ChannelBlock& block, const Vector<String>& layer_names, bool gpu,
                    const RenderChannelRequest& request) {
    const std::int32_t colour = gpu ? 4 : 3;
    PixelFloats floats;

    block.layers.reserve(layer_names.size());
    for (const String& name : layer_names)
        block.layers.push_back(floats.take(ChannelType::LightLayer, name, colour));

    if (request.alpha || request.foreground) {
        if (gpu)
            block.alpha = ChannelDescriptor{ChannelType::Alpha, "alpha", alpha_offset_in_gpu_layer, 1};
        else
            block.alpha = floats.take(ChannelType::Alpha, "alpha", 1);
    }
    for (std::size_t i = 0; i < request.lighting_passes.size(); ++i)
        if (request.lighting_passes[i])
            block.lighting_passes[i] = floats.take(ChannelType::LightingPass, lighting_pass_names[i], colour);
    if (request.spectral)
        block.spectral = floats.take(ChannelType::Spectral, "spectral", request.num_spectral_components);
    if (request.normals) block.normals = floats.take(ChannelType::Auxiliary, "normals", 3);
    if (request.normals_pre_bump) block.normals_pre_bump = floats.take(ChannelType::Auxiliary, "normals_pre_bump", 3);
    if (request.position) block.position = floats.take(ChannelType::Auxiliary, "position", 3);
    if (request.material_id) block.material_id = floats.take(ChannelType::Auxiliary, "material_id", 3);
    if (request.object_id) block.object_id = floats.take(ChannelType::Auxiliary, "object_id", 3);
    if (request.depth) block.depth = floats.take(ChannelType::Auxiliary, "depth", 1);

    block.material_masks.reserve(request.material_masks.size());
    for (const String& name : request.material_masks)
        block.material_masks.push_back(floats.take(ChannelType::MaterialMask, name, 1));
    block.object_masks.reserve(request.object_masks.size());
    for (const String& name : request.object_masks)
        block.object_masks.push_back(floats.take(ChannelType::ObjectMask, name, 1));

    block.floats_per_pixel = floats.used();
    listAllChannels(block);
}

} // namespace Velmar
