#include "tools/SceneBuilder.h"

#include "api/Handles.h"
#include "tools/Console.h"
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

namespace {

double getLensDistance(double fov) {
    return roundToSize(0.5 * sensor_width / std::tan(toRadians(fov) / 2), sensor_width);
}

/// The frame from a place, whose numbers are kept as they are.
Frame lookFrom(const ViewPoint& view_point, double default_fov) {
    const double distance = getLength(view_point.forwards);
    const Vec3d& f = view_point.forwards;
    const auto turn = [&](double direction) { return roundToSize(direction / distance, 1); };
    Frame frame;
    frame.position = view_point.position;
    frame.forwards = {turn(f.x), turn(f.y), turn(f.z)};
    frame.up = view_point.up;
    // An image needs a direction that is up in it; a camera that looks straight down has none.
    if (getLength({frame.forwards.x, frame.forwards.y, 0}) < 1e-6 && frame.up.x == 0 && frame.up.y == 0)
        frame.up = {0, 1, 0};
    frame.focus_distance = roundToSize(distance, distance);
    frame.lens_sensor_dist = getLensDistance(view_point.fov > 0 ? view_point.fov : default_fov);
    frame.lens_radius = roundToSize(distance * lens_radius_per_distance, distance);
    return frame;
}

/// The frame that sees the whole of `box` from the side that the settings give.
Frame frameBox(const Box& box, const SceneSettings& settings) {
    const double radius = box.getRadius();
    const Vec3d centre = settings.target.value_or(box.getCentre());
    const double lens_sensor_dist = 0.5 * sensor_width / std::tan(toRadians(settings.fov) / 2);
    const double sensor_height = sensor_width * settings.height / settings.width;
    const double half_angle = std::atan(0.5 * std::min(sensor_width, sensor_height) / lens_sensor_dist);
    const double distance = radius / std::sin(half_angle);

    const Vec3d towards_camera = getViewDirection(settings.azimuth, settings.elevation);
    const auto place = [&](double middle, double direction) {
        return roundToSize(middle + distance * direction, radius);
    };
    const auto turn = [](double direction) { return roundToSize(-direction, 1); };
    Frame frame;
    frame.position = {place(centre.x, towards_camera.x), place(centre.y, towards_camera.y),
                      place(centre.z, towards_camera.z)};
    frame.forwards = {turn(towards_camera.x), turn(towards_camera.y), turn(towards_camera.z)};
    frame.focus_distance = roundToSize(distance, radius);
    frame.lens_sensor_dist = roundToSize(lens_sensor_dist, sensor_width);
    frame.lens_radius = roundToSize(distance * lens_radius_per_distance, radius);
    return frame;
}

} // namespace

Frame makeFrame(const Box& box, const SceneSettings& settings, const std::optional<ViewPoint>& view_point) {
    if (settings.camera) {
        const Vec3d target = settings.target.value_or(box.getCentre());
        const Vec3d& from = *settings.camera;
        ViewPoint chosen = {from, {target.x - from.x, target.y - from.y, target.z - from.z}};
        if (getLength(chosen.forwards) == 0) throw UsageError("--camera: is where the camera looks to; move it away");
        return lookFrom(chosen, settings.fov);
    }
    if (view_point && !settings.view_chosen && !settings.target) return lookFrom(*view_point, settings.fov);
    return frameBox(box, settings);
}

// ---- the scene ---------------------------------------------------------------------------------------------------

namespace {

constexpr const char* sky_model = "captured-simulation";
/// Half the side of an automatic ground.
constexpr double ground_per_radius = 50;
constexpr const char* ground_name = "GroundPlane";

} // namespace

Box SceneContent::getBounds() const {
    Box box;
    for (const SceneModel& model : models)
        box.add(model.placement.getBounds(*geometries[model.geometry].mesh));
    return box;
}

SceneBuilder::SceneBuilder(const SceneContent& content, const SceneSettings& settings) : scene(VelmarScene_Create()) {
    const Box box = content.getBounds();
    frame = makeFrame(box, settings, content.camera);
    addRenderSettings(settings);
    addCamera();
    addToneMapping(settings);
    addLight(settings);
    for (const SceneModel& model : content.models)
        addModel(content, model);
    ground_left_out = settings.ground == Ground::automatic && frame.position.z <= box.min.z;
    if (settings.ground != Ground::none && !ground_left_out) addGround(box, settings);
}

std::vector<Velmar::SceneNodeMesh*> SceneBuilder::getMeshNodes() const {
    Velmar::SceneNodeRoot& root = *Velmar::fromHandle(scene.get());
    std::vector<Velmar::SceneNodeMesh*> found;
    for (Velmar::UID uid = 1; uid < root.getNextUID(); ++uid) {
        Velmar::SceneNode* const node = root.getNodeByUID(uid);
        if (node != nullptr && node->getType() == Velmar::NodeType::Mesh)
            found.push_back(static_cast<Velmar::SceneNodeMesh*>(node));
    }
    return found;
}

std::vector<SceneMesh> SceneBuilder::getMeshes(const std::string& path) const {
    const Velmar::String folder(FileUtils::getDirectory(path));
    std::vector<SceneMesh> found;
    std::set<std::string> paths;
    for (const Velmar::SceneNodeMesh* node : getMeshNodes()) {
        const std::string mesh_path = node->getMeshFilePath(Velmar::String(path), folder, {});
        if (paths.insert(mesh_path).second) found.push_back({node->mesh, mesh_path});
    }
    return found;
}

void SceneBuilder::nameMeshFiles(const std::function<std::string(std::uint64_t checksum)>& name) {
    for (Velmar::SceneNodeMesh* node : getMeshNodes()) {
        node->path = Velmar::String(name(node->mesh->checksum()));
        node->mesh = nullptr;
    }
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

void SceneBuilder::addCamera() {
    VelmarCamera* const node = VelmarCamera_Create();
    VelmarScene_AddCamera(scene.get(), node);
    VelmarCamera_SetSensorWidth(node, sensor_width);
    VelmarCamera_SetLensSensorDistance(node, frame.lens_sensor_dist);
    VelmarCamera_SetLensRadius(node, frame.lens_radius);
    VelmarCamera_SetFocusDistance(node, frame.focus_distance);
    VelmarCamera_SetPosition(node, frame.position.x, frame.position.y, frame.position.z);
    VelmarCamera_SetForwards(node, frame.forwards.x, frame.forwards.y, frame.forwards.z);
    VelmarCamera_SetUp(node, frame.up.x, frame.up.y, frame.up.z);
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
            scene.get(), VelmarBackground_CreateSunSky(settings.sun.x, settings.sun.y, settings.sun.z, sky_model));
    else if (settings.light == "uniform")
        VelmarScene_AddBackground(scene.get(), VelmarBackground_CreateUniform(1, 1, 1, settings.light_strength));
}

void SceneBuilder::addModel(const SceneContent& content, const SceneModel& model) {
    std::vector<VelmarMaterialNode*> nodes;
    for (const SceneMaterial& material : model.materials)
        nodes.push_back(getMaterial(material));
    VelmarMesh*& mesh = meshes[model.geometry];
    if (mesh == nullptr) {
        const SceneGeometry& geometry = content.geometries[model.geometry];
        mesh = VelmarMesh_Create(geometry.name.c_str());
        VelmarScene_AddMesh(scene.get(), mesh);
        VelmarMesh_SetNormalSmoothing(mesh, geometry.smooth_normals ? 1 : 0);
        Velmar::fromHandle(mesh)->mesh = geometry.mesh;
    }
    addModelNode(model.name, mesh, nodes, model.placement);
}

/// Below the models: around the middle of what they cover.
void SceneBuilder::addGround(const Box& box, const SceneSettings& settings) {
    const double radius = box.getRadius();
    const double half = settings.ground == Ground::of_size
                            ? settings.ground_size / 2
                            : roundToSize(ground_per_radius * radius, ground_per_radius * radius);
    const Vec3d centre = box.getCentre();
    const auto x = static_cast<float>(roundToSize(centre.x, radius));
    const auto y = static_cast<float>(roundToSize(centre.y, radius));
    const auto z = static_cast<float>(box.min.z);
    const auto s = static_cast<float>(half);
    const float corners[] = {x - s, y - s, z, x - s, y + s, z, x + s, y + s, z, x + s, y - s, z};
    // A quad: its kind, vertices, UVs and material.
    const std::uint32_t face[] = {1, 0, 1, 2, 3, 0, 0, 0, 0, 0};
    VelmarMesh* const mesh = VelmarMesh_Create(ground_name);
    VelmarScene_AddMesh(scene.get(), mesh);
    VelmarMesh_AddVertices(mesh, 4, corners);
    VelmarMesh_AddFaces(mesh, 1, face);
    VelmarMesh_Build(mesh);
    std::vector<VelmarMaterialNode*> nodes = {addMaterial({ground_name})};
    addModelNode(ground_name, mesh, nodes, {});
}

void SceneBuilder::addModelNode(const std::string& name, VelmarMesh* mesh, std::vector<VelmarMaterialNode*>& nodes,
                                const Placement& placement) {
    VelmarModel* const node = VelmarModel_Create(name.c_str(), mesh);
    VelmarScene_AddModel(scene.get(), node);
    {
        // The library prints each list of materials on the standard output.
        const System::SilentOutput silence;
        VelmarModel_SetMaterials(node, static_cast<std::int32_t>(nodes.size()), nodes.data());
    }
    if (!placement.turns() && !placement.moves()) return;
    float matrix[9] = {};
    std::transform(std::begin(placement.matrix), std::end(placement.matrix), std::begin(matrix),
                   [](double entry) { return static_cast<float>(entry); });
    const Vec3d& p = placement.position;
    const float position[3] = {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
    VelmarModel_SetTransformation(node, matrix, position, 0);
}

VelmarMaterialNode* SceneBuilder::getMaterial(const SceneMaterial& material) {
    const Vec3f& colour = material.colour;
    VelmarMaterialNode*& node = materials[{material.name, colour.x, colour.y, colour.z}];
    if (node == nullptr) node = addMaterial(material);
    return node;
}

VelmarMaterialNode* SceneBuilder::addMaterial(const SceneMaterial& material) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode(material.name.c_str());
    VelmarScene_AddMaterial(scene.get(), node);
    // As people wrote it: 0.8, and not the nearest float's 0.800000011920929.
    const auto decimal = [](float component) { return roundToSize(component, 1); };
    VelmarMaterial_AddToNode(node,
                             VelmarMaterial_CreateDiffuse(material.name.c_str(), decimal(material.colour.x),
                                                          decimal(material.colour.y), decimal(material.colour.z)));
    return node;
}
