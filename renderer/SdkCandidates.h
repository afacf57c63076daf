#pragma once

#include <array>
#include <string_view>

namespace Velmar {

/// The file names of the renderer library on this system. The full library wins over the render-only one.
extern const std::array<std::string_view, 2> sdk_candidates;

} // namespace Velmar
