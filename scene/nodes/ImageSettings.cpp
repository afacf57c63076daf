#include "scene/nodes/ImageSettings.h"

#include "scene/ClassSupport.h"
#include "scene/nodes/NodeElements.h"

#include <cstddef>

namespace Velmar {

Reference<SplatFilter> SplatFilter::clone() const {
    return valueOfSlot<Reference<SplatFilter>>([this](auto* place) { return cloneInto(place); });
}

void SplatFilterFastBox::writeXML(OStream& stream, std::uint32_t depth) const {
    ElementWriter elements(stream, depth, nullptr);
    describeWhole(elements, *this);
}

Reference<SplatFilter>* SplatFilterFastBox::cloneInto(Reference<SplatFilter>* result) const {
    return constructResult(result, new SplatFilterFastBox);
}

Reference<DownsizeFilter> DownsizeFilter::clone() const {
    return valueOfSlot<Reference<DownsizeFilter>>([this](auto* place) { return cloneInto(place); });
}

void DownsizeFilterMNCubic::writeXML(OStream& stream, std::uint32_t depth) const {
    ElementWriter elements(stream, depth, nullptr);
    describeWhole(elements, *this);
}

Reference<DownsizeFilter>* DownsizeFilterMNCubic::cloneInto(Reference<DownsizeFilter>* result) const {
    auto* const copy = new DownsizeFilterMNCubic;
    copy->ring = ring;
    copy->blur = blur;
    copy->radius = radius;
    return constructResult(result, copy);
}

void WhitePoint::writeXML(OStream& stream, std::uint32_t depth) const {
    const String tabs(depth + std::size_t{1}, '\t');
    writeOpenTag(stream, depth, element_of<WhitePoint>);
    stream.write(tabs);
    stream.write(x);
    stream.write(" ");
    stream.write(y);
    stream.write(tabs);
    stream.write("\n");
    writeCloseTag(stream, depth, element_of<WhitePoint>);
}

Reference<LayerSetting>* LayerSetting::cloneInto(Reference<LayerSetting>* result) const {
    const Reference<LayerSetting> copy(new LayerSetting);
    copy->name = name;
    if (layer_scale) copy->layer_scale = layer_scale->clone();
    copy->enabled = enabled;
    return constructResult(result, copy);
}

Reference<LayerSetting> LayerSetting::clone() const {
    return valueOfSlot<Reference<LayerSetting>>([this](auto* place) { return cloneInto(place); });
}

void LayerSetting::writeXML(OStream& stream, std::uint32_t depth) const {
    writeDescribed(stream, depth, *this, nullptr);
}

} // namespace Velmar
