#pragma once

#include "tools/OutputFile.h"
#include "tools/SceneBuilder.h"

#include <cstdint>
#include <string>
#include <vector>

/// The files of a scene.

/// A mesh file in the folder of the scene's meshes.
struct MeshFile {
    /// As seen from where the document's path is.
    std::string path;
    std::uint64_t size = 0;
    /// Whether it was there before, with the right content.
    bool existed = false;
};

struct SceneFiles {
    std::uint64_t document_size = 0;
    std::vector<MeshFile> meshes;
};

/// Writes the document `path` and the mesh files that don't exist yet: all of them or none, whatever fails or
/// interrupts. Until then an existing document stays. With `store_folder` not empty, the meshes are written into that
/// store and the document names them there. The scene is left without its meshes then. Throws `Failure`.
SceneFiles writeScene(SceneBuilder& scene, OutputFile& document, const std::string& path,
                      const std::string& store_folder);

/// What `writeScene` would find and make; sizes are those of existing files.
SceneFiles previewScene(const SceneBuilder& scene, const std::string& path, const std::string& store_folder);
