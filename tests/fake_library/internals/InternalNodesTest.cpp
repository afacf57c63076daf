// The exports and their internals in one program: for the node classes and options that no export makes.

#include "api/Handles.h"
#include "api/SharedFunctions.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "tests/support/FakeParams.h"
#include "tests/support/LibraryFolder.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Velmar;
using testing::Contains;
using testing::ElementsAre;
using TestSupport::LibraryFolder;

namespace {

class InternalNodes : public testing::Test {
  protected:
    void SetUp() override {
        settings->width.set(8);
        settings->height.set(6);
        settings->super_sample_factor.set(2);
        add(settings);
        folder.install("good");
    }

    void add(SceneNode* node) { scene->addChildNode(Reference<SceneNode>(node)); }

    /// What the library records of the scene.
    std::vector<std::string> record() {
        testing::internal::CaptureStdout();
        ::VelmarContext* const context = VelmarContext_Create();
        VelmarContext_Initialize(context);
        VelmarRenderer* const renderer = VelmarRenderer_Create(context);
        VelmarRenderer_InitializeWithScene(renderer, context, toHandle<VelmarScene>(scene.getPointer()));
        velmarDeleteHandle(fromHandle(renderer));
        testing::internal::GetCapturedStdout();
        return folder.record();
    }

    /// The record's lines about the node of that UID.
    std::vector<std::string> recordOfNode(UID uid) {
        const std::vector<std::string> lines = record();
        const std::string begin = "  node " + std::to_string(uid) + " ";
        const auto first = std::ranges::find_if(lines, [&](const auto& line) { return line.starts_with(begin); });
        if (first == lines.end()) return {};
        const auto last = std::find_if(first + 1, lines.end(), [](const auto& line) { return line[2] != ' '; });
        return {first, last};
    }

    LibraryFolder folder;
    Reference<SceneNodeRoot> scene{new SceneNodeRoot};
    SceneNodeRenderSettings* settings = new SceneNodeRenderSettings;
};

} // namespace

TEST_F(InternalNodes, SphereIsBoundAndReadThroughTheSeam) {
    add(new SceneNodeMaterial);
    auto* const sphere = new SceneNodeSphere;
    sphere->radius = 1.5;
    sphere->material_uid = 2;
    sphere->keyframes.push_back(KeyFrame());
    add(sphere);
    EXPECT_THAT(recordOfNode(3),
                ElementsAre("  node 3 of type 6 named Sphere, in the scene yes",
                            "    radius 1.5, key frames 1, bound no, material UID 2",
                            "    renamed to A name of the library's choice", "    same as itself yes, as the scene no",
                            "    clone of type 6, UID 3, named Sphere, in a scene no, held 1 times, equal yes",
                            "    layers to 0, material masks 0, object masks 0",
                            "    refers to the scene no, equal to itself yes, depends on UIDs 2"));
    EXPECT_NE(sphere->material.getPointer(), nullptr) << "bound by the library's first pass";
}

TEST_F(InternalNodes, CurveIsReadThroughTheSeam) {
    Vector<float> knots;
    Vector<float> values;
    knots.push_back(0.0f);
    knots.push_back(1.0f);
    values.push_back(0.25f);
    values.push_back(0.75f);
    add(new SceneNodeCurve1D(knots, values));
    EXPECT_THAT(recordOfNode(2),
                ElementsAre("  node 2 of type 16 named , in the scene yes", "    knots 2, last at 1 of value 0.75",
                            "    renamed to A name of the library's choice", "    same as itself yes, as the scene no",
                            "    clone of type 16, UID 2, named , in a scene no, held 1 times, equal yes",
                            "    layers to 0, material masks 0, object masks 0",
                            "    refers to the scene no, equal to itself yes, depends on UIDs"));
}

TEST_F(InternalNodes, GpuRenderIsGivenItsSecondBuffer) {
    settings->gpu.set(true);
    const std::vector<std::string> lines = record();
    EXPECT_THAT(lines, Contains("  image 8 x 6, margin 4, super sample factor 2, layers 32 x 28, second 10 x 10"));
    EXPECT_THAT(lines, Contains("  start divider 8, progressive yes, regions no, one allocator yes"));
    EXPECT_THAT(lines, Contains("  floats per pixel 4, main 3584, second 3584, third 0, light layers 1"));
}

TEST_F(InternalNodes, RegionsAreGivenTheThirdBuffer) {
    settings->render_regions.push_back({1, 2, 3, 4});
    const std::vector<std::string> lines = record();
    EXPECT_THAT(lines, Contains("  start divider 1, progressive yes, regions yes, one allocator yes"));
    EXPECT_THAT(lines, Contains("  floats per pixel 3, main 2688, second 0, third 2688, light layers 1"));
}

TEST_F(InternalNodes, ReceiverIsGivenASpectralChannel) {
    settings->receiver_quad.set(true);
    settings->receiver_num_wavelength_buckets.set(16);
    settings->layer_settings.resize(1);
    settings->layer_settings[0] = new LayerSetting;
    settings->layer_settings[0]->name = "a layer with a long name";
    const std::vector<std::string> lines = record();
    EXPECT_THAT(lines, Contains("  channel 'a layer with a long name' of type 0 at 0, components 3"));
    EXPECT_THAT(lines, Contains("  channel 'spectral' of type 6 at 3, components 16"));
    EXPECT_THAT(lines, Contains("  image 8 x 6, margin 0, super sample factor 2, layers 16 x 12, second 0 x 0"));
}

TEST(MaterialOfANode, IsDestroyedWhenAnotherTakesItsPlaceAndNobodyElseHoldsIt) {
    int destructions = 0;
    auto* const first = new TestSupport::FakeMaterial;
    first->destructions = &destructions;
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode("node");
    VelmarMaterial_AddToNode(node, toHandle<VelmarMaterial>(first));
    EXPECT_EQ(destructions, 0);
    VelmarMaterial_AddToNode(node, VelmarMaterial_CreateDiffuse("second", 0, 0, 0));
    EXPECT_EQ(destructions, 1);
    velmarDeleteHandle(fromHandle(node));
}
