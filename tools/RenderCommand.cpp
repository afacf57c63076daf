#include "import/MeshImport.h"
#include "preview/velmarpreview.h"

#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/ModelScene.h"
#include "tools/OutputFile.h"
#include "tools/Preview.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct RenderOptions {
    std::vector<std::string> paths;
    ModelOptions models;
    PreviewSettings preview;
    bool quiet = false;
};

/// "12 of 64 samples, 5 s left"
std::string describe(const VelmarPreviewProgress& progress) {
    char text[128];
    if (progress.state == VELMAR_PREVIEW_PREPARING) return "preparing";
    // What is left by the limit that ends the render first.
    double left = -1;
    if (progress.halt_samples > 0 && progress.samples > 0)
        left = progress.seconds * (progress.halt_samples / progress.samples - 1);
    if (progress.halt_seconds > 0 && (left < 0 || progress.halt_seconds - progress.seconds < left))
        left = progress.halt_seconds - progress.seconds;
    if (progress.halt_samples > 0)
        std::snprintf(text, sizeof text, "%.0f of %.0f samples", progress.samples, progress.halt_samples);
    else
        std::snprintf(text, sizeof text, "%.0f samples", progress.samples);
    std::string result = text;
    if (left >= 0) {
        std::snprintf(text, sizeof text, ", %.0f s left", std::ceil(left));
        result += text;
    }
    return result;
}

void render(const CLI::App& app, const RenderOptions& options) {
    const std::string image = options.paths.back();
    const std::string kind = Velmar::getMeshFormat(image);
    if (kind != "png" && kind != "hdr" && kind != "pfm")
        throw UsageError(image + ": the picture must end in .png, .hdr or .pfm");
    if (options.models.scene.halt_samples <= 0 && options.models.scene.halt_time <= 0)
        throw UsageError("a picture without an end: --samples or --time must be above 0");

    const SceneSettings settings = getSceneSettings(app, options.models);
    const std::vector<ModelRequest> requests = findModels(app, options.paths, options.models);

    Progress progress(options.quiet);
    OutputFile output(image, '.' + kind);
    std::vector<std::string> notes = findIdleOptions(app, options.models, requests);
    const ModelScene models = readModels(requests, progress, options.quiet);
    SceneBuilder scene(models.content, settings);
    if (scene.isGroundLeftOut()) notes.emplace_back(ground_left_out);
    const std::string step = stepText(requests.size() + 1, requests.size() + 1) + "rendering " + Text::fileName(image);
    progress.show(step);
    VelmarPreviewProgress last{};
    bool is_written = false;
    {
        Preview preview(scene.release(), options.preview);
        preview.render([&](const VelmarPreviewProgress& now) { progress.show(step + ": " + describe(now)); });
        last = preview.getProgress();
        // Written here, not by the threads that render: an interrupt would miss a file that they are about to make.
        const Interrupts::Deferral deferral;
        is_written = last.state == VELMAR_PREVIEW_FINISHED && preview.writeImage(output.getPartialPath());
    }
    progress.clear();
    if (!is_written) throw Failure(image + ": the picture wasn't rendered");
    output.commit();
    if (options.quiet) return;
    for (const std::string& note : notes)
        printNote(note);
    for (const std::string& line : models.lines)
        std::printf("%s\n", Text::printable(line).c_str());
    std::printf("%s: %u x %u pixels, %.0f samples each, %.1f s\n", Text::printable(image).c_str(), last.width,
                last.height, last.samples, last.seconds);
}

} // namespace

Command addRenderCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("render", "Makes a picture of mesh files.");
    const auto options = std::make_shared<RenderOptions>();
    constexpr double default_samples = 64;
    options->models.scene.halt_samples = default_samples;
    options->models.scene.super_sample_factor = 2;
    addModelPaths(
        *app, options->paths, "MODEL... IMAGE",
        "Mesh files (.obj, .ply, .stl, .vmmesh) or whole scenes (.glb, .gltf, .fbx, .dae, .3ds and others), "
        "then the picture: .png for a display, .hdr and .pfm with linear light. An existing file is replaced.");
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
    app->footer("The scene is that of 'velmar export' with the same options. The renderer library in the folder "
                "vs2017_64 beside this program draws it. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [app, options] { render(*app, *options); }};
}
