#include "scene/TraversalState.h"

#include "velmarexceptions.h"

#include "mesh/MeshLoading.h"

namespace Velmar {

TraversalState::TraversalState(TraversalKind kind_, const String& scene_path_, const String& scene_dir_)
    : scene_path(scene_path_), scene_dir(scene_dir_), kind(kind_) {}

TraversalState::~TraversalState() {
    delete mesh_cache;
}

String mapDependencyPath(const PathMap& path_map, const String& old_path) {
    const String* const new_path = path_map.find(old_path);
    if (new_path == nullptr)
        throw VelmarException(String("While updating dependencies: Missing mapping for old path '") + old_path + "'.");
    return *new_path;
}

} // namespace Velmar
