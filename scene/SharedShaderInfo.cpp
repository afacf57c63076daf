#include "scene/SharedShaderInfo.h"

#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"

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
    writeOpenTag(stream, depth, "texture");
    writePathElement(stream, depth + 1, "path", texture.path, options);
    if (texture.a != 0.0) writeDoubleElement(stream, depth + 1, "a", texture.a);
    if (texture.b != 1.0) writeDoubleElement(stream, depth + 1, "b", texture.b);
    if (texture.c != 0.0) writeDoubleElement(stream, depth + 1, "c", texture.c);
    if (texture.uv_set_index != 0) writeInt32Element(stream, depth + 1, "uv_set_index", texture.uv_set_index);
    if (texture.has_exponent) writeDoubleElement(stream, depth + 1, "exponent", texture.exponent);
    if (texture.tex_coord_generation && !texture.tex_coord_generation->isNeutral()) {
        writeOpenTag(stream, depth + 1, "tex_coord_generation");
        texture.tex_coord_generation->writeXML(stream, depth + 2);
        writeCloseTag(stream, depth + 1, "tex_coord_generation");
    }
    if (texture.smooth) writeBoolElement(stream, depth + 1, "smooth", true);
    writeCloseTag(stream, depth, "texture");
}

void SharedShaderInfo::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    const std::uint32_t content_depth = depth + 2;
    writeOpenTag(stream, depth, "shared_shader_info");
    for (const Reference<ShaderParameter>& parameter : parameters)
        parameter->writeXML(stream, content_depth);
    for (const String& include : includes)
        writeStringElement(stream, content_depth, "include", include);
    for (const Texture& texture : textures)
        writeTexture(texture, stream, content_depth, options);
    // Written even when empty, and always unchanged: the program's line breaks and blanks are part of it.
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
