// Where and when things appear in a picture, against the geometry of each camera.

#include "scene/Rotations.h"
#include "tests/preview/PreviewRender.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Velmar;

namespace {

constexpr double pi = 3.14159265358979323846;

/// A small bright square at a place, which faces the camera.
void addMark(PreviewScene& scene, const Vec3d& place, double edge = 0.05) {
    scene.addSquare(place.x, place.y, place.z, edge, scene.addEmitter(1.0));
}

/// The pixel in which a mark at `place` appears.
std::array<double, 2> pixelOf(PreviewScene& scene, const Vec3d& place, double edge = 0.05) {
    addMark(scene, place, edge);
    return renderPreview(scene, 16).centre();
}

} // namespace

TEST(PreviewCamera, ThinLensProjectsThroughItsMiddle) {
    PreviewScene scene(80, 60);
    scene.camera->sensor_width = 0.04;
    scene.camera->lens_sensor_dist = 0.05;
    scene.camera->setPosition({1, 2, 3});
    const auto [x, y] = pixelOf(scene, {1.6, 6, 3.4});
    // 0.6 to the right over 4 ahead, on a sensor of 80 pixels for 0.04 m at 0.05 m.
    EXPECT_NEAR(x, 40 + 0.6 / 4 * 0.05 / 0.04 * 80, 0.5);
    EXPECT_NEAR(y, 30 - 0.4 / 4 * 0.05 / 0.04 * 80, 0.5);
}

TEST(PreviewCamera, ForwardsAndUpTurnThePicture) {
    PreviewScene scene(64, 64);
    // Along x, with y up: z points to the right.
    scene.camera->forwards = {2, 0, 0};
    scene.camera->up = {0, 1, 0};
    SceneNodeMaterial* const emitter = scene.addEmitter(1.0);
    PreviewScene::diffuse(emitter).backface_emit = true;
    scene.addQuad({4, 0.4f, 0.9f}, {4, 0.5f, 0.9f}, {4, 0.5f, 1.0f}, {4, 0.4f, 1.0f}, emitter);
    const auto [x, y] = renderPreview(scene, 16).centre();
    EXPECT_NEAR(x, 32 + 0.95 / 4 * 64, 0.5);
    EXPECT_NEAR(y, 32 - 0.45 / 4 * 64, 0.5);
}

TEST(PreviewCamera, LensShiftMovesThePicture) {
    PreviewScene scene(80, 80);
    scene.camera->lens_shift_up_distance = 0.009;
    scene.camera->lens_shift_right_distance = -0.0045;
    const auto [x, y] = pixelOf(scene, {0, 4, 0});
    // Of 0.036 m: what was in the middle is a quarter lower and an eighth to the right.
    EXPECT_NEAR(x, 40 + 10, 0.5);
    EXPECT_NEAR(y, 40 + 20, 0.5);
}

TEST(PreviewCamera, LensShiftUpLooksUp) {
    PreviewScene scene(80, 80);
    scene.camera->lens_shift_up_distance = 0.036;
    const auto [x, y] = pixelOf(scene, {0, 4, 4});
    EXPECT_NEAR(x, 40, 0.5);
    EXPECT_NEAR(y, 40, 0.5);
}

TEST(PreviewCamera, OrthographicCameraSeesAWindowOfTheSensorsSize) {
    PreviewScene scene(60, 40);
    scene.camera->camera_type = SceneNodeCamera::orthographic;
    scene.camera->sensor_width = 3;
    scene.camera->lens_shift_right_distance = 0.5;
    const auto [x, y] = pixelOf(scene, {1.1, 7, -0.4}, 0.2);
    EXPECT_NEAR(x, 30 + (1.1 - 0.5) * 20, 0.5);
    EXPECT_NEAR(y, 20 + 0.4 * 20, 0.5);
}

TEST(PreviewCamera, SphericalCameraSeesAllDirections) {
    PreviewScene scene(120, 60);
    scene.camera->camera_type = SceneNodeCamera::spherical;
    // 90 degrees to the right and 30 up.
    SceneNodeMaterial* const emitter = scene.addEmitter(1.0);
    PreviewScene::diffuse(emitter).backface_emit = true;
    const auto z = static_cast<float>(2 * std::tan(pi / 6));
    scene.addQuad({2, -0.1f, z - 0.1f}, {2, 0.1f, z - 0.1f}, {2, 0.1f, z + 0.1f}, {2, -0.1f, z + 0.1f}, emitter);
    const auto [x, y] = renderPreview(scene, 16).centre();
    EXPECT_NEAR(x, 90, 0.5);
    EXPECT_NEAR(y, 20, 0.5);
}

TEST(PreviewCamera, CircleOfConfusionIsThatOfAThinLens) {
    PreviewScene scene(64, 8);
    scene.camera->aperture_radius = 0.4;
    scene.camera->focus_distance = 2;
    // The left half of the picture at 4 m.
    scene.addQuad({-40, 4, -40}, {0, 4, -40}, {0, 4, 40}, {-40, 4, 40}, scene.addEmitter(1.0));
    const RenderedPicture picture = renderPreview(scene, 64);
    // The lens's disc appears at 4 m with its radius times (4 - 2) / 2; the sensor is as wide as it is distant.
    const double radius = 0.4 * (4.0 - 2) / 2 / 4 * 64;
    for (int x = 32; x < 40; ++x) {
        // The part of a disc beyond a chord at u of its radius.
        const double u = std::min((x + 0.5 - 32) / radius, 1.0);
        const double beyond = 0.5 - (u * std::sqrt(1 - u * u) + std::asin(u)) / pi;
        EXPECT_NEAR(picture.mean(x, 0, x + 1, 8), beyond, 0.01) << x;
    }
}

TEST(PreviewCamera, WhatIsInFocusIsSharp) {
    PreviewScene scene(64, 64);
    scene.camera->aperture_radius = 0.1;
    scene.camera->focus_distance = 4;
    addMark(scene, {0, 4, 0}, 1);
    const RenderedPicture picture = renderPreview(scene, 16);
    EXPECT_EQ(picture.at(25, 32).g, 1.0f);
    EXPECT_EQ(picture.at(22, 32).g, 0.0f);
}

TEST(PreviewCamera, AutofocusTakesTheDistanceOfWhatIsInTheMiddle) {
    PreviewScene scene(64, 64);
    scene.camera->aperture_radius = 0.1;
    scene.camera->autofocus = true;
    scene.camera->focus_distance = 1;
    addMark(scene, {0, 4, 0}, 1);
    const RenderedPicture picture = renderPreview(scene, 16);
    EXPECT_EQ(picture.at(25, 32).g, 1.0f);
    EXPECT_EQ(picture.at(22, 32).g, 0.0f);
}

TEST(PreviewCamera, VignettingFollowsTheFourthPowerOfTheCosine) {
    PreviewScene scene(64, 64);
    scene.setUniformBackground(1.0);
    scene.settings->vignetting.set(true);
    const RenderedPicture picture = renderPreview(scene, 4);
    EXPECT_NEAR(picture.at(32, 32).g, 1.0, 0.001);
    // In the corner the tangent is sqrt(2) / 2.
    EXPECT_NEAR(picture.at(0, 0).g, 1 / (1.5 * 1.5), 0.02);
    scene.settings->vignetting.has_value = false;
    EXPECT_NEAR(renderPreview(scene, 4).at(0, 0).g, 1 / (1.5 * 1.5), 0.02) << "the default";
}

TEST(PreviewMotion, MovingSquareCoversItsPathInProportionToTime) {
    PreviewScene scene(64, 8);
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 1, scene.addEmitter(1.0));
    // From 1 m left to 1 m right of the middle: 16 pixels wide, over 32 pixels.
    PreviewScene::move(model->keyframes, {-1, 4, 0}, {1, 4, 0});
    const RenderedPicture picture = renderPreview(scene, 256);
    EXPECT_NEAR(picture.mean(30, 0, 34, 8), 0.5, 0.01) << "for half of the time";
    EXPECT_NEAR(picture.mean(8, 0, 10, 8), 1.0 / 32, 0.004) << "just before it leaves";
    EXPECT_EQ(picture.mean(0, 0, 8, 8), 0.0);
}

TEST(PreviewMotion, MovingSphereCoversItsPathInProportionToTime) {
    PreviewScene scene(64, 8);
    SceneNodeSphere* const sphere = scene.addSphere({}, 0.1, scene.addEmitter(1.0));
    PreviewScene::move(sphere->keyframes, {-1, 4, 0}, {1, 4, 0});
    const RenderedPicture picture = renderPreview(scene, 256);
    // Over the middle column at its middle row, 3.2 of 32 pixels wide.
    EXPECT_NEAR(picture.mean(28, 3, 36, 5), 0.1, 0.012);
}

TEST(PreviewMotion, MovingCameraIsAMovingSceneTheOtherWayRound) {
    PreviewScene scene(64, 8);
    scene.addSquare(0, 4, 0, 1, scene.addEmitter(1.0));
    PreviewScene::move(scene.camera->keyframes, {1, 0, 0}, {-1, 0, 0});
    EXPECT_NEAR(renderPreview(scene, 256).mean(30, 0, 34, 8), 0.5, 0.01);
}

TEST(PreviewMotion, KeyFramesTurnAroundTheirAxis) {
    PreviewScene scene(64, 64);
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 0.1, scene.addEmitter(1.0));
    // The mesh's place relative to the model: 1 m to the right.
    for (Vec3f& vertex : static_cast<SceneNodeMesh&>(*model->geometry).mesh->verts)
        vertex.x += 1;
    // A quarter turn around y, which points away: angles count the other way round there, so it appears above.
    model->keyframes[0].axis = {0, 5, 0};
    model->keyframes[0].angle = pi / 2;
    const auto [x, y] = renderPreview(scene, 4).centre();
    EXPECT_NEAR(x, 32, 0.5);
    EXPECT_NEAR(y, 32 - 16, 0.5);
}

namespace {

/// A small light, right of the middle at first, that turns around it by `angle` in radians.
void addTurningLight(PreviewScene& scene, double angle) {
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 0.1, scene.addEmitter(1.0));
    for (Vec3f& vertex : static_cast<SceneNodeMesh&>(*model->geometry).mesh->verts)
        vertex.x += 1;
    KeyFrame frame = model->keyframes[0];
    frame.axis = {0, 1, 0};
    frame.angle = angle;
    frame.time = 1;
    model->keyframes.push_back(frame);
}

} // namespace

TEST(PreviewMotion, TurningModelStaysOnItsCircle) {
    PreviewScene scene(64, 64);
    addTurningLight(scene, pi / 2);
    const RenderedPicture picture = renderPreview(scene, 64);
    double furthest = 0;
    double nearest = 64;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            if (picture.at(x, y).g == 0) continue;
            const double distance = std::hypot(x + 0.5 - 32, y + 0.5 - 32);
            furthest = std::max(furthest, distance);
            nearest = std::min(nearest, distance);
        }
    }
    EXPECT_LT(furthest, 16 + 2.5);
    EXPECT_GT(nearest, 16 - 2.5) << "a chord would cut through at 11.3";
}

TEST(PreviewMotion, TurningModelTakesTheShorterWay) {
    PreviewScene scene(64, 64);
    // Three quarters of a turn from the right over the top to below are one quarter the other way round.
    addTurningLight(scene, 1.5 * pi);
    const RenderedPicture picture = renderPreview(scene, 64);
    EXPECT_EQ(picture.mean(0, 0, 64, 30), 0.0);
    EXPECT_GT(picture.mean(32, 32, 64, 64), 0.0);
}

TEST(PreviewMotion, RotationAndScaleOfAModelComeBeforeItsPlace) {
    PreviewScene scene(64, 64);
    SceneNodeModel* const model = scene.addSquare(0.5, 4, 0, 0.1, scene.addEmitter(1.0));
    for (Vec3f& vertex : static_cast<SceneNodeMesh&>(*model->geometry).mesh->verts)
        vertex.x += 1;
    // z to x and x to -z: what was on the right is below.
    const double matrix[9] = {0, 0, 1, 0, 1, 0, -1, 0, 0};
    model->rotation = new MatrixRotation(std::span<const double, 9>(matrix));
    model->scale = 0.5;
    const auto [x, y] = renderPreview(scene, 16).centre();
    EXPECT_NEAR(x, 32 + 8, 0.5);
    EXPECT_NEAR(y, 32 + 8, 0.5);
}

TEST(PreviewMotion, PathThatDoesNotCoverTheExposureStaysAtItsBeginning) {
    PreviewScene scene(64, 8);
    SceneNodeModel* const model = scene.addSquare(0, 4, 0, 0.25, scene.addEmitter(1.0));
    PreviewScene::move(model->keyframes, {-1, 4, 0}, {1, 4, 0});
    model->keyframes[1].time = 0.5;
    EXPECT_NEAR(renderPreview(scene, 16).centre()[0], 16, 0.5);
}
