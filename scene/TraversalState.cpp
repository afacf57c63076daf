#include "scene/TraversalState.h"

#include "mesh/MeshLoading.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(TraversalState, scene_path) == 0);
static_assert(offsetof(TraversalState, scene_dir) == 40);
static_assert(offsetof(TraversalState, meshes_dir) == 80);
static_assert(offsetof(TraversalState, kind) == 120);
static_assert(offsetof(TraversalState, dependencies) == 128);
static_assert(offsetof(TraversalState, visited_meshes) == 152);
static_assert(offsetof(TraversalState, path_map) == 192);
static_assert(offsetof(TraversalState, mesh_dependencies_as_paths) == 232);
static_assert(offsetof(TraversalState, bounds_min) == 236);
static_assert(offsetof(TraversalState, bounds_max) == 248);
static_assert(offsetof(TraversalState, uid_offset) == 260);
static_assert(offsetof(TraversalState, mesh_cache) == 264);
static_assert(offsetof(TraversalState, depth) == 272);
static_assert(sizeof(TraversalState) == 280);

TraversalState::TraversalState(TraversalKind kind_, const String& scene_path_, const String& scene_dir_)
    : scene_path(scene_path_), scene_dir(scene_dir_), kind(kind_) {}

TraversalState::~TraversalState() {
    delete mesh_cache;
}

} // namespace Velmar
