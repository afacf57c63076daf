#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"
#include "utils/OStream.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// How texture coordinates are made. Its classes live in the renderer library and are called by slot number.
class TexCoordGeneration : public ThreadSafeRefCounted {
  public:
    /// The kind whose objects have six doubles directly after this class's fields.
    static constexpr std::uint32_t affine_kind = 0;

    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 2.
    virtual std::uint32_t getType() const = 0;

    /// Whether this is the affine map that changes nothing, which documents leave out.
    bool isNeutral() const;

  protected:
    TexCoordGeneration() = default;
    ~TexCoordGeneration() = default;
};

static_assert(sizeof(TexCoordGeneration) == 16);

/// An image file and how its values are taken. A plain record with a layout shared with the renderer library.
struct Texture {
    String path;
    /// Coefficients of the values, written where they differ from these.
    double a = 0.0;
    double b = 1.0;
    double c = 0.0;
    std::int32_t uv_set_index = 0;
    /// Counts only with `has_exponent`.
    double exponent = 0.0;
    bool has_exponent = false;
    Reference<TexCoordGeneration> tex_coord_generation;
    bool smooth = false;
};

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

/// Writes the element `texture` at `depth` tabs.
void writeTexture(const Texture& texture, OStream& stream, std::uint32_t depth, const XMLWriteOptions& options);

/// A parameter of a shader program. Its classes live in the renderer library; only slot 3 is called from here.
class ShaderParameter : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. The library's own; never called from here.
    virtual void reservedSlot1() = 0;
    /// Slot 2. The library's own; never called from here.
    virtual void reservedSlot2() = 0;
    /// Slot 3. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;

  protected:
    ShaderParameter() = default;
    ~ShaderParameter() = default;
};

/// The shader program of a material, with what it includes and reads.
class SharedShaderInfo : public Destroyable<SharedShaderInfo, ThreadSafeRefCounted> {
  public:
    /// Whether a document has to hold this. Textures alone don't count: nothing but a program reads them.
    bool isWritten() const { return !parameters.empty() || !includes.empty() || !shader.empty(); }

    /// Writes the element `shared_shader_info` at `depth` tabs, with its content two levels deeper.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const;

    /// Reports or replaces the paths of `includes`, then of `textures`.
    /// Throws `VelmarException` when a path has no new one.
    void traverse(TraversalState& state);

    Vector<Reference<ShaderParameter>> parameters;
    /// File paths.
    Vector<String> includes;
    Vector<Texture> textures;
    /// The program's text.
    String shader;
};

static_assert(offsetof(SharedShaderInfo, parameters) == 16);
static_assert(offsetof(SharedShaderInfo, includes) == 40);
static_assert(offsetof(SharedShaderInfo, textures) == 64);
static_assert(offsetof(SharedShaderInfo, shader) == 88);
static_assert(sizeof(SharedShaderInfo) == 128);

} // namespace Velmar
