#include "scene/nodes/SceneNodeRenderSettings.h"

#include "scene/ClassSupport.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/NodeElements.h"
#include "scene/nodes/SceneNodeCurve1D.h"

#include <cstddef>

namespace Velmar {

SceneNodeRenderSettings::SceneNodeRenderSettings() : Destroyable(NodeType::RenderSettings) {
    name = "Render Settings";
}

SceneNodeRenderSettings::~SceneNodeRenderSettings() = default;

Reference<SceneNodeRenderSettings> SceneNodeRenderSettings::getDefaults() {
    constexpr double third = 1.0 / 3.0;

    Reference<SceneNodeRenderSettings> settings(new SceneNodeRenderSettings);
    forEachRenderOption([&](const auto& option) { ((*settings).*option.field).set(option.default_value); });
    settings->splat_filter = new SplatFilterFastBox;
    settings->downsize_filter = new DownsizeFilterMNCubic;
    settings->white_point = new WhitePoint(third, third);
    settings->colour_curves = makeIdentityColourCurves();
    return settings;
}

Reference<SceneNode>* SceneNodeRenderSettings::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeRenderSettings> copy(new SceneNodeRenderSettings);
    copyBaseFields(*this, *copy);
    forEachRenderOption([&](const auto& option) { (*copy).*option.field = this->*option.field; });
    copy->render_regions = render_regions;
    if (splat_filter) copy->splat_filter = splat_filter->clone();
    if (downsize_filter) copy->downsize_filter = downsize_filter->clone();
    if (white_point) copy->white_point = new WhitePoint(white_point->x, white_point->y);
    if (colour_curves) copy->colour_curves = cloneColourCurves(*colour_curves);
    copy->layer_settings.resize(layer_settings.size());
    for (std::size_t i = 0; i < layer_settings.size(); ++i)
        copy->layer_settings[i] = layer_settings[i]->clone();
    return constructResult(result, copy);
}

void SceneNodeRenderSettings::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

} // namespace Velmar
