#pragma once

#include "import/MeshImport.h"
#include "reference.h"
#include "velmarapi.h"
#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

/// Scenes around models: where the camera is, and the nodes that make a complete scene.

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
    /// "sunsky", "uniform" or "none".
    std::string light = "sunsky";
    /// Towards the sun.
    std::vector<double> sun = {-1, -1, 1};
    double light_strength = 1;
    bool ground = true;
    /// "linear", "reinhard", "camera" or "filmic".
    std::string tone_mapping = "reinhard";
    /// A factor for the image, whatever the tone mapping.
    double brightness = 1;
};

// ---- framing -----------------------------------------------------------------------------------------------------

/// An upright box in the scene, whose height is z.
struct Box {
    Velmar::Vec3d min;
    Velmar::Vec3d max;

    void add(const Box& other);
    Velmar::Vec3d getCentre() const;
    /// Of the sphere around the box; 1 for a point, so that it can be looked at.
    double getRadius() const;
};

/// The place of a camera, and its lens.
struct Frame {
    Velmar::Vec3d position;
    Velmar::Vec3d forwards;
    double focus_distance;
    double lens_sensor_dist;
    double lens_radius;
};

/// The direction to a viewer, of length 1. Both angles are in degrees: `azimuth` around, from in front to the right,
/// and `elevation` above the horizon.
Velmar::Vec3d getViewDirection(double azimuth, double elevation);

constexpr double sensor_width = 0.036;

/// The camera that sees the whole of `box` from the side that the settings give. The numbers are rounded to six digits
/// of the box's size: sines and cosines differ in their last bits between systems, and scenes mustn't.
Frame frameBox(const Box& box, const SceneSettings& settings);

/// `value` in steps of a millionth of the power of ten at or above `size`.
double roundToSize(double value, double size);

// ---- the scene ---------------------------------------------------------------------------------------------------

/// A model as it was read.
struct InputModel {
    std::string name;
    Velmar::Reference<Velmar::Mesh> mesh;
    std::vector<Velmar::MaterialColour> colours;
    bool smooth_normals = false;
    /// Its height is y, where the scene's is z.
    bool y_up = false;
};

/// A mesh of the scene, and the file that the document names for it.
struct SceneMesh {
    Velmar::Reference<Velmar::Mesh> mesh;
    std::string path;
};

/// A complete scene, made of the exported functions of the library as any host would make it. Only meshes are taken as
/// they are in memory, without a copy through the exports.
class SceneBuilder {
  public:
    SceneBuilder(const std::vector<InputModel>& models, const SceneSettings& settings);

    /// The distinct meshes of a document at `path`, in their order.
    std::vector<SceneMesh> getMeshes(const std::string& path) const;

    /// Writes the document, and the mesh files that don't exist yet. That a document couldn't be written isn't
    /// reported.
    void write(const std::string& path) const;

    /// Gives the scene away, as a renderer takes it. The builder has none afterwards.
    VelmarScene* release() { return scene.release(); }

  private:
    struct DeleteScene {
        void operator()(VelmarScene* root) const { VelmarScene_Delete(root); }
    };
    using ColourKey = std::tuple<std::string, float, float, float>;

    void addRenderSettings(const SceneSettings& settings);
    void addCamera(const Box& box, const SceneSettings& settings);
    void addToneMapping(const SceneSettings& settings);
    void addLight(const SceneSettings& settings);
    void addModel(const InputModel& model);
    void addGroundPlane(const Box& box);
    /// The node of that name and colour, made on first use.
    VelmarMaterialNode* getMaterial(const std::string& name, const std::vector<Velmar::MaterialColour>& colours);

    std::unique_ptr<VelmarScene, DeleteScene> scene;
    std::map<ColourKey, VelmarMaterialNode*> materials;
};
