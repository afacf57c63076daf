#pragma once

#include "velmarapi.h"
#include "velmarexceptions.h"

#include "tests/faults/FailingAllocation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <new>
#include <random>
#include <string>
#include <system_error>
#include <vector>

/// Turns bytes into a sequence of calls of the flat interface that keeps its ownership rules: what a scene or another
/// object holds isn't deleted, and everything else is in the end.
namespace ExportCalls {

/// Reads values off the front of the input; zeros when it is used up.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    template <class T>
    T take() {
        T value{};
        const std::size_t count = std::min(sizeof value, size_);
        std::memcpy(&value, data_, count);
        data_ += count;
        size_ -= count;
        return value;
    }

    std::size_t below(std::size_t limit) { return take<std::uint8_t>() % limit; }

    std::string text() {
        std::string result;
        for (std::size_t left = below(40); left > 0 && !empty(); --left)
            result += take<char>();
        return result.c_str();
    }

  private:
    const std::uint8_t* data_;
    std::size_t size_;
};

/// Which allocation of the present step's calls fails, and how; 0 for none.
inline std::int64_t failing_allocation = 0;
inline Faults::Lasting lasting = Faults::Lasting::once;

/// Makes a call of the library with the step's failure. Only such calls meet it, so that nothing of the host's is lost.
template <class Call>
auto attempt(Call call) {
    const Faults::FailingAllocation fault(failing_allocation, lasting);
    return call();
}

/// The handles of one kind, and which of them nobody holds yet.
template <class Handle>
class Pool {
  public:
    explicit Pool(std::function<void(Handle*)> destroy = {}) : destroy_(std::move(destroy)) {}
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() {
        for (const Entry& entry : entries_)
            if (!entry.held && destroy_) destroy_(entry.handle);
    }

    void add(Handle* handle) { entries_.push_back({handle, false}); }
    /// One that has a holder.
    void addHeld(Handle* handle) { entries_.push_back({handle, true}); }

    /// Some handle, or null when there is none.
    Handle* any(Input& input) {
        if (entries_.empty()) return nullptr;
        last_ = input.below(entries_.size());
        return entries_[last_].handle;
    }

    /// The handle that `any` gave last has a holder now.
    void markHeld() { entries_[last_].held = true; }

    /// As `any`, but a handle that is to be given to another object: it is added to the scene first, so that it stays
    /// alive when that object is destroyed.
    template <class Add>
    Handle* anyInScene(Input& input, VelmarScene* scene, Add add_to_scene) {
        Handle* const handle = any(input);
        if (handle != nullptr && !entries_[last_].held) {
            attempt([&] { add_to_scene(scene, handle); });
            markHeld();
        }
        return handle;
    }

    /// Deletes some handle that has no holder.
    void deleteAny(Input& input) {
        if (any(input) == nullptr || entries_[last_].held || !destroy_) return;
        destroy_(entries_[last_].handle);
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(last_));
    }

  private:
    struct Entry {
        Handle* handle;
        bool held;
    };
    std::function<void(Handle*)> destroy_;
    std::vector<Entry> entries_;
    std::size_t last_ = 0;
};

/// Everything that a host has made so far. The scene is deleted last: what it holds must outlive the use of the
/// handles.
struct Host {
    VelmarScene* scene = VelmarScene_Create();
    Pool<VelmarMesh> meshes{VelmarMesh_Delete};
    Pool<VelmarTonemapping> tonemappings{VelmarTonemapping_Delete};
    Pool<VelmarRenderSettings> settings{VelmarRenderSettings_Delete};
    Pool<VelmarMaterialNode> material_nodes{[](VelmarMaterialNode* node) { VelmarMaterial_Delete(node); }};
    Pool<VelmarMaterial> materials{[](VelmarMaterial* material) { VelmarMaterial_Delete(material); }};
    Pool<VelmarModel> models{VelmarModel_Delete};
    // Neither has a function that deletes it before it is in a scene, so both are added at once.
    Pool<VelmarCamera> cameras;
    Pool<VelmarBackground> backgrounds;

    /// Adds a node that only a scene can free: once more when memory ran out.
    template <class Handle, class Add>
    void give(Handle* node, Add add_to_scene) {
        try {
            attempt([&] { add_to_scene(scene, node); });
        } catch (const std::bad_alloc&) {
            add_to_scene(scene, node);
        }
    }

    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
};

/// Whether the steps that write files do so. They change nothing of what was made.
inline bool writes_files = true;

/// A folder of this process, which ends with it.
class WorkFolder {
  public:
    WorkFolder() {
        std::random_device random;
        folder = std::filesystem::temp_directory_path() / ("velmar-calls-" + std::to_string(random()));
        std::filesystem::create_directories(folder);
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path() const { return folder.string(); }

  private:
    std::filesystem::path folder;
};

inline const std::string& workFolder() {
    static const WorkFolder folder;
    static const std::string path = [] {
        // Setting materials prints a line each time.
        std::cout.setstate(std::ios_base::badbit);
        return folder.path();
    }();
    return path;
}

template <class Create>
auto make(Create create, Input& input) {
    const std::string name = input.text();
    return attempt([&] { return create(name.c_str()); });
}

inline void makeSomething(Host& host, Input& input) {
    switch (input.below(8)) {
    case 0:
        host.meshes.add(make([&](const char* name) { return VelmarMesh_Create(name); }, input));
        break;
    case 1:
        host.tonemappings.add(attempt([] { return VelmarTonemapping_Create(); }));
        break;
    case 2:
        host.settings.add(attempt([] { return VelmarRenderSettings_Create(); }));
        break;
    case 3:
        host.material_nodes.add(make([&](const char* name) { return VelmarMaterial_CreateNode(name); }, input));
        break;
    case 4: {
        const std::string name = input.text();
        const auto colour = input.take<std::array<double, 3>>();
        host.materials.add(
            attempt([&] { return VelmarMaterial_CreateDiffuse(name.c_str(), colour[0], colour[1], colour[2]); }));
        break;
    }
    case 5:
        if (VelmarMesh* const mesh = host.meshes.anyInScene(input, host.scene, VelmarScene_AddMesh))
            host.models.add(make([&](const char* name) { return VelmarModel_Create(name, mesh); }, input));
        break;
    case 6: {
        VelmarCamera* const camera = attempt([] { return VelmarCamera_Create(); });
        host.give(camera, VelmarScene_AddCamera);
        host.cameras.add(camera);
        break;
    }
    default: {
        const auto values = input.take<std::array<double, 4>>();
        const std::string model = input.text();
        const bool uniform = input.below(2) == 0;
        VelmarBackground* const background = attempt([&] {
            return uniform ? VelmarBackground_CreateUniform(values[0], values[1], values[2], values[3])
                           : VelmarBackground_CreateSunSky(values[0], values[1], values[2], model.c_str());
        });
        host.give(background, VelmarScene_AddBackground);
        host.backgrounds.add(background);
        break;
    }
    }
}

inline void changeMesh(Host& host, Input& input) {
    VelmarMesh* const mesh = host.meshes.any(input);
    if (mesh == nullptr) return;
    constexpr std::size_t most = 16;
    const auto count = static_cast<std::int32_t>(input.below(most + 2)) - 1;
    switch (input.below(9)) {
    case 0: {
        const auto xyz = input.take<std::array<float, 3 * most>>();
        attempt([&] { VelmarMesh_AddVertices(mesh, count, xyz.data()); });
        break;
    }
    case 1: {
        const auto words = input.take<std::array<std::uint32_t, 10 * most>>();
        attempt([&] { VelmarMesh_AddFaces(mesh, count, words.data()); });
        break;
    }
    case 2: {
        const auto uv = input.take<std::array<float, 2 * most>>();
        attempt([&] { VelmarMesh_AddTextureCoordinates(mesh, count, uv.data()); });
        break;
    }
    case 3: {
        const std::string name = input.text();
        attempt([&] { VelmarMesh_AddMaterialUsed(mesh, name.c_str()); });
        break;
    }
    case 4:
        attempt([&] { VelmarMesh_Build(mesh); });
        break;
    case 5: {
        if (!writes_files) break;
        const std::string path = workFolder() + "/mesh.vmmesh";
        attempt([&] { VelmarMesh_WriteToFile(mesh, path.c_str()); });
        break;
    }
    case 6: {
        if (!writes_files) break;
        const std::string path = workFolder() + "/mesh.txt";
        attempt([&] { velmar_write_mesh_to_file(mesh, path.c_str()); });
        break;
    }
    case 7:
        VelmarMesh_NormalSmoothing(mesh, input.take<VelmarBool>());
        VelmarMesh_ViewDependentSubdivision(mesh, input.take<VelmarBool>());
        break;
    default:
        VelmarMesh_MaxNumSubdivisions(mesh, input.take<unsigned>());
        break;
    }
}

inline void changeCamera(Host& host, Input& input) {
    VelmarCamera* const camera = host.cameras.any(input);
    if (camera == nullptr) return;
    using Setter = void (*)(VelmarCamera*, double);
    static constexpr Setter setters[] = {
        VelmarCamera_SetLensRadius,          VelmarCamera_SetExposureDuration,       VelmarCamera_SetLensSensorDistance,
        VelmarCamera_SetLensShiftUpDistance, VelmarCamera_SetLensShiftRightDistance, VelmarCamera_SetSensorWidth,
        VelmarCamera_SetFocusDistance};
    const auto values = input.take<std::array<double, 3>>();
    setters[input.below(std::size(setters))](camera, values[0]);
    switch (input.below(6)) {
    case 0:
        attempt([&] { VelmarCamera_SetPosition(camera, values[0], values[1], values[2]); });
        break;
    case 1:
        VelmarCamera_SetForwards(camera, values[0], values[1], values[2]);
        break;
    case 2:
        VelmarCamera_SetUp(camera, values[0], values[1], values[2]);
        break;
    case 3:
        VelmarCamera_SetFov(camera, values[0], values[1]);
        break;
    case 4:
        VelmarCamera_SetAperature(camera, values[0], values[1]);
        break;
    default:
        VelmarCamera_SetAutofocus(camera, input.take<VelmarBool>());
        break;
    }
}

inline void changeTonemapping(Host& host, Input& input) {
    VelmarTonemapping* const tonemapping = host.tonemappings.any(input);
    if (tonemapping == nullptr) return;
    VelmarTonemapping_SetType(tonemapping, 999 + static_cast<std::int32_t>(input.below(6)));
    VelmarTonemapping_SetScale(tonemapping, input.take<double>());
    VelmarTonemapping_SetPreScale(tonemapping, input.take<double>());
    VelmarTonemapping_SetPostScale(tonemapping, input.take<double>());
    VelmarTonemapping_SetBurn(tonemapping, input.take<double>());
    VelmarTonemapping_SetIso(tonemapping, input.take<double>());
    VelmarTonemapping_EvAdjust(tonemapping, input.take<double>());
    const std::string path = input.text();
    attempt([&] { VelmarTonemapping_SetResponseFunctionPath(tonemapping, path.c_str()); });
}

inline void changeSettings(Host& host, Input& input) {
    VelmarRenderSettings* const settings = host.settings.any(input);
    if (settings == nullptr) return;
    using IntSetter = void (*)(VelmarRenderSettings*, std::int32_t);
    using DoubleSetter = void (*)(VelmarRenderSettings*, double);
    using BoolSetter = void (*)(VelmarRenderSettings*, VelmarBool);
    static constexpr IntSetter int_setters[] = {VelmarRenderSettings_Width, VelmarRenderSettings_Height,
                                                VelmarRenderSettings_SuperSampleFactor};
    static constexpr DoubleSetter double_setters[] = {
        VelmarRenderSettings_HaltTime, VelmarRenderSettings_HaltSamplesPerPixel, VelmarRenderSettings_ImageSavePeriod};
    static constexpr BoolSetter bool_setters[] = {
        VelmarRenderSettings_Metropolis,      VelmarRenderSettings_Bidirectional,
        VelmarRenderSettings_Dithering,       VelmarRenderSettings_Vignetting,
        VelmarRenderSettings_ShadowPass,      VelmarRenderSettings_RenderForegroundAlpha,
        VelmarRenderSettings_InfoOverlay,     VelmarRenderSettings_DepthPass,
        VelmarRenderSettings_MaterialIdTracer};
    int_setters[input.below(std::size(int_setters))](settings, input.take<std::int32_t>());
    double_setters[input.below(std::size(double_setters))](settings, input.take<double>());
    bool_setters[input.below(std::size(bool_setters))](settings, input.take<VelmarBool>());
}

inline void changeModel(Host& host, Input& input) {
    VelmarModel* const model = host.models.any(input);
    if (model == nullptr) return;
    if (input.below(2) == 0) {
        const auto rotation = input.take<std::array<float, 9>>();
        const auto position = input.take<std::array<float, 3>>();
        // Key frames beyond the one that a model is born with are refused by an assertion.
        const auto index = -static_cast<std::int32_t>(input.below(2));
        attempt([&] { VelmarModel_SetTransformation(model, rotation.data(), position.data(), index); });
        return;
    }
    std::vector<VelmarMaterialNode*> materials;
    for (std::size_t count = input.below(4); count > 0; --count)
        materials.push_back(host.material_nodes.anyInScene(input, host.scene, VelmarScene_AddMaterial));
    attempt([&] { VelmarModel_SetMaterials(model, static_cast<std::int32_t>(materials.size()), materials.data()); });
}

inline void giveMaterial(Host& host, Input& input) {
    VelmarMaterialNode* const node = host.material_nodes.any(input);
    VelmarMaterial* const material = host.materials.any(input);
    if (node == nullptr || material == nullptr) return;
    // The node may be given another material later, and this one would then be gone: hold it by a node for good.
    VelmarMaterialNode* const keeper = VelmarMaterial_CreateNode("keeper");
    VelmarMaterial_AddToNode(keeper, material);
    host.give(keeper, VelmarScene_AddMaterial);
    VelmarMaterial_AddToNode(node, material);
    host.materials.markHeld();
}

inline void addToScene(Host& host, Input& input) {
    switch (input.below(5)) {
    case 0:
        if (VelmarMesh* const mesh = host.meshes.any(input)) {
            attempt([&] { VelmarScene_AddMesh(host.scene, mesh); });
            host.meshes.markHeld();
        }
        break;
    case 1:
        if (VelmarTonemapping* const tonemapping = host.tonemappings.any(input)) {
            attempt([&] { VelmarScene_AddTonemapping(host.scene, tonemapping); });
            host.tonemappings.markHeld();
        }
        break;
    case 2:
        if (VelmarRenderSettings* const settings = host.settings.any(input)) {
            attempt([&] { VelmarScene_AddRenderSettings(host.scene, settings); });
            host.settings.markHeld();
        }
        break;
    case 3:
        if (VelmarMaterialNode* const node = host.material_nodes.any(input)) {
            attempt([&] { VelmarScene_AddMaterial(host.scene, node); });
            host.material_nodes.markHeld();
        }
        break;
    default:
        if (VelmarModel* const model = host.models.any(input)) {
            attempt([&] { VelmarScene_AddModel(host.scene, model); });
            host.models.markHeld();
        }
        break;
    }
}

inline void createWhole(Host& host, Input& input) {
    switch (input.below(5)) {
    case 0:
        attempt([&] { velmar_create_default_material(host.scene); });
        break;
    case 1:
        attempt([&] { velmar_create_sunsky(host.scene); });
        break;
    case 2:
        attempt([&] { velmar_create_dummy_lighting(host.scene); });
        break;
    case 3:
        attempt([&] { velmar_create_plane(host.scene); });
        break;
    default: {
        const double z = input.take<double>();
        const double half_size = input.take<double>();
        attempt([&] { VelmarScene_AddGroundPlane(host.scene, z, half_size); });
        break;
    }
    }
}

inline void deleteSomething(Host& host, Input& input) {
    switch (input.below(6)) {
    case 0:
        host.meshes.deleteAny(input);
        break;
    case 1:
        host.tonemappings.deleteAny(input);
        break;
    case 2:
        host.settings.deleteAny(input);
        break;
    case 3:
        host.material_nodes.deleteAny(input);
        break;
    case 4:
        host.materials.deleteAny(input);
        break;
    default:
        host.models.deleteAny(input);
        break;
    }
}

inline void writeScene(Host& host, Input&) {
    if (!writes_files) return;
    const std::string path = workFolder() + "/scene.xml";
    attempt([&] { VelmarScene_WriteToXML(host.scene, path.c_str()); });
}

using Step = void (*)(Host&, Input&);
inline constexpr Step steps[] = {makeSomething,     makeSomething,  changeMesh,      changeMesh,   changeCamera,
                                 changeTonemapping, changeSettings, changeModel,     giveMaterial, addToScene,
                                 addToScene,        createWhole,    deleteSomething, writeScene};
constexpr int max_steps = 200;

/// Takes one step. Failures that are documented are part of it: the host goes on.
inline void take(Step step, Host& host, Input& input) {
    try {
        step(host, input);
    } catch (const Velmar::VelmarException&) {
        // An inconsistent mesh, say.
    } catch (const Velmar::Exception&) {
        // A buffer without memory.
    } catch (const std::bad_alloc&) {
    }
}

} // namespace ExportCalls
