#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/XMLWriteOptions.h"
#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// The shape of a camera's aperture. Called by slot number from the renderer library, which may bring shapes of its
/// own.
class ApertureShape : public ThreadSafeRefCounted {
  public:
    /// Kinds that `getType` returns.
    static constexpr std::int32_t circular_kind = 0;
    static constexpr std::int32_t image_kind = 2;

    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual std::int32_t getType() const = 0;
    /// Slot 2. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const = 0;
    /// Slot 3. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const = 0;
    /// Slot 4. Does nothing; keeps its place in the table.
    virtual void reservedSlot4() {}

    /// The natural form of slot 3.
    Reference<ApertureShape> clone() const;

  protected:
    ApertureShape() = default;
    ~ApertureShape() = default;
};

static_assert(sizeof(ApertureShape) == 16);

class ApertureCircular : public Destroyable<ApertureCircular, ApertureShape> {
  public:
    std::int32_t getType() const override { return circular_kind; }
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;
    Reference<ApertureShape>* cloneInto(Reference<ApertureShape>* result) const override;
};

static_assert(sizeof(ApertureCircular) == 16);

/// What is known of every shape of `image_kind`: it is read from a file. No class of this library is one.
class ApertureImage : public ApertureShape {
  public:
    String path;

  protected:
    ApertureImage() = default;
    ~ApertureImage() = default;
};

} // namespace Velmar
