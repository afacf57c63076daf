// Every exported function with each of its allocations failing. A call that throws leaves every handle as it was.

#include "velmarapi.h"

#include "tests/faults/EachAllocation.h"
#include "tests/faults/ExportHost.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace Faults;

namespace {

/// All exports, as the table of functions names them.
constexpr const char* export_names[] = {
#include "ExportNames.inc"
};

constexpr float floats[] = {0, 0.5f, 1, 2, 3, 4, 5, 6, 7};
constexpr std::uint32_t faces[] = {0, 0, 1, 2, 0, 0, 0, 0, 1, 0, 1, 2, 2, 0, 0, 0, 0, 1};

/// A call of one export with a host's handles.
struct Call {
    const char* name;
    void (*act)(ExportHost& host);
    Stage stage = Stage::without_renderer;
    /// What it may throw besides std::bad_alloc.
    std::vector<std::string> failures = {};
    /// The blocks that each call leaves allocated by design.
    bool leaves_blocks = false;
};

const std::vector<Call> calls = {
    {"VelmarBackground_CreateUniform", [](auto& h) { h.made = VelmarBackground_CreateUniform(0.1, 0.2, 0.3, 0.4); }},
    {"VelmarBackground_CreateSunSky",
     [](auto& h) { h.made = VelmarBackground_CreateSunSky(1, 2, 3, "captured-simulation"); }},
    {"VelmarBackground_Delete",
     [](auto& h) {
         VelmarBackground_Delete(h.background_record);
         h.background_record = nullptr;
     }},

    {"VelmarCamera_Create", [](auto& h) { h.made = VelmarCamera_Create(); }},
    {"VelmarCamera_SetLensRadius", [](auto& h) { VelmarCamera_SetLensRadius(h.camera, 0.5); }},
    {"VelmarCamera_SetAutofocus", [](auto& h) { VelmarCamera_SetAutofocus(h.camera, 0); }},
    {"VelmarCamera_SetExposureDuration", [](auto& h) { VelmarCamera_SetExposureDuration(h.camera, 0.5); }},
    {"VelmarCamera_SetLensSensorDistance", [](auto& h) { VelmarCamera_SetLensSensorDistance(h.camera, 0.5); }},
    {"VelmarCamera_SetLensShiftRightDistance", [](auto& h) { VelmarCamera_SetLensShiftRightDistance(h.camera, 0.5); }},
    {"VelmarCamera_SetLensShiftUpDistance", [](auto& h) { VelmarCamera_SetLensShiftUpDistance(h.camera, 0.5); }},
    {"VelmarCamera_SetSensorWidth", [](auto& h) { VelmarCamera_SetSensorWidth(h.camera, 0.5); }},
    {"VelmarCamera_SetFocusDistance", [](auto& h) { VelmarCamera_SetFocusDistance(h.camera, 0.5); }},
    {"VelmarCamera_SetForwards", [](auto& h) { VelmarCamera_SetForwards(h.camera, 1, 2, 3); }},
    {"VelmarCamera_SetUp", [](auto& h) { VelmarCamera_SetUp(h.camera, 1, 2, 3); }},
    {"VelmarCamera_SetPosition", [](auto& h) { VelmarCamera_SetPosition(h.camera, 1, 2, 3); }},
    {"VelmarCamera_SetFov", [](auto& h) { VelmarCamera_SetFov(h.camera, 1, 0.5); }},
    {"VelmarCamera_SetAperature", [](auto& h) { VelmarCamera_SetAperature(h.camera, 1, 2); }},

    {"VelmarContext_Create", [](auto& h) { h.made = VelmarContext_Create(); }},
    // Reports failures by its result and what it prints.
    {"VelmarContext_Initialize", [](auto& h) { VelmarContext_Initialize(h.new_context); }, Stage::with_context},
    {"VelmarContext_Delete",
     [](auto& h) {
         VelmarContext_Delete(h.context);
         h.context = nullptr;
     },
     Stage::with_context},

    {"velmar_create_default_material", [](auto& h) { velmar_create_default_material(h.scene); }},
    {"velmar_create_sunsky", [](auto& h) { velmar_create_sunsky(h.scene); }},
    {"velmar_create_dummy_lighting", [](auto& h) { velmar_create_dummy_lighting(h.scene); }},
    {"velmar_create_plane", [](auto& h) { velmar_create_plane(h.scene); }},
    {"VelmarScene_AddGroundPlane", [](auto& h) { VelmarScene_AddGroundPlane(h.scene, 1, 100); }},
    // Loses what it can't write without a word.
    {"velmar_write_mesh_to_file", [](auto& h) { velmar_write_mesh_to_file(h.mesh, h.filePath()); }},

    {"VelmarMaterial_CreateNode", [](auto& h) { h.made = VelmarMaterial_CreateNode("a rather long name"); }},
    {"VelmarMaterial_CreateDiffuse",
     [](auto& h) { h.made = VelmarMaterial_CreateDiffuse("a rather long name", 0.1, 0.2, 0.3); }},
    {"VelmarMaterial_AddToNode", [](auto& h) { VelmarMaterial_AddToNode(h.material_node, h.material); }},
    {"VelmarMaterial_Delete",
     [](auto& h) {
         VelmarMaterial_Delete(h.material);
         h.material = nullptr;
     }},

    {"VelmarMesh_Create", [](auto& h) { h.made = VelmarMesh_Create("a rather long name"); }},
    {"VelmarMesh_NormalSmoothing", [](auto& h) { VelmarMesh_NormalSmoothing(h.mesh, 1); }},
    {"VelmarMesh_SetNormalSmoothing", [](auto& h) { VelmarMesh_SetNormalSmoothing(h.mesh, 1); }},
    {"VelmarMesh_ViewDependentSubdivision", [](auto& h) { VelmarMesh_ViewDependentSubdivision(h.mesh, 1); }},
    {"VelmarMesh_MaxNumSubdivisions", [](auto& h) { VelmarMesh_MaxNumSubdivisions(h.mesh, 7); }},
    {"VelmarMesh_AddVertices", [](auto& h) { VelmarMesh_AddVertices(h.mesh, 3, floats); }},
    {"VelmarMesh_AddFaces", [](auto& h) { VelmarMesh_AddFaces(h.mesh, 2, faces); }},
    {"VelmarMesh_AddTextureCoordinates", [](auto& h) { VelmarMesh_AddTextureCoordinates(h.mesh, 4, floats); }},
    {"VelmarMesh_AddMaterialUsed", [](auto& h) { VelmarMesh_AddMaterialUsed(h.mesh, "a rather long name"); }},
    {"VelmarMesh_Build", [](auto& h) { VelmarMesh_Build(h.mesh); }},
    {"VelmarMesh_WriteToFile",
     [](auto& h) { VelmarMesh_WriteToFile(h.mesh, h.filePath()); },
     Stage::without_renderer,
     {"Exception: Memory alloc failure while writing to buffer."}},
    {"VelmarMesh_Delete",
     [](auto& h) {
         VelmarMesh_Delete(h.mesh);
         h.mesh = nullptr;
     }},

    {"VelmarModel_Create", [](auto& h) { h.made = VelmarModel_Create("a rather long name", h.mesh); }},
    {"VelmarModel_SetMaterials",
     [](auto& h) {
         VelmarMaterialNode* nodes[] = {h.material_node, nullptr, h.scene_material_node, h.material_node};
         VelmarModel_SetMaterials(h.model, 4, nodes);
     }},
    {"VelmarModel_SetTransformation", [](auto& h) { VelmarModel_SetTransformation(h.model, floats, floats, 0); }},
    {"VelmarModel_Delete",
     [](auto& h) {
         VelmarModel_Delete(h.model);
         h.model = nullptr;
     }},

    {"VelmarRenderer_Create", [](auto& h) { h.made = VelmarRenderer_Create(h.context); }, Stage::with_context},
    {"VelmarRenderer_InitializeWithScene",
     [](auto& h) { VelmarRenderer_InitializeWithScene(h.renderer, h.context, h.scene); },
     Stage::with_renderer,
     {"VelmarException: Error while allocating image buffer: memory allocation failure."}},
    // Another scene than the one that the renderer has and is the only holder of.
    {"VelmarRenderer_InitializeWithScene",
     [](auto& h) {
         VelmarRenderer_InitializeWithScene(h.renderer, h.context, h.other_scene);
         h.scene = nullptr;
     },
     Stage::rendering,
     {"VelmarException: Error while allocating image buffer: memory allocation failure."}},
    {"VelmarRenderer_Start", [](auto& h) { VelmarRenderer_Start(h.renderer); }, Stage::rendering},
    {"VelmarRenderer_Pause", [](auto& h) { VelmarRenderer_Pause(h.renderer); }, Stage::rendering},
    {"VelmarRenderer_Resume", [](auto& h) { VelmarRenderer_Resume(h.renderer); }, Stage::rendering},
    {"VelmarRenderer_Stop", [](auto& h) { VelmarRenderer_Stop(h.renderer); }, Stage::rendering},
    {"VelmarRenderer_UpdateScene",
     [](auto& h) {
         const std::uint8_t byte = 0;
         VelmarRenderer_UpdateScene(h.renderer, 1, 2.0, "", 3.0, std::uint64_t{4}, 5.0, std::int64_t{6}, &byte);
     },
     Stage::rendering},
    {"VelmarRenderer_Delete",
     [](auto& h) {
         VelmarRenderer_Delete(h.renderer);
         h.renderer = nullptr;
         // It was the only holder.
         h.context = nullptr;
     },
     Stage::with_renderer},

    {"VelmarRenderSettings_Create",
     [](auto& h) { h.made = VelmarRenderSettings_Create(); },
     Stage::without_renderer,
     {},
     true},
    {"VelmarRenderSettings_Width", [](auto& h) { VelmarRenderSettings_Width(h.settings, 7); }},
    {"VelmarRenderSettings_Height", [](auto& h) { VelmarRenderSettings_Height(h.settings, 7); }},
    {"VelmarRenderSettings_SuperSampleFactor", [](auto& h) { VelmarRenderSettings_SuperSampleFactor(h.settings, 7); }},
    {"VelmarRenderSettings_HaltTime", [](auto& h) { VelmarRenderSettings_HaltTime(h.settings, 7); }},
    {"VelmarRenderSettings_HaltSamplesPerPixel",
     [](auto& h) { VelmarRenderSettings_HaltSamplesPerPixel(h.settings, 7); }},
    {"VelmarRenderSettings_ImageSavePeriod", [](auto& h) { VelmarRenderSettings_ImageSavePeriod(h.settings, 7); }},
    {"VelmarRenderSettings_Metropolis", [](auto& h) { VelmarRenderSettings_Metropolis(h.settings, 1); }},
    {"VelmarRenderSettings_Bidirectional", [](auto& h) { VelmarRenderSettings_Bidirectional(h.settings, 1); }},
    {"VelmarRenderSettings_Dithering", [](auto& h) { VelmarRenderSettings_Dithering(h.settings, 1); }},
    {"VelmarRenderSettings_Vignetting", [](auto& h) { VelmarRenderSettings_Vignetting(h.settings, 1); }},
    {"VelmarRenderSettings_ShadowPass", [](auto& h) { VelmarRenderSettings_ShadowPass(h.settings, 1); }},
    {"VelmarRenderSettings_RenderForegroundAlpha",
     [](auto& h) { VelmarRenderSettings_RenderForegroundAlpha(h.settings, 1); }},
    {"VelmarRenderSettings_InfoOverlay", [](auto& h) { VelmarRenderSettings_InfoOverlay(h.settings, 1); }},
    {"VelmarRenderSettings_DepthPass", [](auto& h) { VelmarRenderSettings_DepthPass(h.settings, 1); }},
    {"VelmarRenderSettings_MaterialIdTracer", [](auto& h) { VelmarRenderSettings_MaterialIdTracer(h.settings, 1); }},
    {"VelmarRenderSettings_Delete",
     [](auto& h) {
         VelmarRenderSettings_Delete(h.settings);
         h.settings = nullptr;
     }},

    {"VelmarScene_Create", [](auto& h) { h.made = VelmarScene_Create(); }},
    {"VelmarScene_AddModel", [](auto& h) { VelmarScene_AddModel(h.scene, h.model); }},
    {"VelmarScene_AddBackground", [](auto& h) { VelmarScene_AddBackground(h.scene, h.background); }},
    {"VelmarScene_AddCamera", [](auto& h) { VelmarScene_AddCamera(h.scene, h.camera); }},
    {"VelmarScene_AddMaterial", [](auto& h) { VelmarScene_AddMaterial(h.scene, h.material_node); }},
    {"VelmarScene_AddMesh", [](auto& h) { VelmarScene_AddMesh(h.scene, h.mesh); }},
    // A second time, into the first bucket of the table.
    {"VelmarScene_AddMesh", [](auto& h) { VelmarScene_AddMesh(h.empty_scene, h.mesh); }},
    {"VelmarScene_AddRenderSettings", [](auto& h) { VelmarScene_AddRenderSettings(h.scene, h.settings); }},
    {"VelmarScene_AddTonemapping", [](auto& h) { VelmarScene_AddTonemapping(h.scene, h.tonemapping); }},
    {"VelmarScene_WriteToXML",
     [](auto& h) { VelmarScene_WriteToXML(h.scene, h.filePath()); },
     Stage::without_renderer,
     {"VelmarException: An unhandled error has occured.",
      "VelmarException: Memory alloc failure while writing to buffer."}},
    {"VelmarScene_Delete",
     [](auto& h) {
         VelmarScene_Delete(h.empty_scene);
         h.empty_scene = nullptr;
     }},

    {"VelmarTonemapping_Create", [](auto& h) { h.made = VelmarTonemapping_Create(); }},
    {"VelmarTonemapping_SetType", [](auto& h) { VelmarTonemapping_SetType(h.tonemapping, 1001); }},
    {"VelmarTonemapping_SetScale", [](auto& h) { VelmarTonemapping_SetScale(h.tonemapping, 7); }},
    {"VelmarTonemapping_SetPreScale", [](auto& h) { VelmarTonemapping_SetPreScale(h.tonemapping, 7); }},
    {"VelmarTonemapping_SetPostScale", [](auto& h) { VelmarTonemapping_SetPostScale(h.tonemapping, 7); }},
    {"VelmarTonemapping_SetBurn", [](auto& h) { VelmarTonemapping_SetBurn(h.tonemapping, 7); }},
    {"VelmarTonemapping_SetIso", [](auto& h) { VelmarTonemapping_SetIso(h.tonemapping, 7); }},
    {"VelmarTonemapping_EvAdjust", [](auto& h) { VelmarTonemapping_EvAdjust(h.tonemapping, 7); }},
    {"VelmarTonemapping_SetResponseFunctionPath",
     [](auto& h) { VelmarTonemapping_SetResponseFunctionPath(h.tonemapping, "a rather long name"); }},
    {"VelmarTonemapping_Delete",
     [](auto& h) {
         VelmarTonemapping_Delete(h.tonemapping);
         h.tonemapping = nullptr;
     }},
};

/// The exports whose names begin in one way.
class Exports : public testing::TestWithParam<const char*> {
  protected:
    static void SetUpTestSuite() { folders = std::make_unique<ExportHost::Folders>(); }
    static void TearDownTestSuite() { folders.reset(); }

    /// The handles after the call, without a failure.
    static std::string describeAfter(const Call& call) {
        ExportHost host(*folders, call.stage);
        call.act(host);
        return host.describe();
    }

    /// The blocks that a host with one successful call leaves.
    static std::int64_t blocksLeftBy(const Call& call) {
        const std::int64_t before = liveBlocks();
        describeAfter(call);
        return liveBlocks() - before;
    }

    /// Returns whether the call met the failure.
    static bool failAllocation(const Call& call, const std::string& expected, std::int64_t nth, Lasting lasting) {
        ExportHost host(*folders, call.stage);
        const std::string before = host.describe();
        FailingAllocation fault(nth, lasting);
        const std::string failure = thrownBy([&] { call.act(host); }, fault);
        if (!failure.empty()) {
            EXPECT_EQ(host.describe(), before) << failure;
            EXPECT_TRUE(failure == bad_allocation || std::ranges::count(call.failures, failure) > 0) << failure;
            call.act(host);
        }
        EXPECT_EQ(host.describe(), expected) << failure;
        return fault.hasStruck();
    }

    static void failEachAllocation(const Call& call) {
        const SilentStreams silent;
        prepareRuntime();
        // What the runtime allocates once is allocated by now.
        const std::string expected = describeAfter(call);
        const std::int64_t blocks_left = blocksLeftBy(call);
        EXPECT_EQ(blocks_left != 0, call.leaves_blocks) << blocks_left << " blocks are left";
        for (const Lasting lasting : {Lasting::once, Lasting::for_ever}) {
            bool struck = true;
            for (std::int64_t nth = 1; struck && !HasFailure(); ++nth) {
                SCOPED_TRACE("allocation " + std::to_string(nth) +
                             (lasting == Lasting::once ? " failed" : " failed and all that followed"));
                const std::int64_t before = liveBlocks();
                struck = failAllocation(call, expected, nth, lasting);
                EXPECT_EQ(liveBlocks() - before, blocks_left) << "blocks left after it";
            }
        }
    }

    static std::unique_ptr<ExportHost::Folders> folders;
};

std::unique_ptr<ExportHost::Folders> Exports::folders;

} // namespace

TEST_P(Exports, LeaveEveryHandleAsItWasWhenAnAllocationFails) {
    for (const Call& call : calls) {
        if (!std::string_view(call.name).starts_with(GetParam())) continue;
        SCOPED_TRACE(call.name);
        failEachAllocation(call);
    }
}

constexpr const char* families[] = {
    "VelmarBackground_",     "VelmarCamera_",   "VelmarContext_", "VelmarMaterial_",    "VelmarMesh_", "VelmarModel_",
    "VelmarRenderSettings_", "VelmarRenderer_", "VelmarScene_",   "VelmarTonemapping_", "velmar_"};

INSTANTIATE_TEST_SUITE_P(ByFamily, Exports, testing::ValuesIn(families),
                         [](const auto& family) { return std::string(family.param) + std::string("functions"); });

TEST(ExportsUnderTest, AreAllThatTheTableOfFunctionsNames) {
    std::set<std::string_view> called;
    for (const Call& call : calls)
        if (std::ranges::any_of(families,
                                [&](const char* family) { return std::string_view(call.name).starts_with(family); }))
            called.insert(call.name);
    EXPECT_EQ(called, std::set<std::string_view>(std::begin(export_names), std::end(export_names)));
}
