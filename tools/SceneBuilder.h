#pragma once

#include "reference.h"
#include "velmarapi.h"

#include "mesh/Mesh.h"
#include "tools/MeshHandover.h"

#include <memory>
#include <string>
#include <vector>

/// A model as it was read.
struct InputModel {
    std::string name;
    Velmar::Reference<Velmar::Mesh> mesh;
    bool smooth_normals = false;
    /// Its height is y, where the scene's is z.
    bool y_up = false;
};

/// What the person asked for.
struct SceneSettings {
    std::string tone_mapping = "reinhard";
};

/// A scene made by the exported functions of the library alone, as any host would make it.
class SceneBuilder {
  public:
    /// Releases each mesh that was read once the scene has its own.
    SceneBuilder(std::vector<InputModel> models, const SceneSettings& settings);

    /// Writes the document and the mesh files that aren't there yet. That a document couldn't be written isn't
    /// reported.
    void write(const std::string& path) const;

  private:
    struct DeleteScene {
        void operator()(VelmarScene* root) const { VelmarScene_Delete(root); }
    };

    void addToneMapping(const SceneSettings& settings);
    void addModel(InputModel& model);

    std::unique_ptr<VelmarScene, DeleteScene> scene;
};
