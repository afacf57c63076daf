#pragma once

#include "reference.h"
#include "velmarapi.h"

#include "mesh/Mesh.h"
#include "tools/Framing.h"
#include "tools/MeshInput.h"
#include "tools/SceneSettings.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

/// A model as it was read.
struct InputModel {
    std::string name;
    Velmar::Reference<Velmar::Mesh> mesh;
    std::vector<MaterialColour> colours;
    bool smooth_normals = false;
    /// Its height is y, where the scene's is z.
    bool y_up = false;
};

/// A complete scene made by the exported functions of the library alone, as any host would make it.
class SceneBuilder {
  public:
    /// Releases each mesh that was read once the scene has its own.
    SceneBuilder(std::vector<InputModel> models, const SceneSettings& settings);

    /// Writes the document and the mesh files that aren't there yet. That a document couldn't be written isn't
    /// reported.
    void write(const std::string& path) const;

    /// What the mesh files of the scene are named by, each once.
    const std::vector<std::uint64_t>& getMeshChecksums() const { return mesh_checksums; }

  private:
    struct DeleteScene {
        void operator()(VelmarScene* root) const { VelmarScene_Delete(root); }
    };
    using ColourKey = std::tuple<std::string, float, float, float>;

    void addRenderSettings(const SceneSettings& settings);
    void addCamera(const Box& box, const SceneSettings& settings);
    void addToneMapping(const SceneSettings& settings);
    void addLight(const SceneSettings& settings);
    void addModel(InputModel& model);
    void addGroundPlane(const Box& box);
    /// The node of that name and colour, made when it is first asked for.
    VelmarMaterialNode* getMaterial(const std::string& name, const std::vector<MaterialColour>& colours);
    void noteMesh(const Velmar::Mesh& mesh);

    std::unique_ptr<VelmarScene, DeleteScene> scene;
    std::map<ColourKey, VelmarMaterialNode*> materials;
    std::vector<std::uint64_t> mesh_checksums;
};
