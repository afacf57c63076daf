#include "renderer/MasterBuffer.h"

#include "utils/PlatformUtils.h"

#include <cstring>

namespace Velmar {

namespace {

/// The greatest power of two whose square doesn't exceed `area`.
constexpr std::uint32_t greatestEdgeWithin(std::uint32_t area) {
    std::uint32_t edge = 1;
    while (edge * edge < area + 1)
        edge *= 2;
    return edge / 2;
}

constexpr std::uint32_t tile_area = 1048576;

void zeroFill(AlignedFloatVector& buffer) {
    if (!buffer.empty()) std::memset(buffer.data(), 0, buffer.size() * sizeof(float));
}

} // namespace

// The members' own destructors release everything, the last member first.
MasterBuffer::MasterBuffer(const ImageStoreSize& size, const Vector<String>& layer_names, bool gpu,
                           const RenderChannelRequest& request)
    : max_tile_edge(greatestEdgeWithin(tile_area)), begun_at(PlatformUtils::getTimeSeconds()),
      channels(new VelmarSDKAllocator), width(size.width), height(size.height), layer_width(size.layer_width),
      layer_height(size.layer_height), margin(size.margin), super_sample_factor(size.super_sample_factor),
      progressive(request.progressive ? 1 : 0), allocator(channels.main_buffer.getAllocator()) {
    constructConditionVariable(condition_variable_192);
    channels.layer_width = layer_width;
    channels.layer_height = layer_height;
    layOutChannels(channels, layer_names, gpu, request);
    regions = request.regions;
    has_regions = regions.empty() ? 0 : 1;
    sizeBuffers(gpu);
    constructed_at = PlatformUtils::getTimeSeconds();
}

void* MasterBuffer::destroy(unsigned flags) {
    this->MasterBuffer::~MasterBuffer();
    if ((flags & 1) != 0) sdkFree(this);
    return this;
}

void MasterBuffer::sizeBuffers(bool gpu) {
    const auto floats_per_pixel = static_cast<std::uint32_t>(channels.floats_per_pixel);
    const std::uint32_t count = floats_per_pixel * layer_width * layer_height;

    channels.main_buffer.resize(count);
    zeroFill(channels.main_buffer);
    if (gpu) {
        channels.second_buffer.resize(count);
        zeroFill(channels.second_buffer);
        channels.second_width = layer_width;
        channels.second_height = layer_height;
    }
    if (has_regions != 0) {
        channels.third_buffer.resize(count);
        zeroFill(channels.third_buffer);
    }
    if (!channels.second_buffer.empty()) sizeSecondBuffer();
}

/// A progressive render of the whole image starts at a fraction of its resolution.
void MasterBuffer::sizeSecondBuffer() {
    start_divider = progressive != 0 && has_regions == 0 ? (1u << start_level) * super_sample_factor : 1;
    const std::uint32_t pixels_per_cell = start_divider / super_sample_factor;
    if (start_divider <= 1 || pixels_per_cell == 0) return;
    channels.second_width = (width - 1 + pixels_per_cell) / pixels_per_cell + 2 * margin;
    channels.second_height = (height - 1 + pixels_per_cell) / pixels_per_cell + 2 * margin;
}

} // namespace Velmar
