#pragma once

#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/SceneBuilder.h"

#include <string>
#include <vector>

/// What the commands share that make a scene of mesh files: their options, and the reading of the files.

struct ModelSceneOptions {
    SceneSettings scene;
    std::string up = "auto";
    bool no_ground = false;
    float scale = 1.0F;

    SceneSettings getScene() const {
        SceneSettings settings = scene;
        settings.ground = !no_ground;
        return settings;
    }
};

/// Adds the options of models, camera, light and image.
void addModelSceneOptions(CLI::App& app, ModelSceneOptions& options);

/// "[2/5] "
std::string stepText(std::size_t number, std::size_t count);

/// Reads mesh files as the first steps of a command that takes one more. Appends a line about each to `descriptions`.
/// Throws `Failure` for a file that can't be read or holds what a scene can't express.
std::vector<InputModel> readModels(const std::vector<std::string>& paths, const ModelSceneOptions& options,
                                   Progress& progress, std::vector<std::string>& descriptions);
