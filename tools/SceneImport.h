#pragma once

#include "tools/SceneBuilder.h"

#include <string>
#include <string_view>
#include <vector>

/// Whole scenes in the formats that the library assimp reads. It is loaded when it is needed, and only where this
/// program was built with its headers.

struct ImportedScene {
    /// Placed as in the file, with its height turned to z.
    SceneContent content;
    /// What was left out, a sentence.
    std::vector<std::string> notes;
};

/// Whether a file of this format (an extension in lower case) is to be read as a scene. Formats of single meshes
/// aren't.
bool isSceneFormat(std::string_view format);

/// Reads a scene: nodes become models, which share meshes; materials keep their names and diffuse colours, and the
/// first camera is taken. `up` is an axis or "auto". Throws `Failure` that names the file.
ImportedScene importScene(const std::string& path, const std::string& up);
