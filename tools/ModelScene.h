#pragma once

#include "tools/Console.h"
#include "tools/ModelOptions.h"
#include "tools/SceneBuilder.h"

#include <string>
#include <vector>

/// Models that were read from their files.
struct ModelScene {
    SceneContent content;
    /// A line about each file.
    std::vector<std::string> lines;
};

/// "[2/5] "
std::string stepText(std::size_t number, std::size_t count);

/// Reads models as the first steps of a command that takes one more, each file and scale once. What was left out of a
/// file is printed unless `quiet`. Throws `Failure` for a file that can't be read or holds what a scene can't express.
ModelScene readModels(const std::vector<ModelRequest>& requests, Progress& progress, bool quiet);
