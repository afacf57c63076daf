#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// How a sample spreads over the pixels around it. Called by slot number from the renderer library.
class SplatFilter : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual std::int32_t getType() const = 0;
    /// Slot 2. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 3. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<SplatFilter>* cloneInto(Reference<SplatFilter>* result) const = 0;

    /// The natural form of slot 3.
    Reference<SplatFilter> clone() const;

  protected:
    SplatFilter() = default;
    ~SplatFilter() = default;
};

class SplatFilterFastBox : public Destroyable<SplatFilterFastBox, SplatFilter> {
  public:
    std::int32_t getType() const override { return 0; }
    void writeXML(OStream& stream, std::uint32_t depth) const override;
    Reference<SplatFilter>* cloneInto(Reference<SplatFilter>* result) const override;
};

/// How a supersampled image is brought down to its size. Called by slot number from the renderer library.
class DownsizeFilter : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual std::int32_t getType() const = 0;
    /// Slot 2. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 3. Constructs a reference to a copy in `result` and returns that place.
    virtual Reference<DownsizeFilter>* cloneInto(Reference<DownsizeFilter>* result) const = 0;

    /// The natural form of slot 3.
    Reference<DownsizeFilter> clone() const;

  protected:
    DownsizeFilter() = default;
    ~DownsizeFilter() = default;
};

/// The cubic of Mitchell and Netravali.
class DownsizeFilterMNCubic : public Destroyable<DownsizeFilterMNCubic, DownsizeFilter> {
  public:
    std::int32_t getType() const override { return 1; }
    void writeXML(OStream& stream, std::uint32_t depth) const override;
    Reference<DownsizeFilter>* cloneInto(Reference<DownsizeFilter>* result) const override;

    double ring = 0.0;
    double blur = 1.0;
    /// In pixels. The default is a float, digits and all.
    double radius = 1.6f;
};

} // namespace Velmar
