#include "scene/Texture.h"

#include "scene/XMLPrimitives.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Velmar {

static_assert(offsetof(Texture, path) == 0);
static_assert(offsetof(Texture, a) == 40);
static_assert(offsetof(Texture, b) == 48);
static_assert(offsetof(Texture, c) == 56);
static_assert(offsetof(Texture, uv_set_index) == 64);
static_assert(offsetof(Texture, exponent) == 72);
static_assert(offsetof(Texture, has_exponent) == 80);
static_assert(offsetof(Texture, tex_coord_generation) == 88);
static_assert(offsetof(Texture, smooth) == 96);
static_assert(sizeof(Texture) == 104);

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

} // namespace Velmar
