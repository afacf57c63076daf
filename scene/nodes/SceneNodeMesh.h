#pragma once

#include "mesh/Mesh.h"
#include "scene/SceneNode.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Velmar {

/// One piece of geometry and its subdivision settings. It holds a mesh in memory or names a file from which one is
/// loaded. The document names a vmmesh file that is written beside it, once for each distinct content.
class SceneNodeMesh : public Destroyable<SceneNodeMesh, PlainSceneNode> {
  public:
    SceneNodeMesh();

    /// Null: meshes aren't copied.
    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override;

    /// Writes the element, and the mesh file unless it is there: the checksum in its name vouches for its content.
    /// `mesh` must be set, or `path`, which is then written instead. Throws `VelmarException` when the file or its
    /// folder can't be written.
    void writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const override;

    void traverse(TraversalState& state) override;

    /// The name of the file of a mesh with this checksum.
    static std::string getMeshFileName(std::uint64_t checksum);

    /// Whether `name` has the form of `getMeshFileName`.
    static bool isMeshFileName(std::string_view name);

    /// The path of the mesh file of a scene: in `meshes_dir` or, when that is empty, in the folder beside the scene.
    std::string getMeshFilePath(const String& scene_path, const String& scene_dir, const String& meshes_dir) const;

    /// The mesh file that this node names; what `writeXML` writes is named by its checksum instead, if there is a mesh.
    String path;
    Reference<Mesh> mesh;
    std::int32_t max_num_subdivisions = 0;
    std::int32_t num_smoothings = 2;
    double subdivide_pixel_threshold = 4.0;
    double subdivide_curvature_threshold = 0.0;
    double displacement_error_threshold = 0.0;
    bool view_dependent_subdivision = true;
    bool subdivision_smoothing = true;
    bool normal_smoothing = false;
    /// Applied to the positions by the readers of text formats.
    double scale = 1.0;

  private:
    /// Returns the path of the mesh file, which is there afterwards.
    std::string writeMeshFile(const XMLWriteOptions& options) const;
    /// Reads the file at `path`, unless this pass has read it already with the same scale.
    void loadMeshFile(TraversalState& state);
};

static_assert(offsetof(SceneNodeMesh, path) == 96);
static_assert(offsetof(SceneNodeMesh, mesh) == 136);
static_assert(offsetof(SceneNodeMesh, max_num_subdivisions) == 144);
static_assert(offsetof(SceneNodeMesh, num_smoothings) == 148);
static_assert(offsetof(SceneNodeMesh, subdivide_pixel_threshold) == 152);
static_assert(offsetof(SceneNodeMesh, subdivide_curvature_threshold) == 160);
static_assert(offsetof(SceneNodeMesh, displacement_error_threshold) == 168);
static_assert(offsetof(SceneNodeMesh, view_dependent_subdivision) == 176);
static_assert(offsetof(SceneNodeMesh, subdivision_smoothing) == 177);
static_assert(offsetof(SceneNodeMesh, normal_smoothing) == 178);
static_assert(offsetof(SceneNodeMesh, scale) == 184);
static_assert(sizeof(SceneNodeMesh) == 192);

} // namespace Velmar
