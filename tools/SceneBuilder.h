#pragma once

#include "reference.h"
#include "velmarapi.h"
#include "velmarvec.h"

#include "mesh/Mesh.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "tools/Placement.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

/// Scenes around models: the content, where the camera is, and the nodes that make a complete scene.

// ---- the content ---------------------------------------------------------------------------------------------------

struct SceneMaterial {
    std::string name;
    Velmar::Vec3f colour = {0.8F, 0.8F, 0.8F};
};

/// A mesh, which any number of models place.
struct SceneGeometry {
    std::string name;
    Velmar::Reference<Velmar::Mesh> mesh;
    bool smooth_normals = false;
};

struct SceneModel {
    std::string name;
    /// An index of `SceneContent::geometries`.
    std::size_t geometry = 0;
    /// By the material indices of the mesh; at least one.
    std::vector<SceneMaterial> materials;
    Placement placement;
};

/// A camera with a place of its own.
struct ViewPoint {
    Velmar::Vec3d position;
    /// Towards what is in the middle of the image, as long as that is away.
    Velmar::Vec3d forwards;
    Velmar::Vec3d up = {0, 0, 1};
    /// Degrees across the width; 0 for the setting.
    double fov = 0;
};

struct SceneContent {
    std::vector<SceneGeometry> geometries;
    std::vector<SceneModel> models;
    /// The one of the file that the models come from.
    std::optional<ViewPoint> camera;

    /// Of all models.
    Box getBounds() const;
};

// ---- the settings --------------------------------------------------------------------------------------------------

enum class Ground { automatic, none, of_size };

/// The user's choices, and the defaults.
struct SceneSettings {
    std::int32_t width = 1280;
    std::int32_t height = 720;
    /// 0: the document leaves it to the renderer.
    std::int32_t super_sample_factor = 0;
    /// 0: no limit.
    double halt_samples = 500;
    /// Seconds; 0: no limit.
    double halt_time = 0;
    /// Degrees, across the width of the image.
    double fov = 40;
    /// Degrees around the models, from in front of them to their right.
    double azimuth = 30;
    /// Degrees above the horizon.
    double elevation = 20;
    /// In place of what the angles give.
    std::optional<Velmar::Vec3d> camera;
    /// In place of the middle of the models.
    std::optional<Velmar::Vec3d> target;
    /// Whether the user chose the side of the view, so that a camera of the content isn't taken.
    bool view_chosen = false;
    /// "sunsky", "uniform" or "none".
    std::string light = "sunsky";
    /// Towards the sun.
    Velmar::Vec3d sun = {-1, -1, 1};
    double light_strength = 1;
    Ground ground = Ground::automatic;
    /// Metres along a side, for a ground of a size.
    double ground_size = 0;
    /// "linear", "reinhard", "camera" or "filmic".
    std::string tone_mapping = "reinhard";
    /// A factor for the image, whatever the tone mapping.
    double brightness = 1;
};

// ---- framing -----------------------------------------------------------------------------------------------------

/// The place of a camera, and its lens.
struct Frame {
    Velmar::Vec3d position;
    Velmar::Vec3d forwards;
    Velmar::Vec3d up = {0, 0, 1};
    double focus_distance = 0;
    double lens_sensor_dist = 0;
    double lens_radius = 0;
};

/// The direction to a viewer, of length 1. Both angles are in degrees: `azimuth` around, from in front to the right,
/// and `elevation` above the horizon.
Velmar::Vec3d getViewDirection(double azimuth, double elevation);

constexpr double sensor_width = 0.036;

/// The camera that the settings ask for, else that of the content, else one that sees the whole of `box`. Numbers that
/// aren't the user's are rounded to six digits of the box's size: sines and cosines differ in their last bits between
/// systems, and scenes mustn't.
Frame makeFrame(const Box& box, const SceneSettings& settings, const std::optional<ViewPoint>& view_point);

/// `value` in steps of a millionth of the power of ten at or above `size`.
double roundToSize(double value, double size);

// ---- the scene ---------------------------------------------------------------------------------------------------

/// A mesh of the scene, and the file that the document names for it.
struct SceneMesh {
    Velmar::Reference<Velmar::Mesh> mesh;
    std::string path;
};

struct DeleteScene {
    void operator()(VelmarScene* root) const { VelmarScene_Delete(root); }
};
using OwnedScene = std::unique_ptr<VelmarScene, DeleteScene>;

/// A complete scene, made of the exported functions of the library as any host would make it. Only meshes are taken as
/// they are in memory, without a copy through the exports.
class SceneBuilder {
  public:
    SceneBuilder(const SceneContent& content, const SceneSettings& settings);

    /// The distinct meshes of a document at `path`, in their order.
    std::vector<SceneMesh> getMeshes(const std::string& path) const;

    /// Lets the document name files for its meshes, by their checksums, in place of writing them. The meshes themselves
    /// are released.
    void nameMeshFiles(const std::function<std::string(std::uint64_t checksum)>& name);

    /// Writes the document, and the mesh files that don't exist yet. That a document couldn't be written isn't
    /// reported.
    void write(const std::string& path) const;

    /// Gives the scene away, as a renderer takes it. The builder has none afterwards.
    VelmarScene* release() { return scene.release(); }

    const Frame& getFrame() const { return frame; }
    /// Whether an automatic ground was left out because it would hide the models from the camera.
    bool isGroundLeftOut() const { return ground_left_out; }

  private:
    std::vector<Velmar::SceneNodeMesh*> getMeshNodes() const;

    using ColourKey = std::tuple<std::string, float, float, float>;

    void addRenderSettings(const SceneSettings& settings);
    void addCamera();
    void addToneMapping(const SceneSettings& settings);
    void addLight(const SceneSettings& settings);
    void addModel(const SceneContent& content, const SceneModel& model);
    void addGround(const Box& box, const SceneSettings& settings);
    void addModelNode(const std::string& name, VelmarMesh* mesh, std::vector<VelmarMaterialNode*>& nodes,
                      const Placement& placement);
    /// The node of that name and colour, made on first use.
    VelmarMaterialNode* getMaterial(const SceneMaterial& material);
    VelmarMaterialNode* addMaterial(const SceneMaterial& material);

    OwnedScene scene;
    Frame frame;
    bool ground_left_out = false;
    std::map<ColourKey, VelmarMaterialNode*> materials;
    /// By their geometries.
    std::map<std::size_t, VelmarMesh*> meshes;
};
