#include "tools/SceneBuilder.h"

#include "tools/MeshHandover.h"
#include "tools/System.h"

#include <algorithm>
#include <cmath>

using Velmar::Mesh;
using Velmar::Reference;
using Velmar::Vec3f;

namespace {

constexpr Vec3f default_colour = {0.8F, 0.8F, 0.8F};
constexpr const char* sky_model = "captured-simulation";
/// The ground reaches so many times as far as the models.
constexpr double ground_per_radius = 50;

/// The model's place in the scene.
Box getBox(const InputModel& model) {
    const Vec3f& low = model.mesh->aabb_min;
    const Vec3f& high = model.mesh->aabb_max;
    if (model.y_up) return {{low.x, -high.z, low.y}, {high.x, -low.z, high.y}};
    return {{low.x, low.y, low.z}, {high.x, high.y, high.z}};
}

Box getBox(const std::vector<InputModel>& models) {
    Box box = getBox(models.front());
    for (const InputModel& model : models)
        box.add(getBox(model));
    return box;
}

Vec3f findColour(const std::string& name, const std::vector<MaterialColour>& colours) {
    const auto found =
        std::find_if(colours.begin(), colours.end(), [&](const MaterialColour& c) { return c.name == name; });
    return found == colours.end() ? default_colour : found->colour;
}

/// The mesh of the library's ground plane.
Reference<Mesh> makeGroundMesh(double z, double half_size) {
    Reference<Mesh> mesh(new Mesh);
    const auto s = static_cast<float>(half_size);
    const auto t = static_cast<float>(z);
    for (const Vec3f& corner : {Vec3f{-s, -s, t}, Vec3f{-s, s, t}, Vec3f{s, s, t}, Vec3f{s, -s, t}})
        mesh->addVertex(corner);
    mesh->quads.push_back({{0, 1, 2, 3}, {0, 0, 0, 0}, 0});
    return mesh;
}

} // namespace

SceneBuilder::SceneBuilder(std::vector<InputModel> models, const SceneSettings& settings)
    : scene(VelmarScene_Create()) {
    const Box box = getBox(models);
    addRenderSettings(settings);
    addCamera(box, settings);
    addToneMapping(settings);
    addLight(settings);
    for (InputModel& model : models)
        addModel(model);
    if (settings.ground) addGroundPlane(box);
}

void SceneBuilder::write(const std::string& path) const {
    VelmarScene_WriteToXML(scene.get(), path.c_str());
}

// Every node is added as soon as it is made: from then on the scene owns it, whatever happens.

void SceneBuilder::addRenderSettings(const SceneSettings& settings) {
    VelmarRenderSettings* const node = VelmarRenderSettings_Create();
    VelmarScene_AddRenderSettings(scene.get(), node);
    VelmarRenderSettings_Width(node, settings.width);
    VelmarRenderSettings_Height(node, settings.height);
    if (settings.halt_time > 0) VelmarRenderSettings_HaltTime(node, settings.halt_time);
    if (settings.halt_samples > 0) VelmarRenderSettings_HaltSamplesPerPixel(node, settings.halt_samples);
}

void SceneBuilder::addCamera(const Box& box, const SceneSettings& settings) {
    const Frame frame = frameBox(box, settings);
    VelmarCamera* const node = VelmarCamera_Create();
    VelmarScene_AddCamera(scene.get(), node);
    VelmarCamera_SetSensorWidth(node, sensor_width);
    VelmarCamera_SetLensSensorDistance(node, frame.lens_sensor_dist);
    VelmarCamera_SetLensRadius(node, frame.lens_radius);
    VelmarCamera_SetFocusDistance(node, frame.focus_distance);
    VelmarCamera_SetPosition(node, frame.position.x, frame.position.y, frame.position.z);
    VelmarCamera_SetForwards(node, frame.forwards.x, frame.forwards.y, frame.forwards.z);
    VelmarCamera_SetUp(node, 0, 0, 1);
}

void SceneBuilder::addToneMapping(const SceneSettings& settings) {
    VelmarTonemapping* const node = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene.get(), node);
    if (settings.tone_mapping == "reinhard") {
        VelmarTonemapping_SetType(node, VELMAR_TONEMAPPING_REINHARD);
        VelmarTonemapping_SetPreScale(node, 4 * settings.brightness);
    } else if (settings.tone_mapping == "camera") {
        VelmarTonemapping_SetType(node, VELMAR_TONEMAPPING_CAMERA);
        VelmarTonemapping_EvAdjust(node, roundToSize(std::log2(settings.brightness), 1));
    } else {
        const bool filmic = settings.tone_mapping == "filmic";
        VelmarTonemapping_SetType(node, filmic ? VELMAR_TONEMAPPING_FILMIC : VELMAR_TONEMAPPING_LINEAR);
        VelmarTonemapping_SetScale(node, settings.brightness);
    }
}

void SceneBuilder::addLight(const SceneSettings& settings) {
    if (settings.light == "sunsky")
        VelmarScene_AddBackground(
            scene.get(), VelmarBackground_CreateSunSky(settings.sun[0], settings.sun[1], settings.sun[2], sky_model));
    else if (settings.light == "uniform")
        VelmarScene_AddBackground(scene.get(), VelmarBackground_CreateUniform(1, 1, 1, settings.light_strength));
}

void SceneBuilder::addModel(InputModel& model) {
    std::vector<VelmarMaterialNode*> nodes;
    for (const Velmar::String& name : model.mesh->used_materials)
        nodes.push_back(getMaterial(std::string(name.view()), model.colours));
    // Faces of a mesh without names still want the one that they refer to.
    if (nodes.empty()) nodes.push_back(getMaterial("default", model.colours));

    noteMesh(*model.mesh);
    VelmarMesh* const mesh = handOverMesh(*model.mesh, model.name, model.smooth_normals);
    VelmarScene_AddMesh(scene.get(), mesh);
    model.mesh = nullptr;

    VelmarModel* const node = VelmarModel_Create(model.name.c_str(), mesh);
    VelmarScene_AddModel(scene.get(), node);
    {
        // The library tells of each list of materials on the standard output.
        const System::SilentOutput silence;
        VelmarModel_SetMaterials(node, static_cast<std::int32_t>(nodes.size()), nodes.data());
    }
    if (!model.y_up) return;
    constexpr float y_to_z[9] = {1, 0, 0, 0, 0, -1, 0, 1, 0};
    constexpr float origin[3] = {0, 0, 0};
    VelmarModel_SetTransformation(node, y_to_z, origin, 0);
}

void SceneBuilder::addGroundPlane(const Box& box) {
    const double half_size = roundToSize(ground_per_radius * box.getRadius(), ground_per_radius * box.getRadius());
    noteMesh(*makeGroundMesh(box.min.z, half_size));
    const System::SilentOutput silence;
    VelmarScene_AddGroundPlane(scene.get(), box.min.z, half_size);
}

VelmarMaterialNode* SceneBuilder::getMaterial(const std::string& name, const std::vector<MaterialColour>& colours) {
    const Vec3f colour = findColour(name, colours);
    VelmarMaterialNode*& node = materials[{name, colour.x, colour.y, colour.z}];
    if (node != nullptr) return node;
    node = VelmarMaterial_CreateNode(name.c_str());
    VelmarScene_AddMaterial(scene.get(), node);
    // As people wrote it: 0.8, and not the nearest float's 0.800000011920929.
    const auto decimal = [](float component) { return roundToSize(component, 1); };
    VelmarMaterial_AddToNode(
        node, VelmarMaterial_CreateDiffuse(name.c_str(), decimal(colour.x), decimal(colour.y), decimal(colour.z)));
    return node;
}

void SceneBuilder::noteMesh(const Mesh& mesh) {
    const std::uint64_t checksum = mesh.checksum();
    if (std::find(mesh_checksums.begin(), mesh_checksums.end(), checksum) == mesh_checksums.end())
        mesh_checksums.push_back(checksum);
}
