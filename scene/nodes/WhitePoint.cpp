#include "scene/nodes/WhitePoint.h"

#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(WhitePoint, x) == 16);
static_assert(offsetof(WhitePoint, y) == 24);
static_assert(sizeof(WhitePoint) == 32);

void WhitePoint::writeXML(OStream& stream, std::uint32_t depth) const {
    const String tabs(depth + std::size_t{1}, '\t');
    writeOpenTag(stream, depth, "white_point");
    stream.write(tabs);
    stream.write(x);
    stream.write(" ");
    stream.write(y);
    stream.write(tabs);
    stream.write("\n");
    writeCloseTag(stream, depth, "white_point");
}

} // namespace Velmar
