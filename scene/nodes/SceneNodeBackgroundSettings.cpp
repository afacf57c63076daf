#include "scene/nodes/SceneNodeBackgroundSettings.h"

#include "scene/ClassSupport.h"
#include "scene/nodes/NodeElements.h"

namespace Velmar {

SceneNodeBackgroundSettings::SceneNodeBackgroundSettings() : Destroyable(NodeType::BackgroundSettings) {
    name = "Background Settings";
}

Reference<SceneNode>* SceneNodeBackgroundSettings::cloneInto(Reference<SceneNode>* result) const {
    const Reference<SceneNodeBackgroundSettings> copy(new SceneNodeBackgroundSettings);
    copyBaseFields(*this, *copy);
    return constructResult(result, copy);
}

void SceneNodeBackgroundSettings::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeDescribed(stream, depth, *this, &options);
}

void SceneNodeBackgroundSettings::traverse(TraversalState& state) {
    traverseOwnUID(state);
    if (background_material) background_material->traverseMaterial(state, this);
}

std::uint32_t SceneNodeBackgroundSettings::getMaxLayerIndex() const {
    return background_material ? background_material->getMaxLayerIndex() : 0;
}

} // namespace Velmar
