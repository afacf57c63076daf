#include "preview/ImageStore.h"

#include "preview/SceneNodes.h"
#include "preview/System.h"

#include <algorithm>
#include <cstring>

namespace Preview {

namespace {

std::string toText(const Velmar::String& text) {
    return std::string(text.view());
}

} // namespace

ImageStore::Lock::Lock(const ImageStore& store) : section(&store.master->critical_section_152) {
    System::enterCriticalSection(section);
}

ImageStore::Lock::~Lock() {
    System::leaveCriticalSection(section);
}

ImageStore::ImageStore(Velmar::RenderBuffer& buffer, std::string& complaint)
    : master(buffer.getMasterBuffer()), width(master->width), height(master->height), margin(master->margin),
      factor(master->super_sample_factor) {
    constexpr std::uint32_t max_edge = 32768;
    constexpr std::uint32_t max_factor = 64;
    complaint.clear();
    if (width == 0 || height == 0) {
        complaint = "the render settings give no size to the picture; nothing is rendered";
        return;
    }
    if (width > max_edge || height > max_edge || factor > max_factor || margin > max_edge) {
        complaint = "a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                    " pixels is too large; nothing is rendered";
        return;
    }
    readChannels(master->channels);
    if (factor == 0) {
        // Set to 0 or not at all: the host's store has no room then.
        factor = 1;
        own_floats.resize(channels.floats_per_pixel * getLayerWidth() * getLayerHeight());
        floats = own_floats.data();
        size = own_floats.size();
    } else {
        floats = master->channels.main_buffer.data();
        size = master->channels.main_buffer.size();
        // The host computes the size in 32 bits.
        if (size < std::uint64_t{channels.floats_per_pixel} * getLayerWidth() * getLayerHeight()) {
            complaint = "the image store is smaller than the picture; nothing is rendered";
            return;
        }
    }
    for (const auto& region : master->regions) {
        has_regions = true;
        const PixelBox box = {std::min(region.x1, width), std::min(region.y1, height), std::min(region.x2, width),
                              std::min(region.y2, height)};
        if (box.x1 < box.x2 && box.y1 < box.y2)
            regions.push_back(box);
        else
            report("a render region without pixels is left out");
    }
    if (!has_regions) regions.push_back({0, 0, width, height});
}

void ImageStore::readChannels(const Velmar::ChannelBlock& block) {
    for (const Velmar::ChannelDescriptor& layer : block.layers)
        channels.layers.push_back(layer.offset);
    channels.alpha = block.alpha.offset;
    channels.normals = block.normals.offset;
    channels.normals_pre_bump = block.normals_pre_bump.offset;
    channels.depth = block.depth.offset;
    channels.position = block.position.offset;
    channels.material_id = block.material_id.offset;
    channels.object_id = block.object_id.offset;
    channels.direct = block.lighting_passes[0].offset;
    channels.indirect = block.lighting_passes[1].offset;
    channels.emission = block.lighting_passes[5].offset;
    for (const Velmar::ChannelDescriptor& mask : block.material_masks) {
        channels.material_masks.push_back(mask.offset);
        channels.material_mask_names.push_back(toText(mask.name));
    }
    for (const Velmar::ChannelDescriptor& mask : block.object_masks) {
        channels.object_masks.push_back(mask.offset);
        channels.object_mask_names.push_back(toText(mask.name));
    }
    if (block.spectral.isPresent()) report("spectral channels of receivers aren't rendered");
    channels.floats_per_pixel = block.floats_per_pixel;

    std::size_t begin = channels.floats_per_pixel;
    std::size_t end = 0;
    for (const Velmar::ChannelDescriptor* const channel : {&block.normals, &block.normals_pre_bump, &block.depth,
                                                           &block.position, &block.material_id, &block.object_id}) {
        if (!channel->isPresent()) continue;
        const auto offset = static_cast<std::size_t>(channel->offset);
        begin = std::min(begin, offset);
        end = std::max(end, offset + static_cast<std::size_t>(channel->components));
    }
    channels.auxiliary_begin = std::min(begin, end);
    channels.auxiliary_end = end;
}

bool ImageStore::isInRegions(std::uint32_t x, std::uint32_t y) const {
    return std::any_of(regions.begin(), regions.end(), [=](const PixelBox& box) { return box.contains(x, y); });
}

void ImageStore::clear() {
    const Lock lock(*this);
    if (size != 0) std::memset(floats, 0, size * sizeof(float));
    master->reserved_24 = 0;
}

void ImageStore::setSampleCount(std::uint64_t samples) {
    const Lock lock(*this);
    master->reserved_24 = samples;
}

void ImageStore::merge(const PixelBox& box, std::span<const float> values, std::uint32_t samples) {
    const std::size_t n = channels.floats_per_pixel;
    const std::size_t row = std::size_t{box.x2 - box.x1} * n;
    const float weight = 1.0f / static_cast<float>(samples);
    const Lock lock(*this);
    const float* from = values.data();
    for (std::uint32_t y = box.y1; y < box.y2; ++y) {
        float* to = floats + (std::size_t{y} * getLayerWidth() + box.x1) * n;
        if (samples == 1) {
            std::memcpy(to, from, row * sizeof(float));
        } else if (!channels.hasAuxiliary()) {
            for (std::size_t i = 0; i < row; ++i)
                to[i] += (from[i] - to[i]) * weight;
        } else {
            for (std::size_t pixel = 0; pixel < row; pixel += n) {
                for (std::size_t i = pixel; i < pixel + channels.auxiliary_begin; ++i)
                    to[i] += (from[i] - to[i]) * weight;
                for (std::size_t i = pixel + channels.auxiliary_end; i < pixel + n; ++i)
                    to[i] += (from[i] - to[i]) * weight;
            }
        }
        from += row;
    }
}

void ImageStore::fill(const PixelBox& box, std::span<const float> values) {
    const std::size_t n = channels.floats_per_pixel;
    const Lock lock(*this);
    for (std::uint32_t y = box.y1; y < box.y2; ++y)
        for (std::uint32_t x = box.x1; x < box.x2; ++x)
            std::copy(values.begin(), values.end(), floats + (std::size_t{y} * getLayerWidth() + x) * n);
}

} // namespace Preview
