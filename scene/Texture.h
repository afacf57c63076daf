#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// How texture coordinates are made. Its classes live in the renderer library and are called by slot number.
class TexCoordGeneration : public ThreadSafeRefCounted {
  public:
    /// The kind whose objects hold six doubles directly behind this class's fields.
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

/// Writes the element `texture` at `depth` tabs.
void writeTexture(const Texture& texture, OStream& stream, std::uint32_t depth, const XMLWriteOptions& options);

} // namespace Velmar
