#pragma once

#include "tools/Placement.h"
#include "tools/SceneBuilder.h"

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

/// What the user says about models and the scene around them: the options that the commands share which make a scene.

/// The values of the options as they were given.
struct ModelOptions {
    // Options of single models, whose model follows from the order of the arguments.
    std::vector<std::string> at;
    std::vector<std::string> rotate;
    bool on_ground = false;
    std::vector<float> scale;
    std::vector<std::string> up;

    std::string placement_file;
    SceneSettings scene;
    std::string camera;
    std::string target;
    std::string sun;
    std::string ground = "auto";
    bool no_ground = false;
};

/// A model as the user asks for it.
struct ModelRequest {
    std::string path;
    /// Empty for the name of the file.
    std::string name;
    float scale = 1.0F;
    std::string up = "auto";
    PlacementRequest placement;
};

/// The positional argument of a command that makes something of models: the models, and then the file to write.
CLI::Option* addModelPaths(CLI::App& app, std::vector<std::string>& paths, const char* name, const char* description);

/// Adds the options of models, camera, light and image.
void addModelOptions(CLI::App& app, ModelOptions& options);

/// The models of the command line, `paths` but for the last, and of the placement file. Throws `UsageError` when there
/// is none or a value can't be read, and `Failure` that names the placement file and the line.
std::vector<ModelRequest> findModels(const CLI::App& app, const std::vector<std::string>& paths,
                                     const ModelOptions& options);

/// The settings of the scene. Throws `UsageError` when a value can't be read.
SceneSettings getSceneSettings(const CLI::App& app, const ModelOptions& options);

/// A sentence for each option that was given and changes nothing.
std::vector<std::string> findIdleOptions(const CLI::App& app, const ModelOptions& options,
                                         const std::vector<ModelRequest>& models);

/// The note about a scene whose ground was left out.
extern const char* const ground_left_out;
