#include "scene/SharedShaderInfo.h"

#include "scene/DependencyPaths.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(SharedShaderInfo, parameters) == 16);
static_assert(offsetof(SharedShaderInfo, includes) == 40);
static_assert(offsetof(SharedShaderInfo, textures) == 64);
static_assert(offsetof(SharedShaderInfo, shader) == 88);
static_assert(sizeof(SharedShaderInfo) == 128);

void SharedShaderInfo::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    const std::uint32_t content_depth = depth + 2;
    writeOpenTag(stream, depth, "shared_shader_info");
    for (const Reference<ShaderParameter>& parameter : parameters)
        parameter->writeXML(stream, content_depth);
    for (const String& include : includes)
        writeStringElement(stream, content_depth, "include", include);
    for (const Texture& texture : textures)
        writeTexture(texture, stream, content_depth, options);
    // Written even when empty, and always as it stands: the program's line breaks and blanks are part of it.
    stream.write(String(content_depth, '\t'));
    stream.write("<shader><![CDATA[");
    stream.write(shader);
    stream.write("]]></shader>\n");
    writeCloseTag(stream, depth, "shared_shader_info");
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
