#pragma once

#include "velmarstring.h"

#include <cstdint>

namespace Velmar {

/// What a node is. The renderer library knows kinds that this library has no class for; checks of a node's kind do too.
enum class NodeType : std::uint32_t {
    Root = 0,
    Camera = 1,
    RenderSettings = 2,
    Material = 3,
    Mesh = 4,
    Object = 5,
    Sphere = 6,
    Medium = 7,
    ToneMapping = 8,
    RectangleLight = 9,
    BackgroundSettings = 10,
    Metadata = 11,
    ParametricSurface = 12,
    DisplacedQuad = 13,
    Scatter = 14,
    SectionPlane = 15,
    Curve1D = 16,
};

/// The name that messages show for a node's kind; "Unknown type" for codes without one, curves among them.
String getNodeTypeName(NodeType type);

} // namespace Velmar
