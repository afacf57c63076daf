#include "tools/Preview.h"

#include "tools/Console.h"
#include "tools/SceneBuilder.h"
#include "tools/System.h"

#include <cmath>
#include <cstdio>
#include <memory>

Preview::Preview(VelmarScene* scene, const PreviewSettings& settings) {
    OwnedScene owner(scene);
    load();
    renderer = VelmarRenderer_Create(context);
    try {
        VelmarRenderer_InitializeWithScene(renderer, context, owner.get());
        static_cast<void>(owner.release());
        get<decltype(VelmarPreview_SetImagePath)>("VelmarPreview_SetImagePath")(renderer, "");
        auto* const set = get<decltype(VelmarPreview_SetOption)>("VelmarPreview_SetOption");
        set(renderer, VELMAR_PREVIEW_SEED, settings.seed);
        set(renderer, VELMAR_PREVIEW_THREADS, settings.threads);
    } catch (...) {
        VelmarRenderer_Delete(renderer);
        throw;
    }
}

Preview::~Preview() {
    VelmarRenderer_Delete(renderer);
}

void Preview::load() {
    const std::string folder = System::getProgramFolder();
    const std::string here = System::getAbsolutePath(".");
    int result = 0;
    {
        const System::SilentOutput silence;
        context = VelmarContext_Create();
        // Libraries are looked for in the working directory.
        if (!folder.empty()) System::enterDirectory(folder);
        result = VelmarContext_Initialize(context);
        if (!folder.empty()) System::enterDirectory(here);
    }
    library = folder + "vs2017_64/velmar_rt_sdk" + System::library_suffix;
    if (result == 0 && System::findLoadedFunction(library, "VelmarPreview_Wait") != nullptr) return;
    VelmarContext_Delete(context);
    throw Failure(library + ": the preview renderer can't be loaded");
}

template <class Function>
Function* Preview::get(const char* name) const {
    void* const function = System::findLoadedFunction(library, name);
    if (function == nullptr) throw Failure(library + ": another version than this program's");
    return reinterpret_cast<Function*>(function);
}

void Preview::render(const std::function<void(const VelmarPreviewProgress&)>& show) const {
    auto* const wait = get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait");
    constexpr double period = 0.25;
    VelmarRenderer_Start(renderer);
    while (wait(renderer, period) == 0)
        show(getProgress());
}

bool Preview::writeImage(const std::string& path) const {
    return get<decltype(VelmarPreview_WriteImage)>("VelmarPreview_WriteImage")(renderer, path.c_str()) == 0;
}

VelmarPreviewProgress Preview::getProgress() const {
    VelmarPreviewProgress progress{};
    get<decltype(VelmarPreview_GetProgress)>("VelmarPreview_GetProgress")(renderer, &progress);
    return progress;
}

std::string describeProgress(const VelmarPreviewProgress& progress) {
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

VelmarPreviewProgress renderPicture(VelmarScene* scene, const PreviewSettings& settings, const OutputFile& output,
                                    const std::string& image,
                                    const std::function<void(const VelmarPreviewProgress&)>& show) {
    Preview preview(scene, settings);
    preview.render(show);
    const VelmarPreviewProgress last = preview.getProgress();
    // Written here, not by the threads that render: an interrupt would miss a file that they are about to make.
    const Interrupts::Deferral deferral;
    if (last.state != VELMAR_PREVIEW_FINISHED || !preview.writeImage(output.getPartialPath()))
        throw Failure(image + ": the picture wasn't rendered");
    return last;
}
