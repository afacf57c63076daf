// Scenes that make no sense: each is reported or drawn as far as it can be, and the host continues.

#include "scene/Rotations.h"
#include "scene/nodes/ImageSettings.h"
#include "tests/preview/PreviewRender.h"
#include "tests/support/PlainNode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace TestSupport;
using namespace Velmar;

namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr float not_a_float = std::numeric_limits<float>::quiet_NaN();

/// What a render of the scene reports, and how it ends.
struct Outcome {
    std::string report;
    int state = 0;
    RenderedPicture picture;
};

Outcome renderBad(const PreviewScene& scene) {
    const PreviewFolder folder;
    Outcome outcome;
    testing::internal::CaptureStderr();
    {
        const PreviewRenderer renderer(folder, scene);
        EXPECT_EQ(renderer.start(), 0u);
        EXPECT_TRUE(renderer.wait());
        outcome.state = renderer.progress().state;
        if (outcome.state == VELMAR_PREVIEW_FINISHED) outcome.picture = renderer.picture();
    }
    outcome.report = testing::internal::GetCapturedStderr();
    return outcome;
}

#define EXPECT_REPORTED(outcome, text)                                                                                 \
    EXPECT_NE((outcome).report.find(text), std::string::npos) << "reported: " << (outcome).report

/// A square of grey in front of an even background, which is still there beside what is bad.
class PreviewBadInput : public testing::Test {
  protected:
    PreviewBadInput() : scene(16, 16), square(scene.addSquare(0, 4, 0, 1, scene.addMaterial(0.5))) {
        scene.setUniformBackground(1.0);
    }

    void expectRest(const Outcome& outcome) const {
        ASSERT_EQ(outcome.state, VELMAR_PREVIEW_FINISHED);
        EXPECT_FLOAT_EQ(outcome.picture.at(8, 8).g, 0.5f);
        EXPECT_EQ(outcome.picture.at(0, 0).g, 1.0f);
    }

    Mesh& mesh() const { return *static_cast<SceneNodeMesh&>(*square->geometry).mesh; }

    PreviewScene scene;
    SceneNodeModel* square;
};

} // namespace

TEST(PreviewBadScene, WithoutACameraNothingIsRendered) {
    PreviewScene scene;
    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    root->addChildNode(Reference<SceneNode>(scene.settings));
    scene.root = root;
    const Outcome outcome = renderBad(scene);
    EXPECT_EQ(outcome.state, VELMAR_PREVIEW_FAILED);
    EXPECT_EQ(outcome.report, "velmar preview: the scene has no camera; nothing is rendered\n");
}

TEST(PreviewBadScene, WithoutLightThePictureIsBlack) {
    PreviewScene scene;
    scene.addSquare(0, 4, 0, 1, scene.addMaterial(0.5));
    const Outcome outcome = renderBad(scene);
    EXPECT_EQ(outcome.report, "velmar preview: the scene has no light; the picture is black\n");
    EXPECT_EQ(outcome.picture.mean(), 0.0);
}

TEST(PreviewBadScene, SizesOutOfRangeAreRefused) {
    PreviewScene scene;
    scene.settings->width.set(0);
    EXPECT_EQ(renderBad(scene).report,
              "velmar preview: the render settings give no size to the picture; nothing is rendered\n");
    scene.settings->width.set(100000);
    scene.settings->height.set(1);
    const Outcome wide = renderBad(scene);
    EXPECT_EQ(wide.state, VELMAR_PREVIEW_FAILED);
    EXPECT_EQ(wide.report, "velmar preview: a picture of 100000 x 1 pixels is too large; nothing is rendered\n");
    scene.settings->width.set(1);
    scene.settings->height.set(100000);
    EXPECT_REPORTED(renderBad(scene), "a picture of 1 x 100000 pixels is too large");
    scene.settings->height.set(0);
    EXPECT_EQ(renderBad(scene).state, VELMAR_PREVIEW_FAILED);
    scene.settings->height.set(-1);
    EXPECT_EQ(renderBad(scene).state, VELMAR_PREVIEW_FAILED);
}

TEST(PreviewBadScene, ImageStoreThatWrappedIsNotWrittenTo) {
    PreviewScene scene;
    // 32768 x 32768 x 3 x 4 floats are 0 modulo 2^32, with the margins little more.
    scene.settings->width.set(32760);
    scene.settings->height.set(32760);
    scene.settings->super_sample_factor.set(2);
    const Outcome outcome = renderBad(scene);
    EXPECT_EQ(outcome.state, VELMAR_PREVIEW_FAILED);
    EXPECT_REPORTED(outcome, "the image store is smaller than the picture");
}

TEST(PreviewBadScene, EmptySceneShowsItsBackground) {
    PreviewScene scene;
    scene.setUniformBackground(0.25);
    EXPECT_EQ(renderPreview(scene).mean(), 0.25);
}

TEST_F(PreviewBadInput, ModelsWithTransformationsThatMakeNoSenseAreLeftOut) {
    SceneNodeModel* const lost = scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1));
    lost->keyframes[0].pos = {0, not_a_number, 0};
    scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->scale = 0;
    scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->scale = std::numeric_limits<double>::infinity();
    SceneNodeModel* const moving = scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1));
    PreviewScene::move(moving->keyframes, {0, 2, 0}, {0, not_a_number, 0});
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "has a transformation that isn't finite, can't be inverted or makes it too small");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, ModelsTooSmallForRaysAreLeftOut) {
    // In the space of the mesh the rays would be beyond what Embree takes.
    scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->scale = 1e-30;
    scene.addSquare(1e9, 2, 0, 1, scene.addMaterial(0.1))->scale = 1e-12;
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "has a transformation that isn't finite, can't be inverted or makes it too small");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, ModelsWithMatricesThatMakeNoSenseAreLeftOut) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const std::array<double, 9>& matrix : {std::array<double, 9>{1, 0, 0, 0, 1, 0, 1, 1, 0},
                                                {},
                                                {not_a_number, 0, 0, 0, 1, 0, 0, 0, 1},
                                                {infinite, 0, 0, 0, 1, 0, 0, 0, 1},
                                                {1e200, 0, 0, 0, 1e200, 0, 0, 0, 1e200}}) {
        auto* const rotation = new MatrixRotation;
        std::copy(matrix.begin(), matrix.end(), std::begin(rotation->matrix));
        scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->rotation = rotation;
    }
    KeyFrame& sheared = scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->keyframes[0];
    std::fill(std::begin(sheared.S), std::end(sheared.S), 1.0);
    KeyFrame& turned = scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->keyframes[0];
    turned.angle = 1;
    turned.axis = {0, 0, 0};
    scene.addSquare(0, 2, 0, 1, scene.addMaterial(0.1))->keyframes[0].angle = not_a_number;
    expectRest(renderBad(scene));
}

TEST_F(PreviewBadInput, HugeNumbersAreDrawnAsFarAsTheyGo) {
    mesh().addVertex({3e38f, 3, 0});
    mesh().addVertex({-3e38f, 3, 3e38f});
    mesh().triangles.push_back({{0, 4, 5}, {0, 0, 0}, 0});
    scene.addSquare(1e30, 1e30, -1e30, 1e20, scene.addMaterial(0.1));
    scene.addSphere({1e19, 1e19, 0}, 1e18, scene.addMaterial(0.1));
    scene.addSphere({0, 1e300, 0}, 1e18, scene.addMaterial(0.1));
    scene.addSquare(0, -1e18, 0, 1e18, scene.addEmitter(1e300));
    const Outcome outcome = renderBad(scene);
    ASSERT_EQ(outcome.state, VELMAR_PREVIEW_FINISHED);
    EXPECT_TRUE(std::isfinite(outcome.picture.mean()));
}

TEST_F(PreviewBadInput, CameraBeyondWhatEmbreeTakesSeesTheBackground) {
    scene.camera->setPosition({0, -1e30, 0});
    scene.camera->autofocus = true;
    const Outcome outcome = renderBad(scene);
    ASSERT_EQ(outcome.state, VELMAR_PREVIEW_FINISHED);
    EXPECT_EQ(outcome.picture.mean(), 1.0);
}

TEST_F(PreviewBadInput, SunWithoutADirectionIsTakenAsUp) {
    PreviewScene sunny;
    sunny.setSunSky({not_a_number, 0, 0});
    const Outcome outcome = renderBad(sunny);
    EXPECT_REPORTED(outcome, "the sun's direction makes no sense; taken as up");
    EXPECT_GT(outcome.picture.mean(), 0.0);
}

TEST_F(PreviewBadInput, FilterThatMakesNoSenseIsTakenByDefaults) {
    scene.settings->super_sample_factor.set(2);
    auto* const filter = new DownsizeFilterMNCubic;
    filter->blur = not_a_number;
    scene.settings->downsize_filter = filter;
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "a filter for downsizing whose numbers make no sense is taken as its default");
    EXPECT_FLOAT_EQ(outcome.picture.at(8, 8).g, 0.5f);
    filter->blur = 1e300;
    EXPECT_FLOAT_EQ(renderBad(scene).picture.at(8, 8).g, 0.5f);
}

TEST_F(PreviewBadInput, FacesWithVerticesThatAreNotThereAreLeftOut) {
    mesh().triangles.push_back({{0, 1, 4}, {0, 0, 0}, 0});
    mesh().triangles.push_back({{0xFFFFFFFF, 1, 2}, {0, 0, 0}, 0});
    mesh().quads.push_back({{0, 1, 2, 99}, {0, 0, 0, 0}, 0});
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "mesh 'Mesh': 2 faces with vertices that aren't there are left out");
    EXPECT_REPORTED(outcome, "mesh 'Mesh': 1 faces with vertices that aren't there are left out");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, VerticesThatAreNotFiniteTakeTheirFacesAlong) {
    mesh().addVertex({not_a_float, 3, 0});
    mesh().addVertex({0, std::numeric_limits<float>::infinity(), 0});
    mesh().triangles.push_back({{0, 1, 4}, {0, 0, 0}, 0});
    mesh().triangles.push_back({{0, 1, 5}, {0, 0, 0}, 0});
    static_cast<SceneNodeMesh&>(*square->geometry).normal_smoothing = true;
    expectRest(renderBad(scene));
}

TEST_F(PreviewBadInput, MaterialsThatAreNotThereAreGrey) {
    square->materials.clear();
    const Outcome without = renderBad(scene);
    EXPECT_FLOAT_EQ(without.picture.at(8, 8).g, 0.8f);
    square->materials.push_back({});
    EXPECT_FLOAT_EQ(renderBad(scene).picture.at(8, 8).g, 0.8f) << "null";
    square->materials.clear();
    square->materials.push_back(Reference<SceneNodeMaterial>(scene.addMaterial(0.5)));
    mesh().quads[0].material_index = 7;
    EXPECT_FLOAT_EQ(renderBad(scene).picture.at(8, 8).g, 0.8f) << "beyond the list";
}

TEST_F(PreviewBadInput, ModelsWithoutGeometryAreLeftOut) {
    auto* const empty = new SceneNodeModel;
    empty->geometry_uid = 12345;
    scene.add(empty);
    SceneNodeMesh* const unloaded = scene.addMesh({}, {});
    scene.addModel(unloaded, nullptr);
    unloaded->mesh = nullptr;
    unloaded->path = "no such file.obj";
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "has no geometry");
    EXPECT_REPORTED(outcome, "a mesh can't be loaded");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, CameraWithNumbersThatMakeNoSenseIsTakenByDefaults) {
    scene.camera->sensor_width = 0;
    scene.camera->lens_sensor_dist = not_a_number;
    scene.camera->focus_distance = -1;
    scene.camera->aperture_radius = not_a_number;
    scene.camera->forwards = {0, 0, 0};
    scene.camera->lens_shift_up_distance = not_a_number;
    scene.camera->camera_type = 77;
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "the camera's sensor width isn't above 0");
    EXPECT_REPORTED(outcome, "the camera's directions make no sense");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, CameraWithoutAPlaceIsAtTheOrigin) {
    scene.camera->keyframes.clear();
    expectRest(renderBad(scene));
    scene.camera->setPosition({not_a_number, 0, 0});
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "the camera's position isn't finite");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, SpheresThatMakeNoSenseAreLeftOut) {
    scene.addSphere({0, 2, 0}, 0, scene.addMaterial(0.1));
    scene.addSphere({0, 2, 0}, -1, scene.addMaterial(0.1));
    scene.addSphere({0, not_a_number, 0}, 1, scene.addMaterial(0.1));
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "has a placement or radius that makes no sense");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, LightThatIsNotFiniteIsLeftOut) {
    scene.addSquare(3, 2, 0, 0.1, scene.addEmitter(not_a_number));
    scene.addSquare(3, 2, 0, 0.1, scene.addEmitter(std::numeric_limits<double>::infinity()));
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "a spectrum whose values aren't finite is taken as its default");
    ASSERT_EQ(outcome.state, VELMAR_PREVIEW_FINISHED);
    EXPECT_TRUE(std::isfinite(outcome.picture.mean()));
}

TEST_F(PreviewBadInput, NodesOfKindsThatAreNotRenderedAreReportedOnce) {
    for (int i = 0; i < 2; ++i) {
        scene.add(new PlainNode(NodeType::Medium));
        scene.add(new PlainNode(NodeType::SectionPlane));
    }
    const Outcome outcome = renderBad(scene);
    EXPECT_EQ(outcome.report, "velmar preview: participating media aren't rendered\n"
                              "velmar preview: section planes aren't rendered\n");
    expectRest(outcome);
}

TEST_F(PreviewBadInput, RenderRegionsOutsideThePictureAreLeftOut) {
    RenderRegion region;
    region.x1 = 100, region.x2 = 200, region.y1 = 0, region.y2 = 5;
    scene.settings->render_regions.push_back(region);
    const Outcome outcome = renderBad(scene);
    EXPECT_REPORTED(outcome, "a render region without pixels is left out");
    EXPECT_EQ(outcome.picture.mean(), 0.0);
}
