#include "tests/kit/Support.h"
#include "tests/support/LibraryFolder.h"

using namespace TestSupport;
using testing::Contains;
using testing::ElementsAre;

namespace {

/// A renderer by a fake library, with a small scene.
class KitRendering : public testing::Test {
  protected:
    void start(const char* variant = "good") {
        folder.install(variant);
        EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
        EXPECT_SUCCESS(VelmarKit_Context_Initialize(context, nullptr));
        EXPECT_SUCCESS(VelmarKit_Renderer_Create(context, &renderer));
        VelmarScene* const scene = newScene();
        VelmarRenderSettings* settings = nullptr;
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Create(&settings));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Width(settings, 4));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_Height(settings, 4));
        EXPECT_SUCCESS(VelmarKit_RenderSettings_SuperSampleFactor(settings, 1));
        EXPECT_SUCCESS(VelmarKit_Scene_AddRenderSettings(scene, settings));
        VelmarMesh* const mesh = newTriangle();
        EXPECT_SUCCESS(VelmarKit_Scene_AddMesh(scene, mesh));
        EXPECT_SUCCESS(VelmarKit_Renderer_InitializeWithScene(renderer, context, scene));
        folder.clearRecord();
    }
    void TearDown() override {
        if (renderer != nullptr)
            EXPECT_SUCCESS(VelmarKit_Renderer_Delete(renderer));
        else
            EXPECT_SUCCESS(VelmarKit_Context_Delete(context));
    }

    /// As the fake library takes the arguments.
    int32_t update(int32_t a, double b, const char* c, float d, uint64_t e, double f, int64_t g, uint8_t h) {
        using Update = int32_t (*)(VelmarRenderer*, int32_t, double, const char*, float, uint64_t, double, int64_t,
                                   const uint8_t*);
        return reinterpret_cast<Update>(VelmarKit_Renderer_UpdateScene)(renderer, a, b, c, d, e, f, g, &h);
    }

    LibraryFolder folder;
    VelmarContext* context = nullptr;
    VelmarRenderer* renderer = nullptr;
};

} // namespace

TEST_F(KitRendering, UpdatePassesArgumentsOfEveryKindOn) {
    start();
    EXPECT_SUCCESS(update(-7, 2.5, "text", 0.75f, 0xFFFFFFFFFFFFFFFF, -3.5, -5000000000, 200));
    EXPECT_THAT(folder.record(),
                ElementsAre("interface updated by -7, 2.5, text, 0.75, 18446744073709551615, -3.5, -5000000000, 200"));
}

TEST_F(KitRendering, ExceptionDuringAnUpdateIsAStatus) {
    start();
    constexpr int32_t of_a_failure = 404;
    expectFailure(update(of_a_failure, 0, "", 0, 0, 0, 0, 0), VELMARKIT_RENDERER_ERROR,
                  "While updating dependencies: Missing mapping for old path ''.");
    EXPECT_SUCCESS(VelmarKit_Renderer_Pause(renderer, nullptr));
}

TEST_F(KitRendering, CallsReachTheLibrary) {
    start();
    uint64_t result = 0;
    EXPECT_SUCCESS(VelmarKit_Renderer_Start(renderer, &result));
    EXPECT_EQ(result, 110u);
    EXPECT_SUCCESS(VelmarKit_Renderer_Stop(renderer, &result));
    EXPECT_EQ(result, 140u);
    EXPECT_THAT(folder.record(), Contains("interface started"));
}

TEST(KitContext, LibraryThatThrowsWhileItIsSetUpIsAStatus) {
    for (const auto& [variant, text] : {std::pair("throws", "not today"), std::pair("throws_standard", "no room"),
                                        std::pair("throws_bad_cast", "bad_cast"), std::pair("throws_nameless", "")}) {
        const LibraryFolder own;
        own.install(variant);
        VelmarContext* failing = nullptr;
        EXPECT_SUCCESS(VelmarKit_Context_Create(&failing));
        expectFailure(VelmarKit_Context_Initialize(failing, nullptr), VELMARKIT_RENDERER_ERROR, text);
        EXPECT_SUCCESS(VelmarKit_Context_Delete(failing));
    }
}

TEST_F(KitRendering, LibraryIsLoadedFromTheFolderThatTheHostNames) {
    folder.install("good", "velmar_rt_sdk", "else where");
    EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
    expectFailure(VelmarKit_Context_Initialize(context, nullptr), VELMARKIT_RENDERER_ERROR, "from 'vs2017_64'");
    const std::string path = folder.path("else where").generic_string();
    expectFailure(VelmarKit_Context_InitializeFrom(context, (path + "/not").c_str()), VELMARKIT_RENDERER_ERROR,
                  ("from '" + path + "/not'").c_str());
    expectRefused(VelmarKit_Context_InitializeFrom(context, nullptr), "folder is null");
    expectRefused(VelmarKit_Context_InitializeFrom(context, ""), "folder is empty");
    EXPECT_SUCCESS(VelmarKit_Context_InitializeFrom(context, path.c_str()));
    EXPECT_SUCCESS(VelmarKit_Renderer_Create(context, &renderer));
}

TEST_F(KitRendering, LibraryWithoutMemoryHasTheStatusOfThat) {
    folder.install("throws_bad_alloc");
    EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
    EXPECT_EQ(VelmarKit_Context_Initialize(context, nullptr), VELMARKIT_OUT_OF_MEMORY);
}

TEST_F(KitRendering, LibraryThatThrowsInsteadOfMakingARendererIsAStatus) {
    folder.install("throws_on_create");
    EXPECT_SUCCESS(VelmarKit_Context_Create(&context));
    EXPECT_SUCCESS(VelmarKit_Context_Initialize(context, nullptr));
    VelmarRenderer* made = nullptr;
    expectFailure(VelmarKit_Renderer_Create(context, &made), VELMARKIT_RENDERER_ERROR, "thrown by the library");
    EXPECT_EQ(made, nullptr);
}
