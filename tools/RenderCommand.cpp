#include "preview/velmarpreview.h"

#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/ModelScene.h"
#include "tools/Preview.h"
#include "tools/System.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct RenderOptions {
    std::vector<std::string> paths;
    ModelSceneOptions models;
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

void render(RenderOptions options) {
    const std::string image = options.paths.back();
    options.paths.pop_back();
    const std::string kind = Velmar::getMeshFormat(image);
    if (kind != "png" && kind != "hdr" && kind != "pfm")
        throw UsageError(image + ": the picture must end in .png, .hdr or .pfm");
    if (options.models.scene.halt_samples <= 0 && options.models.scene.halt_time <= 0)
        throw UsageError("a picture without an end: --samples or --time must be above 0");

    Progress progress(options.quiet);
    // Before any long work.
    { const OutputFile probe(image); }
    std::vector<std::string> descriptions;
    const std::vector<InputModel> models = readModels(options.paths, options.models, progress, descriptions);
    const std::string step = stepText(models.size() + 1, models.size() + 1) + "rendering " + Text::fileName(image);
    progress.show(step);
    SceneBuilder scene(models, options.models.getScene());
    options.preview.image = System::getAbsolutePath(image);
    VelmarPreviewProgress last{};
    {
        Preview preview(scene.release(), options.preview);
        preview.render([&](const VelmarPreviewProgress& now) { progress.show(step + ": " + describe(now)); });
        last = preview.getProgress();
    }
    progress.clear();
    if (last.state != VELMAR_PREVIEW_FINISHED || last.pictures == 0)
        throw Failure(image + ": the picture wasn't rendered");
    if (options.quiet) return;
    for (const std::string& model : descriptions)
        std::printf("%s\n", model.c_str());
    std::printf("%s: %u x %u pixels, %.0f samples each, %.1f s\n", image.c_str(), last.width, last.height, last.samples,
                last.seconds);
}

} // namespace

Command addRenderCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("render", "Makes a picture of mesh files.");
    const auto options = std::make_shared<RenderOptions>();
    constexpr double default_samples = 64;
    options->models.scene.halt_samples = default_samples;
    options->models.scene.super_sample_factor = 2;
    app->add_option("MODEL... IMAGE", options->paths,
                    "Mesh files (.obj, .ply, .stl, .vmmesh), then the picture: .png for a display, .hdr and .pfm with "
                    "linear light. An existing file is overwritten.")
        ->required()
        ->expected(2, CLI::detail::expected_max_vector_size);
    addModelSceneOptions(*app, options->models);
    app->option_defaults()->group("Options");
    constexpr double max_threads = 256;
    constexpr double max_seed = 4294967295;
    CommandOptions::addValue(*app, "--threads", options->preview.threads, "N", "Threads; 0 for one per processor.")
        ->check(CommandOptions::inRange(0, max_threads));
    CommandOptions::addValue(*app, "--seed", options->preview.seed, "N",
                             "Of the random numbers. Equal seeds give equal pictures.")
        ->check(CommandOptions::inRange(0, max_seed));
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success, and no progress");
    app->footer("The scene is that of 'velmar export' with the same options. The renderer library in the folder "
                "vs2017_64 beside this program draws it. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { render(*options); }};
}
