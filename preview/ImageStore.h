#pragma once

#include "renderer/ImageBuffers.h"
#include "renderer/MasterBuffer.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Preview {

/// Where the channels are among the floats of a pixel; negative for those that aren't asked for.
struct Channels {
    std::vector<std::int32_t> layers;
    std::int32_t alpha = -1;
    std::int32_t normals = -1;
    std::int32_t normals_pre_bump = -1;
    std::int32_t depth = -1;
    std::int32_t position = -1;
    std::int32_t material_id = -1;
    std::int32_t object_id = -1;
    std::int32_t direct = -1;
    std::int32_t indirect = -1;
    std::int32_t emission = -1;
    std::vector<std::int32_t> material_masks;
    std::vector<std::int32_t> object_masks;
    std::vector<std::string> material_mask_names;
    std::vector<std::string> object_mask_names;
    std::size_t floats_per_pixel = 0;
    /// The floats from `auxiliary_begin` to `auxiliary_end` hold channels that are taken once, in the middle of the
    /// pixel, and not averaged.
    std::size_t auxiliary_begin = 0;
    std::size_t auxiliary_end = 0;

    bool hasAuxiliary() const { return auxiliary_begin < auxiliary_end; }
};

/// A rectangle of pixels, without those at `x2` and `y2`.
struct PixelBox {
    std::uint32_t x1 = 0;
    std::uint32_t y1 = 0;
    std::uint32_t x2 = 0;
    std::uint32_t y2 = 0;

    bool contains(std::uint32_t x, std::uint32_t y) const { return x >= x1 && x < x2 && y >= y1 && y < y2; }
    bool operator==(const PixelBox&) const = default;
};

/// The image that a render fills: the host's `MasterBuffer`, where it has room, or memory of the preview's own where
/// the host's settings leave the super sample factor at 0 and so the store empty.
///
/// The pixels of a layer are those of the picture with its margins, `factor` times finer in both directions. Each float
/// is the mean of the samples so far, except for the auxiliary channels. The host's word at offset 24 holds the number
/// of samples.
class ImageStore {
  public:
    /// `buffer` must outlive this object. `complaint` says why nothing can be rendered and is empty otherwise. Throws
    /// `std::bad_alloc`.
    ImageStore(Velmar::RenderBuffer& buffer, std::string& complaint);

    std::uint32_t getWidth() const { return width; }
    std::uint32_t getHeight() const { return height; }
    std::uint32_t getMargin() const { return margin; }
    std::uint32_t getFactor() const { return factor; }
    std::uint32_t getLayerWidth() const { return (width + 2 * margin) * factor; }
    std::uint32_t getLayerHeight() const { return (height + 2 * margin) * factor; }
    const Channels& getChannels() const { return channels; }
    /// The parts of the picture to render, in its pixels and inside it. Without regions the whole of it.
    const std::vector<PixelBox>& getRegions() const { return regions; }
    bool hasRegions() const { return has_regions; }
    bool isInRegions(std::uint32_t x, std::uint32_t y) const;

    void clear();

    /// Takes one more sample of each pixel of `box`, row after row: number `samples` of them, counted from 1. With 1
    /// the values replace what is there, auxiliary channels included. Locks the store.
    void merge(const PixelBox& box, std::span<const float> values, std::uint32_t samples);

    /// Fills the pixels of `box` with one pixel's values, as long as no sample has been merged there. Locks the store.
    void fill(const PixelBox& box, std::span<const float> values);

    void setSampleCount(std::uint64_t samples);

    /// Calls `read` with the floats of the store while it is locked.
    template <class Read>
    void readLocked(Read read) const {
        const Lock lock(*this);
        read(std::span<const float>(floats, size));
    }

  private:
    class Lock {
      public:
        explicit Lock(const ImageStore& store);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        void* section;
    };

    void readChannels(const Velmar::ChannelBlock& block);

    Velmar::MasterBuffer* master;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t margin;
    std::uint32_t factor;
    Channels channels;
    std::vector<PixelBox> regions;
    bool has_regions = false;
    std::vector<float> own_floats;
    float* floats = nullptr;
    std::size_t size = 0;
};

} // namespace Preview
