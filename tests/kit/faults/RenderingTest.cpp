// The kit's calls on contexts and renderers with each of their allocations failing. The status says so, and context,
// renderer and scene are as they were: the same call works at once, and all of them can be deleted.

#include "tests/faults/FailingAllocation.h"
#include "tests/kit/Support.h"
#include "tests/support/LibraryFolder.h"

#include <ostream>

using namespace TestSupport;
using Faults::FailingAllocation;
using Faults::Lasting;

// The fake library, which has no clean-up, leaks the state of a pass through which an exception leaves.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() {
    return "leak:createTraversalState\n";
}

namespace {

enum class Stage { created, context, renderer, rendering };

/// A host's handles up to a stage, made anew for each call.
struct Host {
    explicit Host(Stage stage) : scene(newScene()) {
        EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
        if (stage == Stage::created) return;
        EXPECT_SUCCESS(VelmarKit_Context_Initialize(context, nullptr));
        EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, newTriangle()));
        VelmarRenderSettings* settings = nullptr;
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Create(&settings));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Width(settings, 4));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Height(settings, 4));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_SuperSampleFactor(settings, 1));
        EXPECT_SUCCESS(VelmarKit_Scene_AddRenderSettings(scene, settings));
        if (stage == Stage::context) return;
        EXPECT_SUCCESS(VelmarKit_Renderer_Create(context, &renderer));
        if (stage == Stage::renderer) return;
        EXPECT_SUCCESS(VelmarKit_Renderer_InitializeWithScene(renderer, context, scene));
        scene = nullptr;
    }
    ~Host() {
        if (other != nullptr) {
            EXPECT_SUCCESS(VelmarKit_Context_Delete(other));
        }
        if (renderer != nullptr) {
            // Nothing may be deleted while it is rendered.
            if (scene == nullptr) VelmarKit_Renderer_Stop(renderer, nullptr);
            EXPECT_SUCCESS(VelmarKit_Renderer_Delete(renderer));
        } else {
            EXPECT_SUCCESS(VelmarKit_Context_Delete(context));
        }
        if (scene != nullptr) {
            EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
        }
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    VelmarScene* scene;
    VelmarContext* context = nullptr;
    VelmarContext* other = nullptr;
    VelmarRenderer* renderer = nullptr;
};

struct Call {
    const char* name;
    Stage stage;
    std::int32_t (*act)(Host& host);
    friend void PrintTo(const Call& call, std::ostream* stream) { *stream << call.name; }
};

const Call calls[] = {
    {"Context_Create", Stage::context, [](Host& h) { return VelmarKit_Context_Create(&h.other); }},
    {"Context_Initialize", Stage::created, [](Host& h) { return VelmarKit_Context_Initialize(h.context, nullptr); }},
    {"Context_InitializeFrom", Stage::created,
     [](Host& h) { return VelmarKit_Context_InitializeFrom(h.context, "./vs2017_64"); }},
    {"Renderer_Create", Stage::context, [](Host& h) { return VelmarKit_Renderer_Create(h.context, &h.renderer); }},
    {"Renderer_InitializeWithScene", Stage::renderer,
     [](Host& h) {
         const std::int32_t status = VelmarKit_Renderer_InitializeWithScene(h.renderer, h.context, h.scene);
         // The renderer owns it now.
         if (status == VELMARKIT_SUCCESS) h.scene = nullptr;
         return status;
     }},
    {"Renderer_Start", Stage::rendering, [](Host& h) { return VelmarKit_Renderer_Start(h.renderer, nullptr); }},
    {"Renderer_Pause", Stage::rendering, [](Host& h) { return VelmarKit_Renderer_Pause(h.renderer, nullptr); }},
    {"Renderer_Resume", Stage::rendering, [](Host& h) { return VelmarKit_Renderer_Resume(h.renderer, nullptr); }},
    {"Renderer_Stop", Stage::rendering, [](Host& h) { return VelmarKit_Renderer_Stop(h.renderer, nullptr); }},
};

class EachAllocationOfARenderer : public testing::TestWithParam<Call> {};

} // namespace

TEST_P(EachAllocationOfARenderer, GivesItsStatusAndKeepsTheHandles) {
    const LibraryFolder folder;
    folder.install("good");
    Faults::prepareRuntime();
    testing::internal::CaptureStdout();
    // The text of a failure has its block from now on.
    EXPECT_NE(VelmarKit_create_plane(nullptr), VELMARKIT_SUCCESS);
    for (const Lasting lasting : {Lasting::once, Lasting::for_ever}) {
        bool met = true;
        for (std::int64_t nth = 1; met; ++nth) {
            Host host(GetParam().stage);
            std::int32_t status = VELMARKIT_SUCCESS;
            {
                FailingAllocation fault(nth, lasting);
                status = GetParam().act(host);
                met = fault.hasStruck();
            }
            if (status != VELMARKIT_SUCCESS) {
                EXPECT_EQ(status, VELMARKIT_OUT_OF_MEMORY) << "allocation " << nth << ": " << VelmarKit_LastError();
                EXPECT_STRNE(VelmarKit_LastError(), "");
                EXPECT_SUCCESS(GetParam().act(host));
            }
            ASSERT_LT(nth, 1000);
        }
    }
    testing::internal::GetCapturedStdout();
}

INSTANTIATE_TEST_SUITE_P(KitFaults, EachAllocationOfARenderer, testing::ValuesIn(calls),
                         [](const auto& case_info) { return std::string(case_info.param.name); });
