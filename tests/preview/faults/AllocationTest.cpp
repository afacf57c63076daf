// Memory that runs out in the midst of a render: the render ends with a message, and the next one works.

#include "tests/preview/faults/FailingMemory.h"

#include <gtest/gtest.h>

using namespace TestSupport;

namespace {

class PreviewMemory : public testing::TestWithParam<Lasting> {
  protected:
    PreviewMemory() : scene(8, 8) {
        scene.setUniformBackground(0.5);
        scene.addSquare(0, 4, 0, 1, scene.addEmitter(1.0, 0.5));
        PreviewScene::move(scene.addSphere({0.5, 3, 0}, 0.5, scene.addMaterial(0.5))->keyframes, {0.5, 3, 0},
                           {1, 3, 0});
        scene.settings->halt_samples_per_pixel.set(1);
    }

    PreviewFolder folder;
    PreviewScene scene;
};

} // namespace

TEST_P(PreviewMemory, ThatRunsOutEndsTheRenderAlone) {
    const std::vector<float> expected = renderPreview(scene, 1).light;
    testing::internal::CaptureStderr();
    bool met = true;
    std::int64_t nth = 0;
    while (met && !HasFailure()) {
        SCOPED_TRACE("allocation " + std::to_string(++nth));
        const PreviewRenderer renderer(folder, scene, "picture.png");
        renderer.setOption(VELMAR_PREVIEW_THREADS, 2);
        FailingMemory memory(folder, nth, GetParam());
        const std::uint64_t started = memory.inside([&] { return renderer.start(); });
        renderer.wait();
        met = memory.end();
        EXPECT_EQ(started, 0u);
        if (renderer.progress().state == VELMAR_PREVIEW_FINISHED) {
            EXPECT_EQ(renderer.picture().light, expected);
        } else {
            EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_FAILED);
        }
        EXPECT_EQ(renderer.start(), 0u);
        EXPECT_TRUE(renderer.wait());
        EXPECT_EQ(renderer.picture().light, expected) << "the next render works";
    }
    EXPECT_GT(nth, 10) << "nothing was allocated";
    EXPECT_NE(testing::internal::GetCapturedStderr().find("velmar preview: out of memory"), std::string::npos);
}

TEST_P(PreviewMemory, ThatRunsOutWhileAPictureIsWrittenLeavesNoPartOfIt) {
    scene.settings->super_sample_factor.set(2);
    const PreviewRenderer renderer(folder, scene);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    auto* const write = folder.get<decltype(VelmarPreview_WriteImage)>("VelmarPreview_WriteImage");
    testing::internal::CaptureStderr();
    for (const char* const path : {"written.png", "written.hdr", "written.pfm"}) {
        bool met = true;
        for (std::int64_t nth = 1; met && !HasFailure(); ++nth) {
            SCOPED_TRACE(std::string(path) + ", allocation " + std::to_string(nth));
            std::filesystem::remove(folder.path(path));
            FailingMemory memory(folder, nth, GetParam());
            const std::int32_t status = memory.inside([&] { return write(renderer.handle(), path); });
            met = memory.end();
            EXPECT_TRUE(met || status == 0);
            EXPECT_EQ(std::filesystem::exists(folder.path(path)), status == 0);
        }
    }
    EXPECT_NE(testing::internal::GetCapturedStderr().find("velmar preview: "), std::string::npos);
    const std::filesystem::directory_iterator files(folder.path(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 4) << "the library and three pictures";
}

INSTANTIATE_TEST_SUITE_P(Failures, PreviewMemory, testing::Values(Lasting::once, Lasting::for_ever));
