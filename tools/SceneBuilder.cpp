#include "tools/SceneBuilder.h"

SceneBuilder::SceneBuilder(std::vector<InputModel> models, const SceneSettings& settings)
    : scene(VelmarScene_Create()) {
    addToneMapping(settings);
    for (InputModel& model : models)
        addModel(model);
}

void SceneBuilder::write(const std::string& path) const {
    VelmarScene_WriteToXML(scene.get(), path.c_str());
}

void SceneBuilder::addToneMapping(const SceneSettings& settings) {
    VelmarTonemapping* const node = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene.get(), node);
    if (settings.tone_mapping == "reinhard") VelmarTonemapping_SetType(node, VELMAR_TONEMAPPING_REINHARD);
}

void SceneBuilder::addModel(InputModel& model) {
    VelmarMesh* const node = handOverMesh(*model.mesh, model.name, model.smooth_normals);
    model.mesh = nullptr;
    VelmarScene_AddMesh(scene.get(), node);
}
