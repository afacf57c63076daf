#pragma once

#include "reference.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstdint>

namespace Velmar {

/// The chromaticity that an image shows as white.
class WhitePoint : public Destroyable<WhitePoint, ThreadSafeRefCounted> {
  public:
    WhitePoint() = default;
    WhitePoint(double x_, double y_) : x(x_), y(y_) {}

    /// Writes the element at `depth` tabs. Its numbers have the stream's own form of six significant digits, and its
    /// indentation stands a second time behind them: readers know the line in this shape.
    void writeXML(OStream& stream, std::uint32_t depth) const;

    double x = 0.0;
    double y = 0.0;
};

} // namespace Velmar
