#include "scene/SharedShaderInfo.h"

#include "scene/MaterialElements.h"
#include "scene/TraversalState.h"

#include <algorithm>
#include <cstring>

namespace Velmar {

bool TexCoordGeneration::isNeutral() const {
    if (getType() != affine_kind) return false;
    constexpr double neutral[6] = {1, 0, 0, 1, 0, 0};
    double values[6];
    std::memcpy(values, reinterpret_cast<const char*>(this) + sizeof(TexCoordGeneration), sizeof values);
    return std::ranges::equal(values, neutral);
}

void writeTexture(const Texture& texture, OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) {
    writeDescribed(stream, depth, texture, &options);
}

void SharedShaderInfo::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeOpenTag(stream, depth, element_of<SharedShaderInfo>);
    ElementWriter inside(stream, depth + 2, &options);
    describe(inside, *this);
    writeCloseTag(stream, depth, element_of<SharedShaderInfo>);
}

void SharedShaderInfo::traverse(TraversalState& state) {
    if (state.kind == TraversalKind::GetDependencies) {
        for (const String& include : includes)
            state.dependencies.push_back(include);
        for (const Texture& texture : textures)
            state.dependencies.push_back(texture.path);
    } else if (state.kind == TraversalKind::UpdateDependencies) {
        for (String& include : includes)
            include = mapDependencyPath(state.path_map, include);
        for (Texture& texture : textures)
            texture.path = mapDependencyPath(state.path_map, texture.path);
    }
}

} // namespace Velmar
