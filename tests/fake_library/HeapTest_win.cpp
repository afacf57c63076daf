// Elsewhere a leak checker does this.

#include "velmarapi.h"

#include "tests/fake_library/ExampleScene.h"
#include "tests/support/LibraryFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <windows.h>

using namespace TestSupport;

namespace {

/// The blocks in use on all heaps of the process.
long long countHeapBlocks() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    long long blocks = 0;
    for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry))
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) ++blocks;
    }
    return blocks;
}

/// The blocks that `action` leaves once it has been run before.
template <class Action>
long long blocksLeftBy(Action action) {
    action();
    const long long before = countHeapBlocks();
    action();
    return countHeapBlocks() - before;
}

void render() {
    VelmarContext* const context = VelmarContext_Create();
    ASSERT_EQ(VelmarContext_Initialize(context), 0);
    VelmarRenderer* const renderer = VelmarRenderer_Create(context);
    VelmarRenderer_InitializeWithScene(renderer, context, makeExampleScene());
    VelmarRenderer_Start(renderer);
    VelmarRenderer_Pause(renderer);
    VelmarRenderer_Resume(renderer);
    VelmarRenderer_Stop(renderer);
    VelmarRenderer_Delete(renderer);
}

} // namespace

TEST(Heap, CountsSeeALeak) {
    // Kept where the compiler can't see that nothing is done with it.
    static char* volatile lost;
    EXPECT_EQ(blocksLeftBy([] { lost = new char[1000]; }), 1);
    EXPECT_NE(lost, nullptr);
}

TEST(Heap, RenderLeavesNothingBehindButWhatEachRenderSettingsNodeKeeps) {
    const LibraryFolder folder;
    folder.install("good");
    const long long kept = blocksLeftBy([] { VelmarRenderSettings_Delete(VelmarRenderSettings_Create()); });
    testing::internal::CaptureStdout();
    const long long left = blocksLeftBy(render);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(left, kept);
}
