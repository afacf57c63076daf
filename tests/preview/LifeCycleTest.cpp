#include "tests/preview/PreviewRender.h"
#include "tests/preview/ThreadCount.h"
#include "tests/support/FileBytes.h"

#include <gtest/gtest.h>
#include <thread>

using namespace TestSupport;
using namespace Velmar;

namespace {

/// A square in front of the camera under an even sky.
PreviewScene makeLitSquare(std::int32_t width = 32, std::int32_t height = 24) {
    PreviewScene scene(width, height);
    scene.setUniformBackground(1.0);
    scene.addSquare(0, 4, 0, 1, scene.addMaterial(0.5));
    return scene;
}

/// A floor of so many faces that threads share the work of building what rays need.
SceneNodeModel* addFineFloor(PreviewScene& scene) {
    constexpr std::uint32_t edge = 200;
    std::vector<Vec3f> vertices;
    std::vector<std::vector<std::uint32_t>> faces;
    for (std::uint32_t y = 0; y <= edge; ++y)
        for (std::uint32_t x = 0; x <= edge; ++x)
            vertices.push_back({static_cast<float>(x) * 0.04f - 4.0f, static_cast<float>(y) * 0.04f,
                                -1.0f + 0.05f * static_cast<float>((x * 7 + y * 13) % 5)});
    for (std::uint32_t y = 0; y < edge; ++y)
        for (std::uint32_t x = 0; x < edge; ++x) {
            const std::uint32_t at = y * (edge + 1) + x;
            faces.push_back({at, at + 1, at + edge + 2, at + edge + 1});
        }
    return scene.addModel(scene.addMesh(vertices, faces), scene.addMaterial(0.7));
}

class PreviewLifeCycle : public testing::Test {
  protected:
    PreviewFolder folder;
};

} // namespace

TEST_F(PreviewLifeCycle, HaltsAtTheSamplesOfTheSettingsAndWritesThePicture) {
    const PreviewScene scene = makeLitSquare();
    const PreviewRenderer renderer(folder, scene, "picture.png");
    EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_IDLE);
    testing::internal::CaptureStderr();
    EXPECT_EQ(renderer.start(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const VelmarPreviewProgress progress = renderer.progress();
    EXPECT_EQ(progress.state, VELMAR_PREVIEW_FINISHED);
    EXPECT_EQ(progress.samples, 16);
    EXPECT_EQ(progress.pictures, 1u);
    EXPECT_EQ(readFileBytes("picture.png").substr(1, 3), "PNG");
}

TEST_F(PreviewLifeCycle, PictureIsWrittenToTheWorkingDirectoryUnlessTheEnvironmentNamesAnother) {
    const PreviewScene scene = makeLitSquare();
    ::VelmarContext* const context = VelmarContext_Create();
    VelmarContext_Initialize(context);
    VelmarRenderer* const renderer = VelmarRenderer_Create(context);
    VelmarRenderer_InitializeWithScene(renderer, context, reinterpret_cast<VelmarScene*>(scene.root.getPointer()));
    VelmarRenderer_Start(renderer);
    EXPECT_EQ(folder.get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait")(renderer, -1), 1);
    EXPECT_TRUE(std::filesystem::exists("velmar_preview.png"));
    deleteRenderer(renderer);
}

TEST_F(PreviewLifeCycle, StopEndsARenderWithoutAnEndAndWritesThePicture) {
    const PreviewScene scene = makeLitSquare();
    scene.settings->halt_samples_per_pixel.has_value = false;
    const PreviewRenderer renderer(folder, scene, "picture.pfm");
    renderer.start();
    while (renderer.progress().samples < 2)
        std::this_thread::yield();
    EXPECT_FALSE(renderer.wait(0));
    EXPECT_EQ(renderer.stop(), 0u);
    EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_FINISHED);
    EXPECT_EQ(readFileBytes("picture.pfm").substr(0, 13), "PF\n32 24\n-1.0");
}

TEST_F(PreviewLifeCycle, PausedRenderTakesNoSamplesUntilItIsResumed) {
    const PreviewScene scene = makeLitSquare();
    scene.settings->halt_samples_per_pixel.has_value = false;
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    while (renderer.progress().samples < 1)
        std::this_thread::yield();
    EXPECT_EQ(renderer.pause(), 0u);
    EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_PAUSED);
    const RenderedPicture before = renderer.picture();
    const double samples = renderer.progress().samples;
    EXPECT_FALSE(renderer.wait(0.05));
    EXPECT_EQ(renderer.progress().samples, samples);
    EXPECT_EQ(renderer.picture().light, before.light);
    EXPECT_EQ(renderer.resume(), 0u);
    while (renderer.progress().samples <= samples + 1)
        std::this_thread::yield();
    renderer.stop();
}

TEST_F(PreviewLifeCycle, CallsOutOfOrderDoNothing) {
    const PreviewScene scene = makeLitSquare();
    const PreviewRenderer renderer(folder, scene);
    EXPECT_EQ(renderer.pause(), 1u);
    EXPECT_EQ(renderer.resume(), 1u);
    EXPECT_EQ(renderer.stop(), 1u);
    EXPECT_EQ(renderer.update(), 1u);
    scene.settings->halt_samples_per_pixel.has_value = false;
    EXPECT_EQ(renderer.start(), 0u);
    EXPECT_EQ(renderer.start(), 1u) << "it is running";
    EXPECT_EQ(renderer.stop(), 0u);
    EXPECT_EQ(renderer.stop(), 0u) << "it is stopped already";
}

TEST_F(PreviewLifeCycle, StartsAnewAfterItsEnd) {
    const PreviewScene scene = makeLitSquare();
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    const RenderedPicture first = renderer.picture();
    EXPECT_EQ(renderer.start(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.picture().light, first.light);
}

TEST_F(PreviewLifeCycle, DeleteEndsARunningRender) {
    const PreviewScene scene = makeLitSquare(320, 240);
    scene.settings->halt_samples_per_pixel.has_value = false;
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
}

TEST_F(PreviewLifeCycle, DeleteEndsAllThreadsOfTheRender) {
    PreviewScene scene = makeLitSquare();
    scene.addSphere({0, 3, 0}, 0.5, scene.addMaterial(0.5));
    addFineFloor(scene);
    const std::size_t before = countThreads();
    {
        const PreviewRenderer renderer(folder, scene);
        renderer.setOption(VELMAR_PREVIEW_THREADS, 4);
        renderer.start();
        EXPECT_TRUE(renderer.wait());
    }
    EXPECT_EQ(countThreads(), before);
}

TEST_F(PreviewLifeCycle, StopRightAfterTheStartReturns) {
    const PreviewScene scene = makeLitSquare(320, 240);
    scene.settings->halt_samples_per_pixel.has_value = false;
    for (int i = 0; i < 20; ++i) {
        const PreviewRenderer renderer(folder, scene);
        renderer.start();
        EXPECT_EQ(renderer.stop(), 0u);
        EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_FINISHED);
    }
}

TEST_F(PreviewLifeCycle, TwoRenderersAtOnceEachRenderTheirScene) {
    const PreviewScene dark = makeLitSquare();
    PreviewScene bright(32, 24);
    bright.setUniformBackground(3.0);
    const PreviewRenderer first(folder, dark);
    const PreviewRenderer second(folder, bright);
    first.start();
    second.start();
    EXPECT_TRUE(first.wait());
    EXPECT_TRUE(second.wait());
    EXPECT_EQ(first.picture().at(0, 0).g, 1.0f);
    EXPECT_EQ(second.picture().at(0, 0).g, 3.0f);
}

TEST_F(PreviewLifeCycle, UpdateRendersTheSceneAsItIsThen) {
    PreviewScene scene(32, 32);
    scene.setUniformBackground(1.0);
    SceneNodeMaterial* const material = scene.addMaterial(0.5);
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 1, material);
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(16, 16).g, 0.5f);

    scene.diffuse(material).albedo = uniformParam(0.25);
    EXPECT_EQ(renderer.update(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(16, 16).g, 0.25f) << "another material";

    model->keyframes[0].pos = {1, 4, 0};
    EXPECT_EQ(renderer.update(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(16, 16).g, 1.0f) << "moved away";
    EXPECT_FLOAT_EQ(renderer.picture().at(24, 16).g, 0.25f) << "moved there";

    scene.addSquare(0, 3, 0, 1, material);
    EXPECT_EQ(renderer.update(), 0u);
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(16, 16).g, 0.25f) << "a model more";
}

TEST_F(PreviewLifeCycle, UpdateSeesArraysThatWereChangedWhereTheyAre) {
    PreviewScene scene(32, 32);
    scene.setUniformBackground(1.0);
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 1, scene.addMaterial(0.5));
    Mesh& mesh = *static_cast<SceneNodeMesh&>(*model->geometry).mesh;
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    for (Vec3f& vertex : mesh.verts)
        vertex.x += 1;
    renderer.update();
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(16, 16).g, 1.0f);
    EXPECT_FLOAT_EQ(renderer.picture().at(24, 16).g, 0.5f);
    mesh.quads[0].vertex_indices[3] = 1000000;
    renderer.update();
    EXPECT_TRUE(renderer.wait());
    EXPECT_FLOAT_EQ(renderer.picture().at(24, 16).g, 1.0f) << "an index that isn't there";
}

TEST_F(PreviewLifeCycle, SameSeedGivesTheSameBitsForAnyNumberOfThreads) {
    PreviewScene scene(96, 64);
    scene.setSunSky({1, -1, 1});
    scene.addFloor(0, 4, -1, 8, scene.addMaterial(0.8));
    scene.addSphere({0, 4, 0}, 0.6, scene.addMaterial(0.5));
    addFineFloor(scene);
    const RenderedPicture one = renderPreview(scene, 4, 7, 1);
    EXPECT_EQ(renderPreview(scene, 4, 7, 2).light, one.light);
    EXPECT_EQ(renderPreview(scene, 4, 7, 40).light, one.light);
    EXPECT_NE(renderPreview(scene, 4, 8, 1).light, one.light) << "another seed";
}

TEST_F(PreviewLifeCycle, ImageStoreHoldsTheMeanOfTheSamplesAndTheirNumber) {
    const PreviewScene scene = makeLitSquare();
    scene.settings->super_sample_factor.set(2);
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    // Renderer, bridge, image store: by the offsets of the seam.
    char* const bridge = *reinterpret_cast<char**>(reinterpret_cast<char*>(renderer.handle()) + 16);
    char* const render_buffer = *reinterpret_cast<char**>(bridge + 24);
    const char* const master = *reinterpret_cast<char**>(render_buffer + 16);
    EXPECT_EQ(*reinterpret_cast<const std::uint64_t*>(master + 24), 4u) << "16 for each pixel of the picture";
    const float* const floats = *reinterpret_cast<float* const*>(master + 352);
    const std::uint64_t layer_width = *reinterpret_cast<const std::uint64_t*>(master + 312);
    EXPECT_EQ(layer_width, 80u);
    EXPECT_EQ(floats[3 * (20 * layer_width + 20)], 1.0f);
    EXPECT_FLOAT_EQ(floats[3 * (32 * layer_width + 40)], 0.5f);
}

TEST_F(PreviewLifeCycle, SettingsWithoutASuperSampleFactorRenderWithoutAnImageStore) {
    const PreviewScene scene = makeLitSquare();
    scene.settings->super_sample_factor = {};
    EXPECT_FLOAT_EQ(renderPreview(scene).at(16, 12).g, 0.5f);
}

TEST_F(PreviewLifeCycle, FunctionsOfThePreviewRefuseWhatIsNoRendererOfTheirs) {
    auto* const wait = folder.get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait");
    EXPECT_EQ(wait, nullptr) << "not loaded yet";
    ::VelmarContext* const context = VelmarContext_Create();
    VelmarContext_Initialize(context);
    VelmarRenderer* const renderer = VelmarRenderer_Create(context);
    EXPECT_EQ(folder.get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait")(nullptr, 0), VELMAR_PREVIEW_ERROR);
    EXPECT_EQ(folder.get<decltype(VelmarPreview_Wait)>("VelmarPreview_Wait")(renderer, 0), VELMAR_PREVIEW_ERROR)
        << "it has no scene";
    EXPECT_EQ(VelmarRenderer_Start(renderer), 1u);
    deleteRenderer(renderer);
}

TEST_F(PreviewLifeCycle, OptionsReplaceTheLimitsOfTheSettings) {
    const PreviewScene scene = makeLitSquare();
    scene.settings->halt_samples_per_pixel.set(16);
    const PreviewRenderer renderer(folder, scene);
    renderer.setOption(VELMAR_PREVIEW_SAMPLES, 3);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.progress().samples, 3);
    renderer.setOption(VELMAR_PREVIEW_SAMPLES, 0);
    renderer.setOption(VELMAR_PREVIEW_SECONDS, 100);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.progress().samples, 16);
    EXPECT_EQ(renderer.progress().halt_seconds, 100);
}

TEST_F(PreviewLifeCycle, OptionsThatMakeNoSenseAreRefused) {
    const PreviewScene scene = makeLitSquare();
    const PreviewRenderer renderer(folder, scene);
    auto* const set = folder.get<decltype(VelmarPreview_SetOption)>("VelmarPreview_SetOption");
    EXPECT_EQ(set(renderer.handle(), VELMAR_PREVIEW_SEED, -1), VELMAR_PREVIEW_ERROR);
    EXPECT_EQ(set(renderer.handle(), VELMAR_PREVIEW_THREADS, 1e9), VELMAR_PREVIEW_ERROR);
    EXPECT_EQ(set(renderer.handle(), VELMAR_PREVIEW_SAMPLES, -1), VELMAR_PREVIEW_ERROR);
    EXPECT_EQ(set(renderer.handle(), VELMAR_PREVIEW_SECONDS, HUGE_VAL), VELMAR_PREVIEW_ERROR);
    EXPECT_EQ(set(renderer.handle(), 99, 1), VELMAR_PREVIEW_ERROR);
    float one = 0;
    auto* const get = folder.get<decltype(VelmarPreview_GetPixels)>("VelmarPreview_GetPixels");
    EXPECT_EQ(get(renderer.handle(), &one, 1), VELMAR_PREVIEW_ERROR);
}
