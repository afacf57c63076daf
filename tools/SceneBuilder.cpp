#include "tools/SceneBuilder.h"

#include "api/Handles.h"
#include "tools/System.h"
#include "utils/FileUtils.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

using Velmar::Vec3d;
using Velmar::Vec3f;

// ---- framing -----------------------------------------------------------------------------------------------------

namespace {

// Small enough to keep everything in focus, large enough not to be a pinhole.
constexpr double lens_radius_per_distance = 0.0005;

double toRadians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

} // namespace

void Box::add(const Box& other) {
    min = {std::min(min.x, other.min.x), std::min(min.y, other.min.y), std::min(min.z, other.min.z)};
    max = {std::max(max.x, other.max.x), std::max(max.y, other.max.y), std::max(max.z, other.max.z)};
}

Vec3d Box::getCentre() const {
    return {(min.x + max.x) / 2, (min.y + max.y) / 2, (min.z + max.z) / 2};
}

double Box::getRadius() const {
    const double radius = std::hypot(max.x - min.x, max.y - min.y, max.z - min.z) / 2;
    return radius > 0 ? radius : 1;
}

Vec3d getViewDirection(double azimuth, double elevation) {
    const double around = toRadians(azimuth);
    const double above = toRadians(elevation);
    return {std::sin(around) * std::cos(above), -std::cos(around) * std::cos(above), std::sin(above)};
}

double roundToSize(double value, double size) {
    // By multiplication alone, which is the same everywhere.
    double steps = 1e6;
    for (double power = 1; power < size; power *= 10)
        steps /= 10;
    for (double power = 0.1; power >= size && power > 1e-30; power /= 10)
        steps *= 10;
    return std::round(value * steps) / steps;
}

Frame frameBox(const Box& box, const SceneSettings& settings) {
    const double radius = box.getRadius();
    const Vec3d centre = box.getCentre();
    const double lens_sensor_dist = 0.5 * sensor_width / std::tan(toRadians(settings.fov) / 2);
    const double sensor_height = sensor_width * settings.height / settings.width;
    const double half_angle = std::atan(0.5 * std::min(sensor_width, sensor_height) / lens_sensor_dist);
    const double distance = radius / std::sin(half_angle);

    const Vec3d towards_camera = getViewDirection(settings.azimuth, settings.elevation);
    const auto place = [&](double middle, double direction) {
        return roundToSize(middle + distance * direction, radius);
    };
    const auto turn = [](double direction) { return roundToSize(-direction, 1); };
    return {{place(centre.x, towards_camera.x), place(centre.y, towards_camera.y), place(centre.z, towards_camera.z)},
            {turn(towards_camera.x), turn(towards_camera.y), turn(towards_camera.z)},
            roundToSize(distance, radius),
            roundToSize(lens_sensor_dist, sensor_width),
            roundToSize(distance * lens_radius_per_distance, radius)};
}

// ---- the scene ---------------------------------------------------------------------------------------------------

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

Vec3f findColour(const std::string& name, const std::vector<Velmar::MaterialColour>& colours) {
    const auto found =
        std::find_if(colours.begin(), colours.end(), [&](const Velmar::MaterialColour& c) { return c.name == name; });
    return found == colours.end() ? default_colour : found->colour;
}

} // namespace

SceneBuilder::SceneBuilder(const std::vector<InputModel>& models, const SceneSettings& settings)
    : scene(VelmarScene_Create()) {
    const Box box = getBox(models);
    addRenderSettings(settings);
    addCamera(box, settings);
    addToneMapping(settings);
    addLight(settings);
    for (const InputModel& model : models)
        addModel(model);
    if (settings.ground) addGroundPlane(box);
}

std::vector<SceneMesh> SceneBuilder::getMeshes(const std::string& path) const {
    Velmar::SceneNodeRoot& root = *Velmar::fromHandle(scene.get());
    const Velmar::String folder(FileUtils::getDirectory(path));
    std::vector<SceneMesh> meshes;
    std::set<std::string> paths;
    for (Velmar::UID uid = 1; uid < root.getNextUID(); ++uid) {
        const Velmar::SceneNode* const node = root.getNodeByUID(uid);
        if (node == nullptr || node->getType() != Velmar::NodeType::Mesh) continue;
        const auto& mesh_node = static_cast<const Velmar::SceneNodeMesh&>(*node);
        const std::string mesh_path = mesh_node.getMeshFilePath(Velmar::String(path), folder, {});
        if (paths.insert(mesh_path).second) meshes.push_back({mesh_node.mesh, mesh_path});
    }
    return meshes;
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
    if (settings.super_sample_factor > 0) VelmarRenderSettings_SuperSampleFactor(node, settings.super_sample_factor);
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

void SceneBuilder::addModel(const InputModel& model) {
    std::vector<VelmarMaterialNode*> nodes;
    for (const Velmar::String& name : model.mesh->used_materials)
        nodes.push_back(getMaterial(std::string(name.view()), model.colours));
    // Faces of a mesh without names refer to one material too.
    if (nodes.empty()) nodes.push_back(getMaterial("default", model.colours));

    VelmarMesh* const mesh = VelmarMesh_Create(model.name.c_str());
    VelmarScene_AddMesh(scene.get(), mesh);
    VelmarMesh_SetNormalSmoothing(mesh, model.smooth_normals ? 1 : 0);
    Velmar::fromHandle(mesh)->mesh = model.mesh;

    VelmarModel* const node = VelmarModel_Create(model.name.c_str(), mesh);
    VelmarScene_AddModel(scene.get(), node);
    {
        // The library prints each list of materials on the standard output.
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
    const System::SilentOutput silence;
    VelmarScene_AddGroundPlane(scene.get(), box.min.z, half_size);
}

VelmarMaterialNode* SceneBuilder::getMaterial(const std::string& name,
                                              const std::vector<Velmar::MaterialColour>& colours) {
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
