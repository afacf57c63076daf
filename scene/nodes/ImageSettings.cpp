#include "scene/nodes/ImageSettings.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

Reference<SplatFilter> SplatFilter::clone() const {
    return valueOfSlot<Reference<SplatFilter>>([this](auto* place) { return cloneInto(place); });
}

void SplatFilterFastBox::writeXML(OStream& stream, std::uint32_t depth) const {
    writeOpenTag(stream, depth, "splat_filter");
    writeEmptyTag(stream, depth + 1, "fastbox");
    writeCloseTag(stream, depth, "splat_filter");
}

Reference<SplatFilter>* SplatFilterFastBox::cloneInto(Reference<SplatFilter>* result) const {
    return constructResult(result, new SplatFilterFastBox);
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
    return constructResult(result, copy);
}

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
    writeOpenTag(stream, depth, "layer_setting");
    writeStringElement(stream, depth + 1, "name", name);
    writeBoolElement(stream, depth + 1, "enabled", enabled);
    writeOpenTag(stream, depth + 1, "layer_scale");
    if (layer_scale) layer_scale->writeXML(stream, depth + 2);
    writeCloseTag(stream, depth + 1, "layer_scale");
    writeCloseTag(stream, depth, "layer_setting");
}

} // namespace Velmar
