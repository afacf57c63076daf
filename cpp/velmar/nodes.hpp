#pragma once

/// The nodes of a scene other than meshes.

#include "mesh.hpp"

#include <algorithm>
#include <initializer_list>

namespace velmar {

/// A thin lens in front of a sensor. Lengths are in metres.
class Camera : public CameraSettings {
  public:
    Camera() : CameraSettings(created(VelmarKit_Camera_Create)) {}

    /// Turns the camera from its position towards a target, with `up` upwards in the image.
    void lookAt(const Vec3& target, const Vec3& up = {0, 0, 1}) {
        call(VelmarKit_Camera_LookAt, target[0], target[1], target[2], up[0], up[1], up[2]);
    }

    /// Sets the horizontal field of view, in radians: keeps the sensor's width and moves the lens.
    void setFieldOfView(double radians) { call(VelmarKit_Camera_SetFieldOfView, radians); }
    double fieldOfView() const { return get(VelmarKit_Camera_GetFieldOfView); }

  private:
    friend class Scene;
    explicit Camera(VelmarCamera* node) : CameraSettings(node) {}
};

/// What is rendered, and for how long. The renderer uses its own default for what isn't set.
class RenderSettings : public RenderSettingsSettings {
  public:
    RenderSettings() : RenderSettingsSettings(created(VelmarKit_RenderSettings_Create)) {}
    RenderSettings(std::int32_t width, std::int32_t height) : RenderSettings() {
        setWidth(width);
        setHeight(height);
    }

    /// Whether an option is set.
    /// @param element the name of its element in a document, as "halt_time".
    bool isSet(const std::string& element) const {
        VelmarBool value = 0;
        call(VelmarKit_RenderSettings_IsSet, detail::textOf(element), &value);
        return value != 0;
    }

  private:
    friend class Scene;
    explicit RenderSettings(VelmarRenderSettings* node) : RenderSettingsSettings(node) {}
};

/// How linear light becomes an image. The document contains the settings of the active kind only.
class Tonemapping : public TonemappingSettings {
  public:
    Tonemapping() : TonemappingSettings(created(VelmarKit_Tonemapping_Create)) {}
    explicit Tonemapping(TonemappingKind kind) : Tonemapping() { setKind(kind); }

  private:
    friend class Scene;
    explicit Tonemapping(VelmarTonemapping* node) : TonemappingSettings(node) {}
};

/// The light from around the scene.
class Background : public Node<VelmarBackground> {
  public:
    /// Even light from all directions, of a colour with gamma 2.2.
    static Background uniform(const Vec3& colour, double strength = 1) {
        return Background(created(VelmarKit_Background_CreateUniform, colour[0], colour[1], colour[2], strength));
    }
    /// Sun and sky. The direction towards the sun has z up and length 1; it isn't normalised.
    static Background sunSky(const Vec3& direction, const std::string& model = "captured-simulation") {
        return Background(created(VelmarKit_Background_CreateSunSky, direction[0], direction[1], direction[2],
                                  detail::textOf(model)));
    }

    /// The colour and the strength that uniform light was made with. Throws BadArgumentError for sun and sky.
    Vec3 colour() const {
        Vec3 value{};
        call(VelmarKit_Background_GetUniform, &value[0], &value[1], &value[2], nullptr);
        return value;
    }
    double strength() const {
        double value = 0;
        call(VelmarKit_Background_GetUniform, nullptr, nullptr, nullptr, &value);
        return value;
    }
    /// The direction and the model that sun and sky were made with. Throws BadArgumentError for uniform light.
    Vec3 direction() const {
        Vec3 value{};
        call(VelmarKit_Background_GetSunSky, &value[0], &value[1], &value[2], nullptr, nullptr);
        return value;
    }
    std::string model() const {
        const char* bytes = nullptr;
        std::uint64_t size = 0;
        call(VelmarKit_Background_GetSunSky, nullptr, nullptr, nullptr, &bytes, &size);
        return detail::textOf(bytes, size);
    }

  private:
    friend class Scene;
    using Node::Node;
};

/// A diffuse material: its colour is the reflected part of red, green and blue, 0 to 1, with gamma 2.2.
class Material : public Node<VelmarMaterialNode> {
  public:
    explicit Material(const std::string& name, const Vec3& colour = {0.8, 0.8, 0.8})
        : Node(created(VelmarKit_Material_CreateNode, detail::textOf(name))) {
        setColour(name, colour);
    }
    Vec3 colour() const { return get(VelmarKit_Material_GetColour); }
    /// Replaces the colour.
    void setColour(const Vec3& colour) { setColour(name(), colour); }

  private:
    friend class Model;
    friend class Scene;
    using Node::Node;

    void setColour(const std::string& name, const Vec3& colour) {
        VelmarMaterial* material = nullptr;
        detail::check(
            VelmarKit_Material_CreateDiffuse(detail::textOf(name), colour[0], colour[1], colour[2], &material));
        const std::int32_t status = VelmarKit_Material_AddToNode(handle(), material);
        if (status == VELMARKIT_SUCCESS) return;
        VelmarKit_Material_Delete(material);
        detail::throwStatus(status);
    }
};

/// A mesh at a position, with its materials. The scene needs the mesh and the materials too.
class Model : public Node<VelmarModel> {
  public:
    Model(const std::string& name, const Mesh& mesh, std::span<const Material> materials = {})
        : Node(created(VelmarKit_Model_Create, detail::textOf(name), mesh.handle())) {
        if (!materials.empty()) setMaterials(materials);
    }
    Model(const std::string& name, const Mesh& mesh, std::initializer_list<Material> materials)
        : Model(name, mesh, std::span(materials.begin(), materials.size())) {}

    /// Sets the materials: entry i is for the faces with material index i. The library reports their number as a line.
    void setMaterials(std::span<const Material> materials) {
        std::vector<VelmarMaterialNode*> handles;
        detail::allocating([&] {
            for (const Material& material : materials)
                handles.push_back(material.handle());
        });
        call(VelmarKit_Model_SetMaterials, detail::countOf(handles.size()), handles.data());
    }

    /// Sets the position, in metres, and the rotation.
    void place(const Vec3& position, const Mat3& rotation = {1, 0, 0, 0, 1, 0, 0, 0, 1}) {
        std::array<float, 9> matrix = {};
        std::array<float, 3> place = {};
        const auto narrow = [](double x) { return static_cast<float>(x); };
        std::transform(rotation.begin(), rotation.end(), matrix.begin(), narrow);
        std::transform(position.begin(), position.end(), place.begin(), narrow);
        call(VelmarKit_Model_SetTransformation, matrix.data(), place.data(), 0);
    }
    Vec3 position() const {
        Vec3 value{};
        call(VelmarKit_Model_GetTransformation, nullptr, value.data(), 0);
        return value;
    }
    Mat3 rotation() const {
        Mat3 value{};
        call(VelmarKit_Model_GetTransformation, value.data(), nullptr, 0);
        return value;
    }

    Mesh mesh() const {
        VelmarMesh* mesh = nullptr;
        call(VelmarKit_Model_GetGeometry, &mesh, nullptr);
        return Mesh(mesh);
    }
    std::vector<Material> materials() const {
        std::uint64_t count = 0;
        call(VelmarKit_Model_GetGeometry, nullptr, &count);
        return detail::allocating([&] {
            std::vector<Material> result;
            for (std::uint64_t i = 0; i < count; ++i) {
                VelmarMaterialNode* material = nullptr;
                call(VelmarKit_Model_GetMaterial, i, &material);
                result.push_back(Material(material));
            }
            return result;
        });
    }

  private:
    friend class Scene;
    using Node::Node;
};

} // namespace velmar
