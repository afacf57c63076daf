#pragma once

#include "scene/SceneNodeRoot.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"

#include <string_view>
#include <vector>

namespace Preview {

/// Writes "velmar preview: <text>" to the standard error stream, each text once in the life of the process: what isn't
/// rendered is worth one line, however many objects ask for it. Safe from any thread, and when memory is exhausted.
void report(std::string_view text) noexcept;

/// Has the host's own passes bind and load what the nodes of a scene know by UIDs and file names alone, as those of a
/// document do. What they can't find is reported. Throws `std::bad_alloc`.
void bindAndLoad(const Velmar::SceneNodeRoot& scene);

/// The nodes of a scene by kind. Where a scene has several of a kind of which one counts, the first does. Null where
/// there is none.
struct SceneNodes {
    /// Reports kinds that aren't rendered.
    explicit SceneNodes(const Velmar::SceneNodeRoot& root);

    const Velmar::SceneNodeCamera* camera = nullptr;
    const Velmar::SceneNodeRenderSettings* settings = nullptr;
    const Velmar::SceneNodeTonemapping* tone_mapping = nullptr;
    const Velmar::SceneNodeBackgroundSettings* background = nullptr;
    std::vector<const Velmar::SceneNodeModel*> models;
    std::vector<const Velmar::SceneNodeSphere*> spheres;
};

/// The value of an option, or `otherwise` where it isn't set.
template <class T>
T valueOr(const Velmar::Optional<T>& option, T otherwise) {
    return option.has_value ? option.value : otherwise;
}

} // namespace Preview
