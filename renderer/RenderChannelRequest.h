#pragma once

#include "velmarstring.h"
#include "velmarvector.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Velmar {

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

} // namespace Velmar
