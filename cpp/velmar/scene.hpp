#pragma once

/// Scenes and renderers.

#include "nodes.hpp"

#include <optional>

namespace velmar {

namespace detail {

/// The VelmarKitNodeKind of a class of nodes, and its handle type.
template <class Kind>
struct KindOf;
template <>
struct KindOf<Mesh> {
    using Handle = VelmarMesh;
    static constexpr std::int32_t kind = VELMARKIT_NODE_MESH;
};
template <>
struct KindOf<Model> {
    using Handle = VelmarModel;
    static constexpr std::int32_t kind = VELMARKIT_NODE_MODEL;
};
template <>
struct KindOf<Material> {
    using Handle = VelmarMaterialNode;
    static constexpr std::int32_t kind = VELMARKIT_NODE_MATERIAL;
};
template <>
struct KindOf<Background> {
    using Handle = VelmarBackground;
    static constexpr std::int32_t kind = VELMARKIT_NODE_BACKGROUND;
};
template <>
struct KindOf<Camera> {
    using Handle = VelmarCamera;
    static constexpr std::int32_t kind = VELMARKIT_NODE_CAMERA;
};
template <>
struct KindOf<RenderSettings> {
    using Handle = VelmarRenderSettings;
    static constexpr std::int32_t kind = VELMARKIT_NODE_RENDER_SETTINGS;
};
template <>
struct KindOf<Tonemapping> {
    using Handle = VelmarTonemapping;
    static constexpr std::int32_t kind = VELMARKIT_NODE_TONEMAPPING;
};

} // namespace detail

/// A scene, which holds the nodes that are added to it.
///
///     velmar::Scene scene;
///     scene.add(velmar::RenderSettings(800, 600));
///     velmar::Camera camera = scene.add(velmar::Camera());
///     scene.write("scene.xml");
class Scene : public Node<VelmarScene> {
  public:
    Scene() : Node(created(VelmarKit_Scene_Create)) {}

    /// Reads a document, and the mesh files that it names. Throws DocumentError with line and column for what is wrong
    /// in it.
    static Scene read(const std::string& path) { return Scene(created(VelmarKit_Scene_Read, detail::textOf(path))); }

    /// The nodes of a class, as `nodes<Camera>()`, in the order of adding.
    template <class Kind>
    std::vector<Kind> nodes() const {
        return detail::allocating([&] {
            std::vector<Kind> found;
            const std::uint64_t count = nodeCount();
            for (std::uint64_t i = 0; i < count; ++i)
                if (const auto handle = nodeAt<Kind>(i)) found.push_back(Kind(handle));
            return found;
        });
    }
    /// The first node of a class with this name, as `find<Camera>("Camera")`; none if there is none.
    template <class Kind>
    std::optional<Kind> find(const std::string& name) const {
        const std::uint64_t count = nodeCount();
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto handle = nodeAt<Kind>(i);
            if (handle == nullptr) continue;
            if (Kind node(handle); node.name() == name) return node;
        }
        return std::nullopt;
    }

    // Each appends a node and returns it. It may be changed later.
    Mesh add(Mesh node) { return added(VelmarKit_Scene_AddMesh, std::move(node)); }
    Model add(Model node) { return added(VelmarKit_Scene_AddModel, std::move(node)); }
    Material add(Material node) { return added(VelmarKit_Scene_AddMaterial, std::move(node)); }
    Background add(Background node) { return added(VelmarKit_Scene_AddBackground, std::move(node)); }
    Camera add(Camera node) { return added(VelmarKit_Scene_AddCamera, std::move(node)); }
    RenderSettings add(RenderSettings node) { return added(VelmarKit_Scene_AddRenderSettings, std::move(node)); }
    Tonemapping add(Tonemapping node) { return added(VelmarKit_Scene_AddTonemapping, std::move(node)); }

    /// Takes a node out. Models that use it keep it.
    template <class Handle>
    void remove(const Node<Handle>& node) {
        call(VelmarKit_Scene_RemoveNode, static_cast<void*>(node.handle()));
    }

    /// Loads a mesh file and adds its mesh, a material for each that the faces use, and a model of them, which is
    /// returned. After a failure, the scene is as before.
    /// @param scale multiplies the positions, except those of vmmesh files.
    Model loadModel(const std::string& path, float scale = 1) {
        VelmarModel* model = nullptr;
        call(VelmarKit_Scene_LoadModel, detail::textOf(path), scale, &model);
        return Model(model);
    }

    /// Adds a light grey square of ground: a mesh, a material and a model.
    /// @param half_size half the length of its sides, in metres.
    void addGroundPlane(double z = 0, double half_size = 50) { call(VelmarKit_Scene_AddGroundPlane, z, half_size); }
    /// Adds a light grey material named "Default".
    void addDefaultMaterial() { call(VelmarKit_create_default_material); }
    /// Adds a background of sun and sky, with the sun in the direction (1, 1, 1).
    void addSunSky() { call(VelmarKit_create_sunsky); }

    std::uint64_t nodeCount() const { return get(VelmarKit_Scene_GetNodeCount); }

    /// Writes the scene as an XML document, and its meshes as files in a folder next to it. After a failure, a document
    /// that was there is as before.
    void write(const std::string& path) { call(VelmarKit_Scene_WriteToXML, detail::textOf(path)); }

  private:
    using Node::Node;

    /// Null for a node of another class.
    template <class Kind>
    typename detail::KindOf<Kind>::Handle* nodeAt(std::uint64_t index) const {
        void* node = nullptr;
        std::int32_t kind = 0;
        call(VelmarKit_Scene_GetNode, index, &node, &kind);
        return kind == detail::KindOf<Kind>::kind ? static_cast<typename detail::KindOf<Kind>::Handle*>(node) : nullptr;
    }

    template <class Kind, class Handle>
    Kind added(std::int32_t (*function)(VelmarScene*, Handle*), Kind node) {
        call(function, node.handle());
        return node;
    }
};

/// A render of a scene by the renderer library in the folder "vs2017_64" of the working directory, or by one that is
/// installed; docs/renderer-seam.md has the order. It holds the scene.
class Renderer {
  public:
    /// Throws RendererError if there is no renderer library, or if it fails.
    explicit Renderer(const Scene& scene) {
        Context context;
        detail::check(VelmarKit_Context_Initialize(context.handle, nullptr));
        detail::check(VelmarKit_Renderer_Create(context.handle, &renderer));
        VelmarContext* const owned = std::exchange(context.handle, nullptr);
        const std::int32_t status = VelmarKit_Renderer_InitializeWithScene(renderer, owned, scene.handle());
        if (status == VELMARKIT_SUCCESS) return;
        VelmarKit_Renderer_Delete(std::exchange(renderer, nullptr));
        detail::throwStatus(status);
    }
    ~Renderer() { close(); }
    Renderer(Renderer&& other) noexcept
        : renderer(std::exchange(other.renderer, nullptr)), is_running(std::exchange(other.is_running, false)) {}
    Renderer& operator=(Renderer&& other) noexcept {
        std::swap(renderer, other.renderer);
        std::swap(is_running, other.is_running);
        return *this;
    }

    /// Starts the render, which runs on threads of the renderer library.
    void start() {
        call(VelmarKit_Renderer_Start);
        is_running = true;
    }
    void pause() { call(VelmarKit_Renderer_Pause); }
    void resume() { call(VelmarKit_Renderer_Resume); }
    void stop() {
        call(VelmarKit_Renderer_Stop);
        is_running = false;
    }

    bool isClosed() const noexcept { return renderer == nullptr; }
    /// Stops the render and unloads the renderer library. Closing twice is harmless.
    void close() noexcept {
        if (isClosed()) return;
        if (std::exchange(is_running, false)) VelmarKit_Renderer_Stop(renderer, nullptr);
        VelmarKit_Renderer_Delete(std::exchange(renderer, nullptr));
    }

    /// For the functions of velmarkit.h. This object still owns it.
    VelmarRenderer* handle() const {
        if (isClosed()) throw ClosedError("the renderer was closed or moved from");
        return renderer;
    }

  private:
    struct Context {
        Context() { detail::check(VelmarKit_Context_Create(&handle)); }
        ~Context() {
            if (handle != nullptr) VelmarKit_Context_Delete(handle);
        }
        Context(const Context&) = delete;
        Context& operator=(const Context&) = delete;
        VelmarContext* handle = nullptr;
    };

    void call(std::int32_t (*function)(VelmarRenderer*, std::uint64_t*)) const {
        detail::check(function(handle(), nullptr));
    }

    VelmarRenderer* renderer = nullptr;
    bool is_running = false;
};

} // namespace velmar
