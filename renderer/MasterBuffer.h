#pragma once

#include "reference.h"
#include "velmarmemory.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "renderer/AlignedFloatVector.h"
#include "renderer/ChannelLayout.h"
#include "utils/System.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// What a `MasterBuffer` is made for. Sizes are in pixels.
struct ImageStoreSize {
    /// Of the supersampled image with its margins.
    std::uint32_t layer_width = 0;
    std::uint32_t layer_height = 0;
    /// Of the finished image.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t margin = 0;
    std::uint32_t super_sample_factor = 0;
};

/// The image store that the renderer library renders into. The library's threads read and write the object directly and
/// use its locks: every offset is a contract, also of the words whose meaning only the library knows (`reserved_` and
/// the offset). This side makes and destroys the object and touches nothing in between.
class MasterBuffer : public SdkAllocated {
  public:
    /// One light layer for each of `layer_names`. With `gpu` there is a second store for previews. The number of floats
    /// of a store is taken modulo 2^32, so an image beyond that gets a store too small for it.
    /// Throws `std::bad_alloc`.
    MasterBuffer(const ImageStoreSize& size, const Vector<String>& layer_names, bool gpu,
                 const RenderChannelRequest& request);
    MasterBuffer(const MasterBuffer&) = delete;
    MasterBuffer& operator=(const MasterBuffer&) = delete;

    /// Slot 0. Runs the destructor and, with bit 0 of `flags` set, frees the memory.
    virtual void* destroy(unsigned flags);

  private:
    class OwnedCriticalSection {
      public:
        OwnedCriticalSection() { constructCriticalSection(slot); }
        ~OwnedCriticalSection() { destroyCriticalSection(slot); }
        OwnedCriticalSection(const OwnedCriticalSection&) = delete;
        OwnedCriticalSection& operator=(const OwnedCriticalSection&) = delete;

      private:
        CriticalSectionSlot slot;
    };

    struct OwnedAlignedArray {
        OwnedAlignedArray() = default;
        ~OwnedAlignedArray() { sdkAlignedFree(e); }
        OwnedAlignedArray(const OwnedAlignedArray&) = delete;
        OwnedAlignedArray& operator=(const OwnedAlignedArray&) = delete;

        void* e = nullptr;
    };

    ~MasterBuffer() = default;

    void sizeBuffers(bool gpu);
    void sizeSecondBuffer();

  public:
    // The library's as much as ours.
    std::uint32_t reserved_8 = 0;
    std::uint32_t max_tile_edge;
    std::uint32_t reserved_16 = 1;
    std::uint64_t reserved_24 = 0;
    double constructed_at = 0.0;
    std::uint64_t reserved_40 = 0;
    std::uint8_t reserved_48 = 0;
    std::uint64_t reserved_56[3]{};
    double begun_at;
    std::uint64_t reserved_88 = 0;
    std::uint8_t reserved_96 = 0;
    alignas(8) std::uint32_t start_level = 2;
    std::uint64_t reserved_112[3]{};
    OwnedAlignedArray reserved_136;
    std::uint64_t reserved_144 = 0;
    OwnedCriticalSection critical_section_152;
    ConditionVariableSlot condition_variable_192;
    std::uint64_t reserved_200 = 0;
    std::uint8_t reserved_208 = 1;
    std::uint64_t reserved_216[2]{};
    OwnedCriticalSection critical_section_232;
    OwnedCriticalSection critical_section_272;
    ChannelBlock channels;
    std::uint8_t has_regions = 0;
    OwnedCriticalSection critical_section_1448;
    std::uint64_t reserved_1488[2]{};
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t layer_width;
    std::uint32_t layer_height;
    std::uint32_t margin;
    std::uint32_t super_sample_factor;
    std::uint32_t start_divider = 1;
    std::uint32_t reserved_1532 = 1;
    std::uint8_t progressive;
    std::uint64_t reserved_1544[3]{};
    Vector<RenderChannelRequest::RenderRegion> regions;
    Reference<quorl::Allocator> allocator;
};

static_assert(offsetof(MasterBuffer, reserved_8) == 8);
static_assert(offsetof(MasterBuffer, max_tile_edge) == 12);
static_assert(offsetof(MasterBuffer, reserved_16) == 16);
static_assert(offsetof(MasterBuffer, reserved_24) == 24);
static_assert(offsetof(MasterBuffer, constructed_at) == 32);
static_assert(offsetof(MasterBuffer, reserved_40) == 40);
static_assert(offsetof(MasterBuffer, reserved_48) == 48);
static_assert(offsetof(MasterBuffer, reserved_56) == 56);
static_assert(offsetof(MasterBuffer, begun_at) == 80);
static_assert(offsetof(MasterBuffer, reserved_88) == 88);
static_assert(offsetof(MasterBuffer, reserved_96) == 96);
static_assert(offsetof(MasterBuffer, start_level) == 104);
static_assert(offsetof(MasterBuffer, reserved_112) == 112);
static_assert(offsetof(MasterBuffer, reserved_136) == 136);
static_assert(offsetof(MasterBuffer, reserved_144) == 144);
static_assert(offsetof(MasterBuffer, critical_section_152) == 152);
static_assert(offsetof(MasterBuffer, condition_variable_192) == 192);
static_assert(offsetof(MasterBuffer, reserved_200) == 200);
static_assert(offsetof(MasterBuffer, reserved_208) == 208);
static_assert(offsetof(MasterBuffer, reserved_216) == 216);
static_assert(offsetof(MasterBuffer, critical_section_232) == 232);
static_assert(offsetof(MasterBuffer, critical_section_272) == 272);
static_assert(offsetof(MasterBuffer, channels) == 312);
static_assert(offsetof(MasterBuffer, has_regions) == 1440);
static_assert(offsetof(MasterBuffer, critical_section_1448) == 1448);
static_assert(offsetof(MasterBuffer, reserved_1488) == 1488);
static_assert(offsetof(MasterBuffer, width) == 1504);
static_assert(offsetof(MasterBuffer, height) == 1508);
static_assert(offsetof(MasterBuffer, layer_width) == 1512);
static_assert(offsetof(MasterBuffer, layer_height) == 1516);
static_assert(offsetof(MasterBuffer, margin) == 1520);
static_assert(offsetof(MasterBuffer, super_sample_factor) == 1524);
static_assert(offsetof(MasterBuffer, start_divider) == 1528);
static_assert(offsetof(MasterBuffer, reserved_1532) == 1532);
static_assert(offsetof(MasterBuffer, progressive) == 1536);
static_assert(offsetof(MasterBuffer, reserved_1544) == 1544);
static_assert(offsetof(MasterBuffer, regions) == 1568);
static_assert(offsetof(MasterBuffer, allocator) == 1592);
static_assert(sizeof(MasterBuffer) == 1600);

} // namespace Velmar
