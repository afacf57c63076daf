#include "tools/ModelScene.h"

#include "tools/MeshFile.h"

#include <cmath>

using CommandOptions::addChoice;
using CommandOptions::addUp;
using CommandOptions::addValue;
using CommandOptions::inRange;
using Velmar::Mesh;

namespace {

/// Refuses what a scene can't express.
void requireUsable(const std::string& path, const Mesh& mesh) {
    if (mesh.triangles.empty() && mesh.quads.empty()) throw Failure(path + ": holds no faces");
    const std::string fault = findFaultyFace(mesh);
    if (!fault.empty()) throw Failure(path + ": " + fault);
    if (!hasDistinctNames(mesh)) throw Failure(path + ": two materials have one name");
    const Velmar::Vec3f& low = mesh.aabb_min;
    const Velmar::Vec3f& high = mesh.aabb_max;
    for (const float bound : {low.x, low.y, low.z, high.x, high.y, high.z})
        if (!std::isfinite(bound)) throw Failure(path + ": a vertex isn't finite");
}

InputModel readModel(const std::string& path, const ModelSceneOptions& options) {
    Velmar::ImportedMesh imported = readMesh(path, options.scale);
    Mesh& mesh = *imported.mesh;
    requireUsable(path, mesh);
    InputModel model;
    model.name = Text::fileStem(path);
    model.mesh = imported.mesh;
    model.colours = std::move(imported.colours);
    model.y_up = CommandOptions::isYUp(options.up, path);
    // Scenes of hosts have no vertex normals.
    model.smooth_normals = !mesh.normals.empty();
    mesh.normals.clear();
    mesh.uv_layout = 0;
    if (mesh.num_uv_mappings == 0) mesh.uv_pairs.clear();
    return model;
}

std::string describe(const std::string& path, const Mesh& mesh) {
    return path + ": " + Text::faceCounts(mesh.verts.size(), mesh.triangles.size(), mesh.quads.size()) + ", " +
           Text::count(mesh.used_materials.size(), "material", "materials");
}

void addModelOptions(CLI::App& app, ModelSceneOptions& options) {
    app.option_defaults()->group("Models");
    addValue(app, "--scale", options.scale, "FACTOR",
             "Multiplies all positions, except those of vmmesh files. The scene is in metres.");
    addUp(app, options.up);
    app.add_flag("--no-ground", options.no_ground, "Leave out the ground plane below the models.");
}

void addCameraOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Camera");
    addValue(app, "--azimuth", scene.azimuth, "DEGREES",
             "Where the camera stands around the models: 0 in front, 90 to the right.")
        ->check(inRange(-360, 360));
    addValue(app, "--elevation", scene.elevation, "DEGREES", "How high above the horizon it stands.")
        ->check(inRange(-89, 89));
    addValue(app, "--fov", scene.fov, "DEGREES",
             "Field of view across the width. The camera moves back as far as it must.")
        ->check(inRange(1, 170));
}

void addLightOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Light");
    addChoice(app, "--light", scene.light, {"sunsky", "uniform", "none"}, "What lights the scene.");
    app.add_option("--sun", scene.sun, "Direction towards the sun: three numbers with commas between. (-1,-1,1)")
        ->type_name("X,Y,Z")
        ->delimiter(',')
        ->expected(3)
        ->check(inRange(-1e9, 1e9));
    addValue(app, "--light-strength", scene.light_strength, "FACTOR", "Of the uniform light.")->check(inRange(0, 1e12));
}

void addImageOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Image");
    constexpr double max_size = 1000000;
    addValue(app, "--width", scene.width, "PIXELS", "Width of the image.")->check(inRange(1, max_size));
    addValue(app, "--height", scene.height, "PIXELS", "Height of the image.")->check(inRange(1, max_size));
    addValue(app, "--samples", scene.halt_samples, "N", "Stop at so many samples per pixel; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addValue(app, "--time", scene.halt_time, "SECONDS", "Stop after so long; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addChoice(app, "--tone-mapping", scene.tone_mapping, {"linear", "reinhard", "camera", "filmic"},
              "How light becomes an image.");
    addValue(app, "--brightness", scene.brightness, "FACTOR", "Brightens the image, or below 1 darkens it.")
        ->check(inRange(1e-9, 1e9));
}

} // namespace

void addModelSceneOptions(CLI::App& app, ModelSceneOptions& options) {
    addModelOptions(app, options);
    addCameraOptions(app, options.scene);
    addLightOptions(app, options.scene);
    addImageOptions(app, options.scene);
}

std::string stepText(std::size_t number, std::size_t count) {
    return '[' + std::to_string(number) + '/' + std::to_string(count) + "] ";
}

std::vector<InputModel> readModels(const std::vector<std::string>& paths, const ModelSceneOptions& options,
                                   Progress& progress, std::vector<std::string>& descriptions) {
    std::vector<InputModel> models;
    for (const std::string& path : paths) {
        progress.show(stepText(models.size() + 1, paths.size() + 1) + "reading " + Text::fileName(path));
        models.push_back(readModel(path, options));
        descriptions.push_back(describe(path, *models.back().mesh));
    }
    return models;
}
