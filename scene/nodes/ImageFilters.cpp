#include "scene/nodes/ImageFilters.h"

#include "scene/ClassValuedSlot.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(sizeof(SplatFilterFastBox) == 16);
static_assert(offsetof(DownsizeFilterMNCubic, ring) == 16);
static_assert(offsetof(DownsizeFilterMNCubic, blur) == 24);
static_assert(offsetof(DownsizeFilterMNCubic, radius) == 32);
static_assert(sizeof(DownsizeFilterMNCubic) == 40);

Reference<SplatFilter> SplatFilter::clone() const {
    return valueOfSlot<Reference<SplatFilter>>([this](auto* place) { return cloneInto(place); });
}

void SplatFilterFastBox::writeXML(OStream& stream, std::uint32_t depth) const {
    writeOpenTag(stream, depth, "splat_filter");
    writeEmptyTag(stream, depth + 1, "fastbox");
    writeCloseTag(stream, depth, "splat_filter");
}

Reference<SplatFilter>* SplatFilterFastBox::cloneInto(Reference<SplatFilter>* result) const {
    return new (static_cast<void*>(result)) Reference<SplatFilter>(new SplatFilterFastBox);
}

Reference<DownsizeFilter> DownsizeFilter::clone() const {
    return valueOfSlot<Reference<DownsizeFilter>>([this](auto* place) { return cloneInto(place); });
}

void DownsizeFilterMNCubic::writeXML(OStream& stream, std::uint32_t depth) const {
    writeOpenTag(stream, depth, "downsize_filter");
    writeOpenTag(stream, depth + 1, "mn_cubic");
    writeDoubleElement(stream, depth + 2, "blur", blur);
    writeDoubleElement(stream, depth + 2, "ring", ring);
    writeDoubleElement(stream, depth + 2, "radius", radius);
    writeCloseTag(stream, depth + 1, "mn_cubic");
    writeCloseTag(stream, depth, "downsize_filter");
}

Reference<DownsizeFilter>* DownsizeFilterMNCubic::cloneInto(Reference<DownsizeFilter>* result) const {
    auto* const copy = new DownsizeFilterMNCubic;
    copy->ring = ring;
    copy->blur = blur;
    copy->radius = radius;
    return new (static_cast<void*>(result)) Reference<DownsizeFilter>(copy);
}

} // namespace Velmar
