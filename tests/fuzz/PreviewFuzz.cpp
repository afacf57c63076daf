// Scenes of the flat interface, rendered by the preview in a few pixels, and started, paused, changed, stopped and
// deleted at odd moments. Whatever a scene holds, a render ends, and the host goes on.

#include "preview/velmarpreview.h"

#include "api/Handles.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/fuzz/support/ExportCalls.h"
#include "utils/System.h"

#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>

using namespace ExportCalls;

namespace {

/// The renderer library, which hosts load from a folder of the working directory.
class Library {
  public:
    static const Library& get() {
        static const Library library;
        return library;
    }

    decltype(&VelmarPreview_Wait) wait;
    decltype(&VelmarPreview_GetProgress) getProgress;
    decltype(&VelmarPreview_GetPixels) getPixels;
    decltype(&VelmarPreview_GetBytes) getBytes;
    decltype(&VelmarPreview_GetChannel) getChannel;
    decltype(&VelmarPreview_SetOption) setOption;
    decltype(&VelmarPreview_WriteImage) writeImage;
    decltype(&VelmarPreview_SetImagePath) setImagePath;

  private:
    Library() {
        const std::filesystem::path work = workFolder();
        // The build's folder as seen from the drive on which the program was started.
        const std::filesystem::path built =
            std::filesystem::current_path().root_path() / std::filesystem::path(VELMAR_PREVIEW_LIBRARY).relative_path();
        std::filesystem::create_directories(work / "vs2017_64");
        std::filesystem::copy_file(built, work / "vs2017_64" / built.filename());
        std::filesystem::current_path(work);
        std::string error;
        void* const module = Velmar::loadModule((work / "vs2017_64" / built.filename()).string(), error);
        if (module == nullptr) std::abort();
        const auto bind = [module](auto& function, const char* name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(Velmar::findSymbol(module, name));
        };
        bind(wait, "VelmarPreview_Wait");
        bind(getProgress, "VelmarPreview_GetProgress");
        bind(getPixels, "VelmarPreview_GetPixels");
        bind(getBytes, "VelmarPreview_GetBytes");
        bind(getChannel, "VelmarPreview_GetChannel");
        bind(setOption, "VelmarPreview_SetOption");
        bind(writeImage, "VelmarPreview_WriteImage");
        bind(setImagePath, "VelmarPreview_SetImagePath");
    }
};

/// A number that a host may slip into, or one of every day.
double number(Input& input) {
    static constexpr double numbers[] = {0.0,
                                         1.0,
                                         -1.0,
                                         0.5,
                                         2.0,
                                         -3.0,
                                         10.0,
                                         1e-3,
                                         1e-30,
                                         1e-320,
                                         -0.0,
                                         1e6,
                                         1e18,
                                         3e38,
                                         -1e300,
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN()};
    return numbers[input.below(std::size(numbers))];
}

float single(Input& input) {
    return static_cast<float>(number(input));
}

/// A scene and, once it has been handed over, the renderer that owns it.
class Session {
  public:
    Session() { addPlainScene(); }
    ~Session() {
        if (renderer != nullptr) VelmarRenderer_Stop(renderer);
        VelmarScene* const scene = host->scene;
        // What no scene holds. The scene is last.
        host.reset();
        if (renderer != nullptr)
            VelmarRenderer_Delete(renderer);
        else
            VelmarScene_Delete(scene);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// A step of the host's on the scene, which no render may read meanwhile.
    void change(Input& input) {
        static constexpr Step changes[] = {makeSomething, changeMesh, changeCamera, changeTonemapping, changeModel,
                                           giveMaterial,  addToScene, createWhole,  changeSettings,    addMesh,
                                           addMaterial,   placeModel, moveCamera};
        if (renderer != nullptr) VelmarRenderer_Stop(renderer);
        take(changes[input.below(std::size(changes))], *host, input);
    }

    void control(Input& input) {
        if (renderer == nullptr) handOver();
        switch (input.below(12)) {
        case 0:
            VelmarRenderer_Pause(renderer);
            break;
        case 1:
            VelmarRenderer_Resume(renderer);
            break;
        case 2:
            VelmarRenderer_Stop(renderer);
            break;
        case 3:
        case 4:
            reinterpret_cast<std::uint64_t (*)(VelmarRenderer*)>(VelmarRenderer_UpdateScene)(renderer);
            break;
        case 5:
            library.setOption(renderer, static_cast<std::int32_t>(input.below(3)), number(input));
            break;
        case 6:
            readPicture(input);
            break;
        case 7: {
            static constexpr const char* paths[] = {"a.png", "a.hdr", "a.pfm", "", "vs2017_64", "no folder/a.png"};
            const char* const path = paths[input.below(std::size(paths))];
            if (input.below(2) == 0)
                library.writeImage(renderer, path);
            else
                library.setImagePath(renderer, path);
            break;
        }
        default:
            VelmarRenderer_Start(renderer);
            if (input.below(4) != 0) library.wait(renderer, 0.05);
        }
    }

  private:
    /// What is needed for a picture with light and shadow, to begin with.
    void addPlainScene() {
        // Not by the export, each of whose calls leaves a node for the life of the process.
        auto* const settings = Velmar::toHandle<VelmarRenderSettings>(new Velmar::SceneNodeRenderSettings);
        VelmarRenderSettings_Width(settings, 16);
        VelmarRenderSettings_Height(settings, 16);
        VelmarRenderSettings_SuperSampleFactor(settings, 1);
        VelmarRenderSettings_HaltSamplesPerPixel(settings, 1);
        VelmarScene_AddRenderSettings(host->scene, settings);
        host->settings.addHeld(settings);
        VelmarCamera* const camera = VelmarCamera_Create();
        VelmarCamera_SetPosition(camera, 0, -4, 1);
        VelmarScene_AddCamera(host->scene, camera);
        host->cameras.add(camera);
        velmar_create_sunsky(host->scene);
        velmar_create_plane(host->scene);
    }

    void handOver() {
        VelmarContext* const context = VelmarContext_Create();
        VelmarContext_Initialize(context);
        renderer = VelmarRenderer_Create(context);
        VelmarRenderer_InitializeWithScene(renderer, context, host->scene);
        library.setOption(renderer, VELMAR_PREVIEW_THREADS, 2);
        library.setImagePath(renderer, "");
    }

    void readPicture(Input& input) const {
        VelmarPreviewProgress progress{};
        library.getProgress(renderer, &progress);
        const std::size_t pixels = std::size_t{progress.width} * progress.height;
        static constexpr const char* channels[] = {"alpha", "normals", "depth", "material_id", "direct_lighting", ""};
        std::vector<float> floats(3 * pixels);
        std::vector<std::uint8_t> bytes(3 * pixels);
        library.getPixels(renderer, floats.data(), floats.size());
        library.getBytes(renderer, bytes.data(), bytes.size());
        const char* const channel = channels[input.below(std::size(channels))];
        if (library.getChannel(renderer, channel, floats.data(), pixels) != 0)
            library.getChannel(renderer, channel, floats.data(), floats.size());
    }

    static void changeSettings(Host& host, Input& input) {
        VelmarRenderSettings* const settings = host.settings.any(input);
        if (settings == nullptr) return;
        // Products that need little memory.
        static constexpr std::int32_t widths[] = {16, 1, 0, -1, 7, 160, 100000};
        static constexpr std::int32_t heights[] = {16, 1, 0, -1, 5, 160};
        static constexpr std::int32_t factors[] = {1, 2, 0, 3};
        VelmarRenderSettings_Width(settings, widths[input.below(std::size(widths))]);
        VelmarRenderSettings_Height(settings, heights[input.below(std::size(heights))]);
        VelmarRenderSettings_SuperSampleFactor(settings, factors[input.below(std::size(factors))]);
        VelmarRenderSettings_HaltSamplesPerPixel(settings, number(input));
        VelmarRenderSettings_HaltTime(settings, number(input));
        VelmarRenderSettings_ImageSavePeriod(settings, number(input));
        VelmarRenderSettings_Vignetting(settings, input.below(2) == 0);
        VelmarRenderSettings_RenderForegroundAlpha(settings, input.below(2) == 0);
        VelmarRenderSettings_DepthPass(settings, input.below(2) == 0);
        VelmarRenderSettings_MaterialIdTracer(settings, input.below(2) == 0);
        VelmarRenderSettings_ShadowPass(settings, input.below(2) == 0);
    }

    /// A model of a few vertices and faces, some of which may not be there.
    static void addMesh(Host& host, Input& input) {
        constexpr std::size_t vertex_count = 6;
        VelmarMesh* const mesh = VelmarMesh_Create("mesh");
        VelmarScene_AddMesh(host.scene, mesh);
        host.meshes.addHeld(mesh);
        VelmarModel* const model = VelmarModel_Create("model", mesh);
        VelmarScene_AddModel(host.scene, model);
        host.models.addHeld(model);
        std::array<float, 3 * vertex_count> xyz{};
        for (float& value : xyz)
            value = single(input);
        VelmarMesh_AddVertices(mesh, vertex_count, xyz.data());
        VelmarMesh_AddTextureCoordinates(mesh, static_cast<std::int32_t>(input.below(4)), xyz.data());
        for (std::size_t faces = input.below(5); faces > 0; --faces) {
            std::array<std::uint32_t, 10> words{static_cast<std::uint32_t>(input.below(2))};
            for (std::size_t i = 1; i < words.size(); ++i)
                words[i] = static_cast<std::uint32_t>(input.below(vertex_count + 1));
            VelmarMesh_AddFaces(mesh, 1, words.data());
        }
        VelmarMesh_NormalSmoothing(mesh, input.below(2) == 0);
        VelmarMesh_Build(mesh);
    }

    static void addMaterial(Host& host, Input& input) {
        VelmarMaterialNode* const node = VelmarMaterial_CreateNode("node");
        VelmarMaterial_AddToNode(node,
                                 VelmarMaterial_CreateDiffuse("material", number(input), number(input), number(input)));
        VelmarScene_AddMaterial(host.scene, node);
        host.material_nodes.addHeld(node);
    }

    static void placeModel(Host& host, Input& input) {
        VelmarModel* const model = host.models.any(input);
        if (model == nullptr) return;
        std::array<float, 9> rotation{};
        for (float& value : rotation)
            value = single(input);
        const std::array<float, 3> position = {single(input), single(input), single(input)};
        VelmarModel_SetTransformation(model, rotation.data(), position.data(), 0);
    }

    static void moveCamera(Host& host, Input& input) {
        VelmarCamera* const camera = host.cameras.any(input);
        if (camera == nullptr) return;
        VelmarCamera_SetPosition(camera, number(input), number(input), number(input));
        VelmarCamera_SetForwards(camera, number(input), number(input), number(input));
        VelmarCamera_SetFocusDistance(camera, number(input));
        VelmarCamera_SetLensRadius(camera, number(input));
        VelmarCamera_SetSensorWidth(camera, number(input));
    }

    const Library& library = Library::get();
    std::unique_ptr<Host> host = std::make_unique<Host>();
    VelmarRenderer* renderer = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Library::get();
    failing_allocation = 0;
    // Two renderers in one process.
    std::unique_ptr<Session> sessions[2];
    Input input(data, size);
    constexpr int max_steps_of_render = 60;
    for (int i = 0; i < max_steps_of_render && !input.empty(); ++i) {
        const auto byte = input.take<std::uint8_t>();
        std::unique_ptr<Session>& session = sessions[byte >> 7];
        if (session == nullptr) session = std::make_unique<Session>();
        switch (byte % 16) {
        case 15:
            session.reset();
            break;
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
            session->control(input);
            break;
        default:
            session->change(input);
        }
    }
    return 0;
}
