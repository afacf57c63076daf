// Memory that runs out in the midst of a render: the render ends with a message, and the next one works.

#include "tests/preview/PreviewRender.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

using namespace TestSupport;

namespace {

std::atomic<std::int64_t> allocations_to_go = 0;
std::atomic<bool> fails_for_ever = false;
/// Of the test's own thread while it is in the test's code.
thread_local bool is_exempt = false;

bool mustFail() {
    if (is_exempt || allocations_to_go <= 0) return false;
    if (--allocations_to_go > 0) return false;
    // The next one is the last again.
    if (fails_for_ever) allocations_to_go = 1;
    return true;
}

void* allocate(std::size_t size, std::size_t alignment) {
    if (mustFail()) return nullptr;
    return std::aligned_alloc(alignment, (std::max<std::size_t>(size, 1) + alignment - 1) / alignment * alignment);
}

} // namespace

/// Embree's own: what it had allocated for a build that failed.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libembree3.so\n";
}

// The program's definitions serve the renderer library and Embree too. The forms for arrays call these.
void* operator new(std::size_t size) {
    void* const block = allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    void* const block = allocate(size, static_cast<std::size_t>(alignment));
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}

namespace {

class PreviewMemory : public testing::TestWithParam<bool> {
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
    fails_for_ever = GetParam();
    is_exempt = true;
    const std::vector<float> expected = renderPreview(scene, 1).light;
    testing::internal::CaptureStderr();
    bool met = true;
    std::int64_t nth = 0;
    while (met && !HasFailure()) {
        SCOPED_TRACE("allocation " + std::to_string(++nth));
        const PreviewRenderer renderer(folder, scene, "picture.png");
        renderer.setOption(VELMAR_PREVIEW_THREADS, 2);
        allocations_to_go = nth;
        is_exempt = false;
        const std::uint64_t started = renderer.start();
        is_exempt = true;
        renderer.wait();
        met = allocations_to_go <= 0 || (fails_for_ever && allocations_to_go == 1);
        allocations_to_go = 0;
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

INSTANTIATE_TEST_SUITE_P(Once, PreviewMemory, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ForEver, PreviewMemory, testing::Values(true));
