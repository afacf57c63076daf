#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvector.h"

#include "scene/Texture.h"
#include "scene/TraversalState.h"
#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// A parameter of a shader program. Its classes live in the renderer library; only slot 3 is called from here.
class ShaderParameter : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slots 1 and 2 keep the places of operations of the other side.
    virtual void reservedSlot1() = 0;
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

} // namespace Velmar
