#include "scene/nodes/SceneNodeBackgroundSettings.h"

#include "scene/ClassSupport.h"
#include "scene/XMLPrimitives.h"

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
    writeOpenTag(stream, depth, "background_settings");
    writeNodeIdentity(stream, depth + 1, *this);
    if (emission_scale) emission_scale->writeXML(stream, depth + 1);
    if (background_material) {
        writeOpenTag(stream, depth + 1, "background_material");
        // Without a UID: this material is no node.
        writeOpenTag(stream, depth + 2, "material");
        writeStringElement(stream, depth + 3, "name", background_material->name);
        background_material->writeXML(stream, depth + 2, options);
        writeCloseTag(stream, depth + 2, "material");
        writeCloseTag(stream, depth + 1, "background_material");
    }
    writeCloseTag(stream, depth, "background_settings");
}

void SceneNodeBackgroundSettings::traverse(TraversalState& state) {
    traverseOwnUID(state);
    if (background_material) background_material->traverseMaterial(state, this);
}

std::uint32_t SceneNodeBackgroundSettings::getMaxLayerIndex() const {
    return background_material ? background_material->getMaxLayerIndex() : 0;
}

} // namespace Velmar
