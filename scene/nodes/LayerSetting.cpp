#include "scene/nodes/LayerSetting.h"

#include "scene/ClassValuedSlot.h"
#include "scene/XMLPrimitives.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(LayerSetting, name) == 16);
static_assert(offsetof(LayerSetting, layer_scale) == 56);
static_assert(offsetof(LayerSetting, enabled) == 64);
static_assert(sizeof(LayerSetting) == 72);

Reference<LayerSetting>* LayerSetting::cloneInto(Reference<LayerSetting>* result) const {
    const Reference<LayerSetting> copy(new LayerSetting);
    copy->name = name;
    if (layer_scale) copy->layer_scale = layer_scale->clone();
    copy->enabled = enabled;
    return new (static_cast<void*>(result)) Reference<LayerSetting>(copy);
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
