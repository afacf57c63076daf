#include "import/MeshImport.h"
#include "preview/velmarpreview.h"

#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentFiles.h"
#include "tools/ModelScene.h"
#include "tools/OutputFile.h"
#include "tools/Preview.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr double default_samples = 64;

struct RenderOptions {
    std::vector<std::string> paths;
    ModelOptions models;
    PreviewSettings preview;
    bool quiet = false;
};

/// Renders the scene, which it takes, into the file.
VelmarPreviewProgress renderInto(OutputFile& output, VelmarScene* scene, const RenderOptions& options,
                                 Progress& progress, const std::string& step) {
    progress.show(step);
    const VelmarPreviewProgress last =
        renderPicture(scene, options.preview, output, options.paths.back(),
                      [&](const VelmarPreviewProgress& now) { progress.show(step + ": " + describeProgress(now)); });
    progress.clear();
    output.commit();
    return last;
}

void printSummary(const std::string& image, const VelmarPreviewProgress& last) {
    std::printf("%s: %u x %u pixels, %.0f samples each, %.1f s\n", Text::printable(image).c_str(), last.width,
                last.height, last.samples, last.seconds);
}

[[noreturn]] void refuseEndless() {
    throw UsageError("a picture without an end: --samples or --time must be above 0");
}

void renderModels(const CLI::App& app, const RenderOptions& options) {
    if (options.models.scene.halt_samples <= 0 && options.models.scene.halt_time <= 0) refuseEndless();
    const std::string& image = options.paths.back();
    const SceneSettings settings = getSceneSettings(app, options.models);
    const std::vector<ModelRequest> requests = findModels(app, options.paths, options.models);

    Progress progress(options.quiet);
    OutputFile output(image, '.' + Velmar::getMeshFormat(image));
    std::vector<std::string> notes = findIdleOptions(app, options.models, requests);
    const ModelScene models = readModels(requests, progress, options.quiet);
    SceneBuilder scene(models.content, settings);
    if (scene.isGroundLeftOut()) notes.emplace_back(ground_left_out);
    const std::string step = stepText(requests.size() + 1, requests.size() + 1) + "rendering " + Text::fileName(image);
    const VelmarPreviewProgress last = renderInto(output, scene.release(), options, progress, step);
    if (options.quiet) return;
    for (const std::string& note : notes)
        printNote(note);
    for (const std::string& line : models.lines)
        std::printf("%s\n", Text::printable(line).c_str());
    printSummary(image, last);
}

// ---- documents -----------------------------------------------------------------------------------------------------

bool isDocument(const std::string& path) {
    return Velmar::getMeshFormat(path) == "xml";
}

/// A document is a whole scene: options that would make one have no place.
void refuseModelOptions(const CLI::App& app, const RenderOptions& options) {
    if (options.paths.size() != 2)
        throw UsageError("a scene document is rendered alone: one document, and then the picture");
    const std::vector<std::string> allowed = {"--width",   "--height", "--samples", "--time",
                                              "--threads", "--seed",   "--quiet"};
    for (const CLI::Option* const option : app.parse_order()) {
        const std::string name = option->get_name();
        if (!option->get_positional() && std::find(allowed.begin(), allowed.end(), name) == allowed.end())
            throw UsageError(name + " is for models; a scene document has its own camera, light and models");
    }
}

/// The settings of the scene, made if there are none.
Velmar::SceneNodeRenderSettings& getSettings(Velmar::SceneNodeRoot& scene) {
    if (scene.getRenderSettingsNode() == nullptr) scene.addChildNode(new Velmar::SceneNodeRenderSettings);
    return static_cast<Velmar::SceneNodeRenderSettings&>(*scene.getRenderSettingsNode());
}

/// What the command line says counts, else what the document says.
void overrideSettings(const CLI::App& app, const SceneSettings& given, Velmar::SceneNodeRenderSettings& settings) {
    if (app.count("--width") != 0) settings.width.set(given.width);
    if (app.count("--height") != 0) settings.height.set(given.height);
    if (app.count("--samples") != 0) settings.halt_samples_per_pixel.set(given.halt_samples);
    if (app.count("--time") != 0) settings.halt_time.set(given.halt_time);
    const auto isLimit = [](const Velmar::Optional<double>& limit) { return limit.has_value && limit.value > 0; };
    if (isLimit(settings.halt_samples_per_pixel) || isLimit(settings.halt_time)) return;
    if (app.count("--samples") != 0) refuseEndless();
    settings.halt_samples_per_pixel.set(default_samples);
}

void renderDocument(const CLI::App& app, const RenderOptions& options) {
    refuseModelOptions(app, options);
    const std::string& path = options.paths.front();
    const std::string& image = options.paths.back();

    Progress progress(options.quiet);
    OutputFile output(image, '.' + Velmar::getMeshFormat(image));
    progress.show(stepText(1, 3) + "reading " + Text::fileName(path));
    Velmar::Reference<Velmar::SceneNodeRoot> scene = readDocument(path);
    const auto count = [&](Velmar::NodeType type) {
        return std::ranges::count_if(scene->children(), [&](const auto& node) { return node->getType() == type; });
    };
    if (count(Velmar::NodeType::Camera) == 0) throw Failure(path + ": the scene has no camera");
    overrideSettings(app, options.models.scene, getSettings(*scene));
    progress.show(stepText(2, 3) + "reading its files");
    loadDocumentFiles(*scene, path);
    const auto models = static_cast<std::uint64_t>(count(Velmar::NodeType::Object));
    const auto meshes = static_cast<std::uint64_t>(count(Velmar::NodeType::Mesh));
    const std::string step = stepText(3, 3) + "rendering " + Text::fileName(image);
    const VelmarPreviewProgress last = renderInto(output, releaseScene(scene), options, progress, step);
    if (options.quiet) return;
    std::printf("%s: %s, %s\n", Text::printable(path).c_str(), Text::count(models, "model", "models").c_str(),
                Text::count(meshes, "mesh", "meshes").c_str());
    printSummary(image, last);
}

void render(const CLI::App& app, const RenderOptions& options) {
    const std::string& image = options.paths.back();
    const std::string kind = Velmar::getMeshFormat(image);
    if (kind != "png" && kind != "hdr" && kind != "pfm")
        throw UsageError(image + ": the picture must end in .png, .hdr or .pfm");
    if (std::any_of(options.paths.begin(), options.paths.end(), isDocument))
        renderDocument(app, options);
    else
        renderModels(app, options);
}

} // namespace

Command addRenderCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("render", "Makes a picture of mesh files or of a scene document.");
    const auto options = std::make_shared<RenderOptions>();
    options->models.scene.halt_samples = default_samples;
    options->models.scene.super_sample_factor = 2;
    addModelPaths(
        *app, options->paths, "MODEL... IMAGE",
        "Mesh files (.obj, .ply, .stl, .vmmesh) or whole scenes (.glb, .gltf, .fbx, .dae, .3ds and others), or one "
        "scene document (.xml); then the picture: .png for a display, .hdr and .pfm with linear light. An existing "
        "file is replaced.");
    addModelOptions(*app, options->models);
    app->option_defaults()->group("Options");
    constexpr double max_threads = 256;
    constexpr double max_seed = 4294967295;
    CommandOptions::addValue(*app, "--threads", options->preview.threads, "N", "Threads; 0 for one per processor.")
        ->check(CommandOptions::inRange(0, max_threads));
    CommandOptions::addValue(*app, "--seed", options->preview.seed, "N",
                             "Of the random numbers. Equal seeds give equal pictures.")
        ->check(CommandOptions::inRange(0, max_seed));
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary, notes or progress");
    app->footer("The scene is that of 'velmar export' with the same options, or that of the document. Of a document, "
                "--width, --height, --samples and --time replace what it says, and other options of models, camera, "
                "light and image are refused. The renderer library in the folder vs2017_64 beside this program draws "
                "it. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [app, options] { render(*app, *options); }};
}
