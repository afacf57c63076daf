// Files of pictures: whole, or not there.

#include "tests/preview/PreviewRender.h"
#include "tests/support/FileBytes.h"

#include <atomic>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

using namespace TestSupport;

namespace {

class PreviewImageFile : public testing::Test {
  protected:
    std::int32_t write(const PreviewRenderer& renderer, const char* path) const {
        return folder.get<decltype(VelmarPreview_WriteImage)>("VelmarPreview_WriteImage")(renderer.handle(), path);
    }

    /// The names in the working directory.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path("")))
            names.insert(entry.path().filename().string());
        return names;
    }

    static PreviewScene makeScene(std::int32_t edge) {
        PreviewScene scene(edge, edge);
        scene.setUniformBackground(1.0);
        scene.settings->halt_samples_per_pixel.set(1);
        return scene;
    }

    static void render(const PreviewRenderer& renderer) {
        renderer.start();
        EXPECT_TRUE(renderer.wait());
    }

    PreviewFolder folder;
};

} // namespace

TEST_F(PreviewImageFile, OfTwoRenderersWithOnePathIsThatOfOneOfThem) {
    const PreviewScene small_scene = makeScene(16);
    const PreviewScene large_scene = makeScene(64);
    const PreviewRenderer small(folder, small_scene);
    const PreviewRenderer large(folder, large_scene);
    render(small);
    render(large);
    ASSERT_EQ(write(small, "small.pfm"), 0);
    ASSERT_EQ(write(large, "large.pfm"), 0);

    std::atomic<int> failed = 0;
    std::vector<std::thread> writers;
    for (const PreviewRenderer* const renderer : {&small, &large, &small, &large})
        writers.emplace_back([&, renderer] {
            for (int i = 0; i < 50; ++i)
                if (write(*renderer, "shared.pfm") != 0) ++failed;
        });
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(failed, 0);
    const std::string shared = readFileBytes("shared.pfm");
    EXPECT_TRUE(shared == readFileBytes("small.pfm") || shared == readFileBytes("large.pfm")) << shared.size();
    EXPECT_EQ(files(), (std::set<std::string>{"small.pfm", "large.pfm", "shared.pfm", "vs2017_64"}));
}

TEST_F(PreviewImageFile, ThatCanNotBeWrittenLeavesNothing) {
    const PreviewScene scene = makeScene(16);
    const PreviewRenderer renderer(folder, scene);
    render(renderer);
    testing::internal::CaptureStderr();
    EXPECT_EQ(write(renderer, "vs2017_64"), VELMAR_PREVIEW_ERROR) << "a folder that isn't empty";
    EXPECT_EQ(write(renderer, "no such folder/picture.png"), VELMAR_PREVIEW_ERROR);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("velmar preview: 'vs2017_64': "), std::string::npos);
    EXPECT_EQ(files(), (std::set<std::string>{"vs2017_64"}));
}
