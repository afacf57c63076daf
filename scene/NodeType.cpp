#include "scene/NodeType.h"

#include <array>
#include <cstddef>

namespace Velmar {

String getNodeTypeName(NodeType type) {
    static constexpr std::array<const char*, 16> names = {
        "Root",
        "Camera",
        "Render Settings",
        "Material",
        "Mesh",
        "Object",
        "Sphere",
        "Medium",
        "Tone Mapping",
        "Rectangle Light",
        "Background Settings",
        "Metadata",
        "Parametric Surface",
        "Displaced Quad",
        "Scatter",
        "Section Plane",
    };
    const auto code = static_cast<std::size_t>(type);
    return code < names.size() ? names[code] : "Unknown type";
}

} // namespace Velmar
