#pragma once

#include "velmarmemory.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "scene/SceneTables.h"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace Velmar {

class MeshCache;

/// What one pass over a scene does.
enum class TraversalKind : std::uint32_t {
    /// Turns stored UIDs into references to the nodes they name.
    BindReferences = 0,
    /// Appends every file path that a node depends on to `dependencies`.
    GetDependencies = 1,
    /// Replaces every such path through `path_map`.
    UpdateDependencies = 2,
    /// Loads the mesh files that mesh nodes name.
    LoadMeshes = 3,
    /// Widens `bounds_min` and `bounds_max` by the node's world bounds.
    GetBounds = 4,
    /// Adds `uid_offset` to a node's own UID and to every UID that it stores.
    OffsetUIDs = 5,
};

/// The argument of `SceneNode::traverse`: one object carries one pass over the scene. Made and destroyed through slots
/// 8 and 9 of any node. Its layout is shared with the renderer library.
struct TraversalState final : SdkAllocated {
    TraversalState(TraversalKind kind_, const String& scene_path_, const String& scene_dir_);
    ~TraversalState();
    TraversalState(const TraversalState&) = delete;
    TraversalState& operator=(const TraversalState&) = delete;

    String scene_path;
    String scene_dir;
    String meshes_dir;
    TraversalKind kind;
    Vector<String> dependencies;
    VisitedMeshes visited_meshes;
    PathMap path_map;
    bool mesh_dependencies_as_paths = true;
    float bounds_min[3] = {infinity, infinity, infinity};
    float bounds_max[3] = {-infinity, -infinity, -infinity};
    /// To be set by the caller of `OffsetUIDs`.
    std::uint32_t uid_offset = 0;
    /// Owned; made by the first mesh node that loads.
    MeshCache* mesh_cache = nullptr;
    /// Guards against loops of references between material nodes.
    std::int32_t depth = 0;

  private:
    static constexpr float infinity = std::numeric_limits<float>::infinity();
};

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

/// The new path of `old_path`, found by exact comparison of bytes.
/// Throws `VelmarException` when `path_map` has none.
String mapDependencyPath(const PathMap& path_map, const String& old_path);

} // namespace Velmar
