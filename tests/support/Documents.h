#pragma once

#include "scene/Material.h"
#include "scene/SceneNode.h"
#include "scene/XMLPrimitives.h"
#include "tests/support/MemoryOStream.h"

#include <string>

namespace TestSupport {

/// The element of a node at `depth` tabs.
inline std::string elementOf(const Velmar::SceneNode& node, std::uint32_t depth = 0,
                             const Velmar::XMLWriteOptions& options = {}) {
    return textOf([&](Velmar::OStream& stream) { node.writeXML(stream, depth, options); });
}

inline std::string elementOf(const Velmar::Material& material, const Velmar::XMLWriteOptions& options = {}) {
    return textOf([&](Velmar::OStream& stream) { material.writeXML(stream, 0, options); });
}

} // namespace TestSupport
