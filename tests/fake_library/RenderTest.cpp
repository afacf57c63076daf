#include "velmarapi.h"
#include "velmarexceptions.h"

#include "tests/fake_library/ExampleScene.h"
#include "tests/support/FileBytes.h"
#include "tests/support/Handles.h"
#include "tests/support/LibraryFolder.h"
#include "tests/support/System.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>

using namespace TestSupport;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

std::string withPlainLineEnds(std::string text) {
    std::erase(text, '\r');
    return text;
}

class Rendering : public testing::Test {
  protected:
    void SetUp() override { testing::internal::CaptureStdout(); }
    void TearDown() override {
        if (!taken) takeOutput();
    }

    /// A renderer on the fake library `variant`.
    VelmarRenderer* makeRenderer(std::string_view variant = "good") {
        folder.install(variant);
        context = VelmarContext_Create();
        EXPECT_EQ(VelmarContext_Initialize(context), 0);
        folder.clearRecord();
        return VelmarRenderer_Create(context);
    }

    VelmarRenderer* makeRendererWithScene(std::string_view variant = "good") {
        VelmarRenderer* const renderer = makeRenderer(variant);
        scene = makeExampleScene();
        VelmarRenderer_InitializeWithScene(renderer, context, scene);
        folder.clearRecord();
        return renderer;
    }

    /// What was printed beside the lines of the context and those of the example's models.
    std::string takeOutput() {
        taken = true;
        std::string output = withPlainLineEnds(testing::internal::GetCapturedStdout());
        for (const std::string line : {"Num materials: 1\n", "This is where it stops.\nInitialized Velmar context.\n"})
            for (std::size_t at = 0; (at = output.find(line)) != std::string::npos;)
                output.erase(at, line.size());
        return output;
    }

    LibraryFolder folder;
    VelmarContext* context = nullptr;
    VelmarScene* scene = nullptr;
    bool taken = false;
};

/// The texts of a record's lines that begin so.
std::vector<std::string> linesThatBegin(const std::vector<std::string>& lines, std::string_view begin) {
    std::vector<std::string> result;
    std::ranges::copy_if(lines, std::back_inserter(result),
                         [&](const std::string& line) { return line.starts_with(begin); });
    return result;
}

} // namespace

TEST_F(Rendering, LibrarySeesTheSceneThroughEverySlotAndField) {
    VelmarRenderer* const renderer = makeRenderer();
    VelmarRenderer_InitializeWithScene(renderer, context, makeExampleScene());
    EXPECT_EQ(folder.record(), expectedRecordOfExampleScene());
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, LibraryReceivesTheDocumentThatIsWritten) {
    VelmarScene* const written = makeExampleScene();
    VelmarScene_WriteToXML(written, "scene.xml");
    const std::string document = withPlainLineEnds(readFileBytes("scene.xml"));
    VelmarScene_Delete(written);
    VelmarRenderer* const renderer = makeRendererWithScene();
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" + readFileBytes("walked.xml"), document);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, StartPauseResumeAndStopReachTheLibraryAndReturnWhatItReturns) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    EXPECT_EQ(VelmarRenderer_Start(renderer), 110u);
    EXPECT_EQ(VelmarRenderer_Pause(renderer), 0xF0000000000000FFu);
    EXPECT_EQ(VelmarRenderer_Resume(renderer), 130u);
    EXPECT_EQ(VelmarRenderer_Stop(renderer), 140u);
    EXPECT_THAT(folder.record(), ElementsAre("interface started", "interface paused", "interface resumed",
                                             "interface stopped", "  passes 20, sum of the image 89600"));
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, UpdatePassesArgumentsOfEveryKindOnAsTheyStand) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    using Update = std::uint64_t (*)(VelmarRenderer*, std::int32_t, double, const char*, float, std::uint64_t, double,
                                     std::int64_t, const std::uint8_t*);
    const std::uint8_t byte = 200;
    const auto update = reinterpret_cast<Update>(exportedFunction("VelmarRenderer_UpdateScene"));
    EXPECT_EQ(update(renderer, -7, 2.5, "text", 0.75f, 0xFFFFFFFFFFFFFFFF, -3.5, -5000000000, &byte),
              0x123456789ABCDEF0u);
    EXPECT_THAT(folder.record(),
                ElementsAre("interface updated by -7, 2.5, text, 0.75, 18446744073709551615, -3.5, -5000000000, 200"));
    VelmarRenderer_Delete(renderer);
}

// Thrown by a mesh of ours, through frames of the library and the jump of the export.
TEST_F(Rendering, ExceptionOfTheHostsLibraryPassesThroughTheRendererLibrary) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    using Update = std::uint64_t (*)(VelmarRenderer*, std::int32_t, double, const char*, float, std::uint64_t, double,
                                     std::int64_t, const std::uint8_t*);
    const std::uint8_t byte = 0;
    const auto update = reinterpret_cast<Update>(exportedFunction("VelmarRenderer_UpdateScene"));
    std::string message;
    try {
        update(renderer, 404, 0, "", 0, 0, 0, 0, &byte);
    } catch (const Velmar::VelmarException& exception) {
        message = toStdString(exception.getMessage());
    }
    EXPECT_EQ(message, "While updating dependencies: Missing mapping for old path ''.");
    EXPECT_EQ(VelmarRenderer_Pause(renderer), 0xF0000000000000FFu);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, NodeOfTheLibrarysOwnIsHeldWrittenAndEndedAsAnyOther) {
    VelmarRenderer* const renderer = makeRenderer();
    const auto makeNode = reinterpret_cast<VelmarModel* (*)()>(folder.functionOfLibrary("fakeLibraryMakeNode"));
    ASSERT_NE(makeNode, nullptr);
    VelmarModel* const node = makeNode();
    scene = makeExampleScene();
    VelmarScene_AddModel(scene, node);
    EXPECT_EQ(refCountOf(node), 1);
    folder.clearRecord();

    VelmarScene_WriteToXML(scene, "scene.xml");
    EXPECT_THAT(withPlainLineEnds(readFileBytes("scene.xml")),
                testing::EndsWith("\n\n\t<own_node weight=\"0.5\"/>\n</scene>\n"));
    EXPECT_THAT(folder.record(), ElementsAre("own node writes itself at depth 1 into scene.xml"));

    VelmarRenderer_InitializeWithScene(renderer, context, scene);
    EXPECT_THAT(folder.record(), Contains("  floats per pixel 11, main 9856, second 0, third 0, light layers 3"));
    EXPECT_THAT(folder.record(), Contains("own node takes part in pass 4"));
    folder.clearRecord();
    VelmarRenderer_Delete(renderer);
    EXPECT_THAT(folder.record(),
                ElementsAre("interface ended", "tone mapper ended", "own node ended", "data manager ended",
                            "texture manager linked to 555 ended", "global shutdown", "unloaded"));
}

TEST_F(Rendering, DeleteReleasesTheLibrarysObjectsBeforeTheLibrary) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    VelmarRenderer_Delete(renderer);
    EXPECT_THAT(folder.record(), ElementsAre("interface ended", "tone mapper ended", "data manager ended",
                                             "texture manager linked to 555 ended", "global shutdown", "unloaded"));
}

TEST_F(Rendering, RendererWithoutASceneReleasesInterfaceAndContext) {
    VelmarRenderer* const renderer = makeRenderer();
    folder.clearRecord();
    VelmarRenderer_Delete(renderer);
    EXPECT_THAT(folder.record(), ElementsAre("interface ended", "global shutdown", "unloaded"));
}

TEST_F(Rendering, RendererIsTheOnlyHolderOfContextAndScene) {
    VelmarRenderer* const renderer = makeRenderer();
    EXPECT_EQ(refCountOf(context), 1);
    scene = makeExampleScene();
    EXPECT_EQ(refCountOf(scene), 0);
    VelmarRenderer_InitializeWithScene(renderer, context, scene);
    EXPECT_EQ(refCountOf(scene), 1);
    EXPECT_EQ(refCountOf(context), 1);
    EXPECT_EQ(refCountOf(renderer), 0);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SettersWorkOnASceneThatTheRendererOwns) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    VelmarTonemapping* const added = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene, added);
    VelmarTonemapping_SetScale(added, 3.0);
    EXPECT_EQ(refCountOf(added), 1);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SecondSceneReplacesTheFirst) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    VelmarScene* const second = makeExampleScene();
    VelmarRenderer_InitializeWithScene(renderer, context, second);
    EXPECT_EQ(refCountOf(second), 1);
    EXPECT_EQ(linesThatBegin(folder.record(), "tone mapper ended").size(), 1u);
    EXPECT_EQ(linesThatBegin(folder.record(), "data manager ended").size(), 1u);
    EXPECT_THAT(folder.record(), Not(Contains("interface ended")));
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SceneWithoutSettingsIsRefusedAndStaysTheHosts) {
    VelmarRenderer* const renderer = makeRenderer();
    folder.clearRecord();
    scene = VelmarScene_Create();
    std::string message;
    try {
        VelmarRenderer_InitializeWithScene(renderer, context, scene);
    } catch (const Velmar::VelmarException& exception) {
        message = toStdString(exception.getMessage());
    }
    EXPECT_EQ(message, "no render settings node found.");
    EXPECT_THAT(folder.record(), IsEmpty());
    EXPECT_EQ(refCountOf(scene), 0);
    EXPECT_EQ(refCountOf(context), 1);
    VelmarScene_Delete(scene);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SceneMayBeGivenAgainAfterAFailure) {
    VelmarRenderer* const renderer = makeRenderer();
    scene = VelmarScene_Create();
    EXPECT_THROW(VelmarRenderer_InitializeWithScene(renderer, context, scene), Velmar::VelmarException);
    VelmarScene_AddRenderSettings(scene, VelmarRenderSettings_Create());
    VelmarRenderer_InitializeWithScene(renderer, context, scene);
    EXPECT_EQ(refCountOf(scene), 1);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SceneThatTheLibraryFailsToTakeStaysTheHosts) {
    VelmarRenderer* const renderer = makeRenderer("scene_out_of_memory");
    scene = makeExampleScene();
    EXPECT_THROW(VelmarRenderer_InitializeWithScene(renderer, context, scene), std::bad_alloc);
    EXPECT_EQ(refCountOf(scene), 0);
    EXPECT_EQ(refCountOf(context), 1);
    EXPECT_THAT(folder.record(), Contains("tone mapper ended"));
    VelmarScene_Delete(scene);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, LibraryThatThrowsWhenItIsToMakeAnObjectStaysLoadedAndTheContextTheHosts) {
    folder.install("throws_on_create");
    context = VelmarContext_Create();
    EXPECT_EQ(VelmarContext_Initialize(context), 0);
    std::string text;
    try {
        VelmarRenderer_Create(context);
    } catch (const std::exception& exception) {
        // The exception's class is the library's.
        text = exception.what();
    }
    EXPECT_EQ(text, "thrown by the library");
    EXPECT_EQ(refCountOf(context), 0);
    EXPECT_NE(folder.functionOfLibrary("velmarCreateInstance"), nullptr);
    VelmarContext_Delete(context);
    EXPECT_EQ(folder.functionOfLibrary("velmarCreateInstance"), nullptr);
}

TEST_F(Rendering, DocumentIsTheSameWithAContextAndWithout) {
    const auto documentNow = [] {
        VelmarScene* const written = makeExampleScene();
        VelmarScene_WriteToXML(written, "scene.xml");
        VelmarScene_Delete(written);
        return readFileBytes("scene.xml");
    };
    const std::string without = documentNow();
    VelmarRenderer* const renderer = makeRendererWithScene();
    EXPECT_EQ(documentNow(), without);
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, SettingsWithoutASizeGiveAnEmptyImage) {
    VelmarRenderer* const renderer = makeRenderer();
    scene = VelmarScene_Create();
    VelmarScene_AddRenderSettings(scene, VelmarRenderSettings_Create());
    VelmarRenderer_InitializeWithScene(renderer, context, scene);
    EXPECT_THAT(folder.record(), Contains("  floats per pixel 3, main 0, second 0, third 0, light layers 1"));
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, DeleteOfNullDoesNothing) {
    VelmarRenderer* const renderer = makeRenderer();
    folder.clearRecord();
    VelmarRenderer_Delete(nullptr);
    EXPECT_THAT(folder.record(), IsEmpty());
    VelmarRenderer_Delete(renderer);
}

TEST_F(Rendering, ContextThatIsDeletedUnderARendererTakesTheLibraryAlong) {
    // Can't be deleted any more. Kept in sight, so that a leak checker doesn't take it for forgotten.
    static VelmarRenderer* stranded;
    stranded = makeRenderer();
    ASSERT_NE(stranded, nullptr);
    folder.clearRecord();
    VelmarContext_Delete(context);
    EXPECT_THAT(folder.record(), ElementsAre("global shutdown", "unloaded"));
}

TEST_F(Rendering, FailedCreationOfTheInterfaceIsToldAndTheRenderGoesOn) {
    VelmarRenderer* const renderer = makeRendererWithScene("create_interface");
    EXPECT_EQ(VelmarRenderer_Resume(renderer), 130u);
    VelmarRenderer_Delete(renderer);
    EXPECT_EQ(takeOutput(), "Failed to create Instance of 'VelmarInterface'\n");
}

TEST_F(Rendering, FailedInitialisationOfTheInterfaceIsToldAndTheRenderGoesOn) {
    VelmarRenderer* const renderer = makeRendererWithScene("interface_initialise");
    EXPECT_EQ(VelmarRenderer_Resume(renderer), 130u);
    VelmarRenderer_Delete(renderer);
    EXPECT_EQ(takeOutput(), "Failed to initialise 'VelmarInterface'\n");
}

TEST_F(Rendering, RenderItselfPrintsNothing) {
    VelmarRenderer* const renderer = makeRendererWithScene();
    VelmarRenderer_Delete(renderer);
    EXPECT_EQ(takeOutput(), "");
}

TEST_F(Rendering, ToneMappersComplaintIsKeptAndTheRenderGoesOn) {
    VelmarRenderer* const renderer = makeRenderer("tone_mapper_complains");
    VelmarRenderer_InitializeWithScene(renderer, context, makeExampleScene());
    EXPECT_THAT(folder.record(),
                Contains("  one image store yes, tone mapper complains 'the tone mapper has no curve'"));
    EXPECT_EQ(VelmarRenderer_Resume(renderer), 130u);
    VelmarRenderer_Delete(renderer);
}

using RenderingDeathTest = Rendering;

TEST_F(RenderingDeathTest, LibraryThatMakesNoInterfaceEndsTheProcess) {
    folder.install("create_nothing");
    EXPECT_DEATH(
        {
            VelmarContext* const lost = VelmarContext_Create();
            VelmarContext_Initialize(lost);
            VelmarRenderer_Create(lost);
        },
        "");
    VelmarContext* const unused = VelmarContext_Create();
    EXPECT_EQ(VelmarContext_Initialize(unused), 0);
    VelmarContext_Delete(unused);
}

TEST_F(RenderingDeathTest, ContextThatWasNotInitializedEndsTheProcess) {
    EXPECT_DEATH(VelmarRenderer_Create(VelmarContext_Create()), "");
    folder.install("good");
    VelmarContext* const unused = VelmarContext_Create();
    EXPECT_EQ(VelmarContext_Initialize(unused), 0);
    VelmarContext_Delete(unused);
}
