#include "tests/preview/PreviewRender.h"

#include "api/Handles.h"
#include "api/SharedFunctions.h"
#include "tests/support/FileBytes.h"
#include "tests/support/System.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace TestSupport {

namespace {

/// Keeps what the exports print out of the report of a test.
class Quiet {
  public:
    Quiet() { testing::internal::CaptureStdout(); }
    ~Quiet() { testing::internal::GetCapturedStdout(); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
};

} // namespace

PreviewFolder::PreviewFolder() : former(std::filesystem::current_path()) {
    // The build's folder as seen from the drive on which the test was started; there may be a folder already.
    static const std::filesystem::path drive = former.root_path();
    const std::filesystem::path built = drive / std::filesystem::path(VELMAR_PREVIEW_LIBRARY).relative_path();
    std::filesystem::create_directories(path("vs2017_64"));
    std::filesystem::copy_file(built, path("vs2017_64") / built.filename());
    // One instruction set, so that both builds see the same hits.
    setEnvironmentVariable("VELMAR_PREVIEW_ISA", "sse2");
    std::filesystem::current_path(path(""));
}

PreviewFolder::~PreviewFolder() {
    std::filesystem::current_path(former);
}

std::filesystem::path PreviewFolder::path(const std::string& name) const {
    return systemPath(dir.path()) / name;
}

void* PreviewFolder::find(const char* name) const {
    const std::filesystem::path library = std::filesystem::path(VELMAR_PREVIEW_LIBRARY).filename();
    return functionOfLoadedModule((path("vs2017_64") / library).string().c_str(), name);
}

Colour RenderedPicture::at(std::int32_t x, std::int32_t y) const {
    const auto i = static_cast<std::size_t>(3 * (y * width + x));
    return {light[i], light[i + 1], light[i + 2]};
}

double RenderedPicture::mean(std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2) const {
    double sum = 0.0;
    for (std::int32_t y = y1; y < y2; ++y)
        for (std::int32_t x = x1; x < x2; ++x)
            sum += double{at(x, y).g};
    return sum / ((x2 - x1) * (y2 - y1));
}

std::array<double, 2> RenderedPicture::centre(float threshold) const {
    double sum = 0.0;
    double sum_x = 0.0;
    double sum_y = 0.0;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const double value = double{at(x, y).g};
            if (value <= double{threshold}) continue;
            sum += value;
            sum_x += value * (x + 0.5);
            sum_y += value * (y + 0.5);
        }
    }
    return {sum_x / sum, sum_y / sum};
}

PreviewRenderer::PreviewRenderer(const PreviewFolder& folder_, const PreviewScene& scene, const std::string& image)
    : folder(folder_) {
    const Quiet quiet;
    context = VelmarContext_Create();
    EXPECT_EQ(VelmarContext_Initialize(context), 0);
    renderer = VelmarRenderer_Create(context);
    VelmarRenderer_InitializeWithScene(renderer, context, Velmar::toHandle<VelmarScene>(scene.root.getPointer()));
    EXPECT_EQ(folder.get<decltype(VelmarPreview_SetImagePath)>("VelmarPreview_SetImagePath")(renderer, image.c_str()),
              0);
}

void deleteRenderer(VelmarRenderer* renderer) {
    velmarDeleteHandle(Velmar::fromHandle(renderer));
}

PreviewRenderer::~PreviewRenderer() {
    deleteRenderer(renderer);
}

void PreviewRenderer::setOption(std::int32_t option, double value) const {
    EXPECT_EQ(folder.get<decltype(VelmarPreview_SetOption)>("VelmarPreview_SetOption")(renderer, option, value), 0);
}

std::uint64_t PreviewRenderer::update() const {
    return reinterpret_cast<std::uint64_t (*)(VelmarRenderer*)>(VelmarRenderer_UpdateScene)(renderer);
}

bool PreviewRenderer::wait(double seconds) const {
    return folder.get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait")(renderer, seconds) == 1;
}

VelmarPreviewProgress PreviewRenderer::progress() const {
    VelmarPreviewProgress progress{};
    EXPECT_EQ(folder.get<decltype(VelmarPreview_GetProgress)>("VelmarPreview_GetProgress")(renderer, &progress), 0);
    return progress;
}

RenderedPicture PreviewRenderer::picture() const {
    const VelmarPreviewProgress now = progress();
    RenderedPicture result{static_cast<std::int32_t>(now.width), static_cast<std::int32_t>(now.height), {}, {}};
    const std::size_t count = std::size_t{3} * now.width * now.height;
    result.light.resize(count);
    result.bytes.resize(count);
    EXPECT_EQ(
        folder.get<decltype(VelmarPreview_GetPixels)>("VelmarPreview_GetPixels")(renderer, result.light.data(), count),
        0);
    EXPECT_EQ(
        folder.get<decltype(VelmarPreview_GetBytes)>("VelmarPreview_GetBytes")(renderer, result.bytes.data(), count),
        0);
    return result;
}

std::vector<float> PreviewRenderer::channel(const std::string& name, std::size_t components) const {
    const VelmarPreviewProgress now = progress();
    std::vector<float> values(components * now.width * now.height);
    auto* const get = folder.get<decltype(VelmarPreview_GetChannel)>("VelmarPreview_GetChannel");
    if (get(renderer, name.c_str(), values.data(), values.size()) != 0) values.clear();
    return values;
}

RenderedPicture renderPreview(const PreviewScene& scene, double samples, double seed, double threads) {
    scene.settings->halt_samples_per_pixel.set(samples);
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene);
    renderer.setOption(VELMAR_PREVIEW_SEED, seed);
    renderer.setOption(VELMAR_PREVIEW_THREADS, threads);
    EXPECT_EQ(renderer.start(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_FINISHED);
    return renderer.picture();
}

} // namespace TestSupport
