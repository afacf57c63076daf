#pragma once

#include "reference.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "scene/Spectra.h"
#include "utils/OStream.h"

#include <cstddef>
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
    /// Slot 3. A copy.
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

static_assert(sizeof(SplatFilterFastBox) == 16);

/// How a supersampled image is brought down to its size. Called by slot number from the renderer library.
class DownsizeFilter : public ThreadSafeRefCounted {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1.
    virtual std::int32_t getType() const = 0;
    /// Slot 2. Writes the element at `depth` tabs.
    virtual void writeXML(OStream& stream, std::uint32_t depth) const = 0;
    /// Slot 3. A copy.
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

static_assert(offsetof(DownsizeFilterMNCubic, ring) == 16);
static_assert(offsetof(DownsizeFilterMNCubic, blur) == 24);
static_assert(offsetof(DownsizeFilterMNCubic, radius) == 32);
static_assert(sizeof(DownsizeFilterMNCubic) == 40);

/// The chromaticity that an image shows as white.
class WhitePoint : public Destroyable<WhitePoint, ThreadSafeRefCounted> {
  public:
    WhitePoint() = default;
    WhitePoint(double x_, double y_) : x(x_), y(y_) {}

    /// Writes the element at `depth` tabs. Its numbers have the stream's own form of six significant digits, and its
    /// indentation is repeated after them: readers know the line in this form.
    void writeXML(OStream& stream, std::uint32_t depth) const;

    double x = 0.0;
    double y = 0.0;
};

static_assert(offsetof(WhitePoint, x) == 16);
static_assert(offsetof(WhitePoint, y) == 24);
static_assert(sizeof(WhitePoint) == 32);

/// How one layer of light takes part in an image. Called by slot number from the renderer library, which is also where
/// these objects come from.
class LayerSetting : public Destroyable<LayerSetting, ThreadSafeRefCounted> {
  public:
    // Slot 0 is `destroy` of `ThreadSafeRefCounted`.

    /// Slot 1. A copy, with a copy of the scale.
    virtual Reference<LayerSetting>* cloneInto(Reference<LayerSetting>* result) const;

    /// The natural form of slot 1.
    Reference<LayerSetting> clone() const;

    /// Writes the element at `depth` tabs. That of the scale is there even without a scale.
    void writeXML(OStream& stream, std::uint32_t depth) const;

    String name;
    /// May be null.
    Reference<Spectrum> layer_scale;
    bool enabled = false;
};

static_assert(offsetof(LayerSetting, name) == 16);
static_assert(offsetof(LayerSetting, layer_scale) == 56);
static_assert(offsetof(LayerSetting, enabled) == 64);
static_assert(sizeof(LayerSetting) == 72);

} // namespace Velmar
