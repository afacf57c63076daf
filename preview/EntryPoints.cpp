// The exports: the four entry points of every renderer library, and the functions of velmarpreview.h.

#include "preview/LibraryObjects.h"
#include "preview/SceneNodes.h"
#include "preview/velmarpreview.h"

#include <cstdint>
#include <new>

using namespace Preview;

namespace {

/// Calls `use` with the job of a renderer and returns 0 if there is one and `use` returned true.
template <class Use>
std::int32_t withJob(void* renderer, Use use) noexcept {
    RenderJob* const job = jobOf(renderer);
    if (job == nullptr) return VELMAR_PREVIEW_ERROR;
    try {
        return use(*job) ? 0 : VELMAR_PREVIEW_ERROR;
    } catch (...) {
        report("out of memory");
        return VELMAR_PREVIEW_ERROR;
    }
}

} // namespace

extern "C" {

VELMAR_PREVIEW_CALL std::int32_t velmarGlobalLibraryInit(const Velmar::String*, Velmar::String*) {
    return 0;
}

/// Nothing of the preview's is freed by the host.
VELMAR_PREVIEW_CALL void setMemAllocFunctions(const void*) {}

VELMAR_PREVIEW_CALL std::int32_t velmarCreateInstance(const Velmar::String* class_name,
                                                      Velmar::LibraryObject** object) {
    *object = makeObject(class_name->view());
    return *object == nullptr ? 1 : 0;
}

/// Each render ends with its renderer, before this is called.
VELMAR_PREVIEW_CALL void velmarGlobalLibraryShutdown(void) {}

std::int32_t VelmarPreview_Wait(void* renderer, double seconds) {
    RenderJob* const job = jobOf(renderer);
    if (job == nullptr) return VELMAR_PREVIEW_ERROR;
    return job->wait(seconds) ? 1 : 0;
}

std::int32_t VelmarPreview_GetProgress(void* renderer, VelmarPreviewProgress* progress) {
    if (progress == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](RenderJob& job) {
        *progress = job.getProgress();
        return true;
    });
}

std::int32_t VelmarPreview_GetPixels(void* renderer, float* pixels, size_t count) {
    if (pixels == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](RenderJob& job) { return job.getPixels(pixels, count); });
}

std::int32_t VelmarPreview_GetBytes(void* renderer, std::uint8_t* bytes, size_t count) {
    if (bytes == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](RenderJob& job) { return job.getBytes(bytes, count); });
}

std::int32_t VelmarPreview_GetChannel(void* renderer, const char* name, float* values, size_t count) {
    if (name == nullptr || values == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](RenderJob& job) { return job.getChannel(name, values, count); });
}

std::int32_t VelmarPreview_SetOption(void* renderer, std::int32_t option, double value) {
    return withJob(renderer, [&](RenderJob& job) { return job.setOption(option, value); });
}

std::int32_t VelmarPreview_WriteImage(void* renderer, const char* path) {
    if (path == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](const RenderJob& job) { return job.writeImage(path); });
}

std::int32_t VelmarPreview_SetImagePath(void* renderer, const char* path) {
    if (path == nullptr) return VELMAR_PREVIEW_ERROR;
    return withJob(renderer, [&](RenderJob& job) {
        job.setImagePath(path);
        return true;
    });
}
}
