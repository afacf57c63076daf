#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include "scene/Material.h"
#include "scene/Rotations.h"
#include "scene/Spectra.h"

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

void lend(const String& text, const char** bytes, uint64_t* size) {
    store(bytes, text.data());
    store(size, text.size());
}

double lengthOf(const Vec3d& v) {
    return std::hypot(v.x, v.y, v.z);
}

Vec3d scaled(const Vec3d& v, double factor) {
    return {v.x * factor, v.y * factor, v.z * factor};
}

Vec3d cross(const Vec3d& a, const Vec3d& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Unit length, or a refusal of a vector without a direction.
Vec3d directionOf(const Vec3d& v, const char* what, const char* text) {
    const double length = lengthOf(v);
    if (!(length > 0) || !std::isfinite(length)) refuse(what, text);
    return scaled(v, 1 / length);
}

// Materials, parameters and spectra may be of classes of the renderer library, so their codes say what they are.
constexpr std::uint32_t diffuse_material = 1;
constexpr std::uint32_t sun_sky_material = 10;
constexpr std::uint32_t constant_param = 0;
constexpr std::uint32_t rgb_spectrum = 2;
constexpr std::uint32_t uniform_spectrum = 4;

template <class T>
const T* materialOf(const Reference<Material>& material, std::uint32_t kind) {
    if (!material || material->getMaterialKind() != kind) return nullptr;
    return static_cast<const T*>(material.getPointer());
}

template <class T>
const T* spectrumOf(const Reference<WavelengthDependentParam>& param, std::uint32_t kind) {
    if (!param || param->getType() != constant_param) return nullptr;
    const auto& constant = static_cast<const ConstantWavelengthDependentParam&>(*param);
    if (!constant.spectrum || constant.spectrum->getType() != kind) return nullptr;
    return static_cast<const T*>(constant.spectrum.getPointer());
}

void storeVector(const Vec3d& v, double* x, double* y, double* z) {
    store(x, v.x);
    store(y, v.y);
    store(z, v.z);
}

Vec3d positionOf(const SceneNodeCamera& camera) {
    return camera.keyframes.empty() ? Vec3d{} : camera.keyframes.data()[0].pos;
}

} // namespace

extern "C" {

int32_t VelmarKit_Node_GetName(const void* node, const char** name, uint64_t* size) {
    return guarded(Subject::scene, [&] { lend(nodeOf(node, "node").getName(), name, size); });
}

int32_t VelmarKit_Scene_RemoveNode(VelmarScene* scene, void* node) {
    return guarded(Subject::scene, [&] {
        SceneNodeRoot& root = objectOf(scene, "scene");
        SceneNode& child = nodeOf(node, "node");
        // Without another owner it is the host's again, alive.
        const HeldForCall held(&child);
        if (!root.removeChildNode(child)) refuse("node", " isn't in this scene");
    });
}

int32_t VelmarKit_Scene_GetNodeCount(const VelmarScene* scene, uint64_t* count) {
    return guarded(Subject::scene, [&] { store(count, objectOf(scene, "scene").children().size()); });
}

int32_t VelmarKit_Node_Delete(void* node) {
    return guarded(Subject::scene, [&] {
        if (node == nullptr) return;
        SceneNode& object = nodeOf(node, "node");
        if (object.getRefCount() != 0) refuse("node", " belongs to another object, which destroys it");
        object.destroy(1);
    });
}

int32_t VelmarKit_Node_Retain(void* node) {
    return guarded(Subject::scene, [&] { nodeOf(node, "node").increment(); });
}

int32_t VelmarKit_Node_Release(void* node) {
    return guarded(Subject::scene, [&] {
        if (node == nullptr) return;
        SceneNode& object = nodeOf(node, "node");
        if (object.getRefCount() == 0) refuse("node", " isn't held by anything");
        if (object.decrement() == 1) object.destroy(1);
    });
}

int32_t VelmarKit_Background_Delete(void* record) {
    return guarded(Subject::background, [&] {
        auto* const background = static_cast<VelmarBackground*>(record);
        checkUnowned(background);
        if (background != nullptr) fromHandle(background)->destroy(1);
    });
}

int32_t VelmarKit_Camera_LookAt(VelmarCamera* camera, double x, double y, double z, double up_x, double up_y,
                                double up_z) {
    return guarded(Subject::camera, [&] {
        SceneNodeCamera& node = objectOf(camera, "camera");
        const Vec3d from = positionOf(node);
        const Vec3d forwards =
            directionOf({x - from.x, y - from.y, z - from.z}, "the target", " has no direction from the camera");
        const Vec3d up = directionOf({up_x, up_y, up_z}, "up", " has no direction");
        const Vec3d right = directionOf(cross(forwards, up), "up", " is parallel to the view");
        node.forwards = forwards;
        node.up = cross(right, forwards);
    });
}

// The half of the sensor, seen from the lens, is the half of the field of view.

int32_t VelmarKit_Camera_SetFieldOfView(VelmarCamera* camera, double radians) {
    return guarded(Subject::camera, [&] {
        SceneNodeCamera& node = objectOf(camera, "camera");
        if (!(radians > 0 && radians < std::numbers::pi)) refuse("radians", " isn't between 0 and pi");
        node.lens_sensor_dist = 0.5 * node.sensor_width / std::tan(0.5 * radians);
    });
}

int32_t VelmarKit_Camera_GetFieldOfView(const VelmarCamera* camera, double* radians) {
    return guarded(Subject::camera, [&] {
        const SceneNodeCamera& node = objectOf(camera, "camera");
        store(radians, 2 * std::atan2(0.5 * node.sensor_width, node.lens_sensor_dist));
    });
}

int32_t VelmarKit_Material_GetColour(const VelmarMaterialNode* material, double* r, double* g, double* b) {
    return guarded(Subject::material, [&] {
        const auto* const diffuse =
            materialOf<DiffuseMaterial>(objectOf(material, "material").material, diffuse_material);
        const auto* const colour =
            diffuse == nullptr ? nullptr : spectrumOf<RGBSpectrum>(diffuse->albedo, rgb_spectrum);
        if (colour == nullptr) refuse("material", " has no colour");
        storeVector(colour->rgb, r, g, b);
    });
}

int32_t VelmarKit_Background_GetUniform(const VelmarBackground* background, double* r, double* g, double* b,
                                        double* strength) {
    return guarded(Subject::background, [&] {
        const auto* const material =
            materialOf<DiffuseMaterial>(objectOf(background, "background").background_material, diffuse_material);
        const RGBSpectrum* colour = nullptr;
        const UniformSpectrum* factor = nullptr;
        if (material != nullptr) {
            colour = spectrumOf<RGBSpectrum>(material->emission, rgb_spectrum);
            factor = spectrumOf<UniformSpectrum>(material->base_emission, uniform_spectrum);
        }
        if (colour == nullptr || factor == nullptr) refuse("background", " isn't uniform light");
        storeVector(colour->rgb, r, g, b);
        store(strength, factor->value);
    });
}

int32_t VelmarKit_Background_GetSunSky(const VelmarBackground* background, double* x, double* y, double* z,
                                       const char** model, uint64_t* size) {
    return guarded(Subject::background, [&] {
        const auto* const material =
            materialOf<SunSkyMaterial>(objectOf(background, "background").background_material, sun_sky_material);
        if (material == nullptr) refuse("background", " isn't sun and sky");
        storeVector(material->sundir, x, y, z);
        lend(material->model, model, size);
    });
}

int32_t VelmarKit_Camera_GetPosition(const VelmarCamera* camera, double* x, double* y, double* z) {
    return guarded(Subject::camera, [&] { storeVector(positionOf(objectOf(camera, "camera")), x, y, z); });
}

int32_t VelmarKit_Tonemapping_GetResponseFunctionPath(const VelmarTonemapping* tonemapping, const char** path,
                                                      uint64_t* size) {
    return guarded(Subject::tonemapping,
                   [&] { lend(objectOf(tonemapping, "tonemapping").response_function_path, path, size); });
}

int32_t VelmarKit_Model_GetGeometry(const VelmarModel* model, VelmarMesh** mesh, uint64_t* num_materials) {
    return guarded(Subject::model, [&] {
        const SceneNodeModel& node = objectOf(model, "model");
        SceneNode* const geometry = node.geometry.getPointer();
        const bool is_mesh = geometry != nullptr && geometry->getType() == NodeType::Mesh;
        store(mesh, is_mesh ? reinterpret_cast<VelmarMesh*>(geometry) : nullptr);
        store(num_materials, node.materials.size());
    });
}

int32_t VelmarKit_Model_GetMaterial(const VelmarModel* model, uint64_t index, VelmarMaterialNode** material) {
    return guarded(Subject::model, [&] {
        const SceneNodeModel& node = objectOf(model, "model");
        const bool is_there = index < node.materials.size();
        store(material, is_there ? toHandle<VelmarMaterialNode>(node.materials[index].getPointer()) : nullptr);
    });
}

int32_t VelmarKit_Model_GetTransformation(const VelmarModel* model, double* rotation, double* position, int32_t index) {
    return guarded(Subject::model, [&] {
        const SceneNodeModel& node = objectOf(model, "model");
        if (index < 0 || static_cast<uint64_t>(index) >= node.keyframes.size())
            refuse("index", " names a key frame that the model doesn't have");
        if (position != nullptr) {
            const Vec3d& pos = node.keyframes[static_cast<uint64_t>(index)].pos;
            position[0] = pos.x;
            position[1] = pos.y;
            position[2] = pos.z;
        }
        if (rotation == nullptr) return;
        if (!node.rotation || node.rotation->getType() != Rotation::matrix_kind)
            refuse("model", " has a rotation that isn't a matrix");
        std::copy_n(static_cast<const MatrixRotation&>(*node.rotation).matrix, 9, rotation);
    });
}

} // extern "C"
