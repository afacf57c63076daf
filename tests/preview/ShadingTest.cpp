// Light against what is known by formula.

#include "scene/nodes/LightRecords.h"
#include "tests/preview/PreviewRender.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Velmar;

namespace {

constexpr double pi = 3.14159265358979323846;

/// A camera straight above the origin that sees a square of `edge` metres around it and nothing else.
void lookDown(const PreviewScene& scene, double edge) {
    scene.camera->camera_type = SceneNodeCamera::orthographic;
    scene.camera->sensor_width = edge;
    scene.camera->forwards = {0, 0, -1};
    scene.camera->up = {0, 1, 0};
    scene.camera->setPosition({0, 0, 0.5});
}

/// A box of walls that all face inwards, with the camera inside.
void addClosedBox(PreviewScene& scene, SceneNodeMaterial* material) {
    scene.addModel(
        scene.addMesh(
            {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},
            {{0, 1, 2, 3}, {7, 6, 5, 4}, {4, 5, 1, 0}, {5, 6, 2, 1}, {6, 7, 3, 2}, {7, 4, 0, 3}}),
        material);
}

} // namespace

TEST(PreviewShading, ConvexObjectInAnEvenSkyShowsItsAlbedo) {
    PreviewScene scene(24, 24);
    scene.setUniformBackground(1.0);
    scene.addSphere({0, 4, 0}, 2, scene.addMaterial(0.6));
    const RenderedPicture picture = renderPreview(scene, 16);
    EXPECT_NEAR(picture.mean(6, 6, 18, 18), 0.6, 0.003);
    EXPECT_EQ(picture.at(0, 0).g, 1.0f);
}

TEST(PreviewShading, ConvexMeshInAnEvenSkyShowsItsAlbedo) {
    PreviewScene scene(24, 24);
    scene.setUniformBackground(1.0);
    scene.addModel(scene.addMesh({{-1, 3, -1}, {1, 3, -1}, {1, 3, 1}, {-1, 3, 1}, {0, 2, 0}},
                                 {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}}),
                   scene.addMaterial(0.3));
    EXPECT_NEAR(renderPreview(scene, 16).mean(6, 6, 18, 18), 0.3, 0.0015);
}

TEST(PreviewShading, ClosedBoxMultipliesItsEmission) {
    PreviewScene scene(12, 12);
    addClosedBox(scene, scene.addEmitter(1.0, 0.5));
    // 1 / (1 - 0.5), one reflection after the other.
    EXPECT_NEAR(renderPreview(scene, 256).mean(), 2.0, 0.02);
}

TEST(PreviewShading, NumberOfReflectionsIsLimitedByTheSettings) {
    PreviewScene scene(12, 12);
    addClosedBox(scene, scene.addEmitter(1.0, 0.5));
    scene.settings->max_depth.set(2);
    EXPECT_NEAR(renderPreview(scene, 64).mean(), 1.75, 0.02);
}

TEST(PreviewShading, SunlightFallsWithTheCosine) {
    const auto irradiance = [](double degrees) {
        PreviewScene scene(8, 8);
        const double angle = degrees * pi / 180;
        SunSkyMaterial& light = scene.setSunSky({std::sin(angle), 0, std::cos(angle)});
        // Without air, so that the angle alone counts.
        light.extra_atmospheric = true;
        lookDown(scene, 0.2);
        scene.addFloor(0, 0, 0, 1, scene.addMaterial(0.5));
        return renderPreview(scene, 16).mean();
    };
    const double overhead = irradiance(0);
    // The solar constant of 128,000 lux; a diffuse reflector has the radiance albedo E / pi.
    EXPECT_NEAR(overhead, 0.5 * 128000 / 683 / pi, overhead * 0.002);
    EXPECT_NEAR(irradiance(60) / overhead, 0.5, 0.002);
    EXPECT_NEAR(irradiance(85) / overhead, std::cos(85 * pi / 180), 0.001);
}

TEST(PreviewShading, LightOfAParallelSquareIsItsFormFactor) {
    PreviewScene scene(8, 8);
    lookDown(scene, 0.01);
    scene.camera->setPosition({0, 0, 0.1});
    scene.addFloor(0, 0, 0, 4, scene.addMaterial(1.0));
    SceneNodeMaterial* const emitter = scene.addEmitter(1.0);
    // One metre above, facing down, with an edge of 2.
    scene.addQuad({-1, 1, 1}, {1, 1, 1}, {1, -1, 1}, {-1, -1, 1}, emitter);
    // A quarter of the square seen from a point below its corner (Howell, "Radiation Configuration Factors", B-3), x 4:
    // 4 / (2 pi) * 2 * (a / sqrt(1 + a^2)) atan(a / sqrt(1 + a^2)) with a = 1.
    const double a = 1 / std::sqrt(2.0);
    EXPECT_NEAR(renderPreview(scene, 512).mean(), 4 / pi * a * std::atan(a), 0.005);
}

TEST(PreviewShading, LightOfADiscIsItsFormFactor) {
    PreviewScene scene(8, 8);
    lookDown(scene, 0.01);
    scene.camera->setPosition({0, 0, 0.1});
    scene.addFloor(0, 0, 0, 4, scene.addMaterial(1.0));
    constexpr int corners = 64;
    // Of the area of the unit disc.
    const double radius = std::sqrt(pi / (corners / 2.0 * std::sin(2 * pi / corners)));
    std::vector<Vec3f> vertices = {{0, 0, 2}};
    std::vector<std::vector<std::uint32_t>> faces;
    for (std::uint32_t i = 0; i < corners; ++i) {
        const double angle = 2 * pi * i / corners;
        vertices.push_back(
            {static_cast<float>(radius * std::cos(angle)), static_cast<float>(radius * std::sin(angle)), 2});
        faces.push_back({0, (i + 1) % corners + 1, i + 1});
    }
    scene.addModel(scene.addMesh(vertices, faces), scene.addEmitter(1.0));
    // r^2 / (h^2 + r^2) with r = 1 and h = 2.
    EXPECT_NEAR(renderPreview(scene, 256).mean(), 0.2, 0.002);
}

TEST(PreviewShading, LightOfAQuadIsThatOfItsTwoHalves) {
    const auto lightOf = [](const std::vector<std::vector<std::uint32_t>>& faces) {
        PreviewScene scene(8, 8);
        lookDown(scene, 0.01);
        scene.camera->setPosition({0, 0, 0.1});
        scene.addFloor(0, 0, 0, 4, scene.addMaterial(1.0));
        // One half is four times as large as the other.
        scene.addModel(scene.addMesh({{-1, 1, 1}, {0, 1, 1}, {3, -1, 1}, {-1, -1, 1}}, faces), scene.addEmitter(1.0));
        return renderPreview(scene, 512).mean();
    };
    EXPECT_NEAR(lightOf({{0, 1, 2, 3}}), lightOf({{0, 1, 3}, {1, 2, 3}}), 0.005);
}

TEST(PreviewShading, EmissionScaleGivesThePhotometricAmountOfItsMeasure) {
    // A small emitter of 1 cm^2 facing down from 2 m; below it, E = I / d^2, and a white surface has E / pi.
    const auto luminanceBelow = [](EmissionScale::Measure measure, double value, bool two_sided = false) {
        PreviewScene scene(4, 4);
        lookDown(scene, 0.001);
        scene.camera->setPosition({0, 0, 0.1});
        scene.addFloor(0, 0, 0, 4, scene.addMaterial(1.0));
        SceneNodeMaterial* const emitter = scene.addEmitter(0.1);
        PreviewScene::diffuse(emitter).backface_emit = two_sided;
        SceneNodeModel* const model = scene.addQuad({-0.005f, 0.005f, 2}, {0.005f, 0.005f, 2}, {0.005f, -0.005f, 2},
                                                    {-0.005f, -0.005f, 2}, emitter);
        auto* const scale = new EmissionScale;
        scale->measure = measure;
        scale->value = value;
        scale->material = emitter;
        model->emission_scales.push_back(Reference<EmissionScale>(scale));
        // Units of radiance to candelas per square metre.
        return 683 * renderPreview(scene, 64).mean();
    };
    const double area = 1e-4;
    const auto expected = [](double intensity) { return intensity / 4 / pi; };
    EXPECT_NEAR(luminanceBelow(EmissionScale::luminous_flux, 1000), expected(1000 / pi), expected(1000 / pi) * 0.005);
    EXPECT_NEAR(luminanceBelow(EmissionScale::luminous_flux, 1000, true), expected(500 / pi),
                expected(500 / pi) * 0.005);
    EXPECT_NEAR(luminanceBelow(EmissionScale::luminous_intensity, 300), expected(300), expected(300) * 0.005);
    EXPECT_NEAR(luminanceBelow(EmissionScale::luminance, 1e6), expected(1e6 * area), expected(1e6 * area) * 0.005);
    EXPECT_NEAR(luminanceBelow(EmissionScale::luminous_emittance, 1e6), expected(1e6 * area / pi),
                expected(1e6 * area / pi) * 0.005);
}

TEST(PreviewShading, LightFallsWithTheSquareOfTheDistance) {
    const auto lightAt = [](double distance) {
        PreviewScene scene(4, 4);
        lookDown(scene, 0.001);
        scene.camera->setPosition({0, 0, 0.1});
        scene.addFloor(0, 0, 0, 4, scene.addMaterial(1.0));
        scene.addSphere({0, 0, distance}, 0.01, scene.addEmitter(1000));
        return renderPreview(scene, 64).mean();
    };
    const double near = lightAt(1);
    // A sphere of radiance L: E = pi L r^2 / d^2.
    EXPECT_NEAR(near, 1000 * 1e-4, 1000 * 1e-4 * 0.005);
    EXPECT_NEAR(lightAt(3) / near, 1.0 / 9, 0.001);
}

TEST(PreviewShading, EmitterShinesFromItsOuterSideUnlessBothAreToEmit) {
    PreviewScene scene(8, 8);
    SceneNodeMaterial* const emitter = scene.addEmitter(2.0);
    scene.addQuad({-1, 3, 1}, {1, 3, 1}, {1, 3, -1}, {-1, 3, -1}, emitter);
    EXPECT_EQ(renderPreview(scene, 1).at(4, 4).g, 0.0f) << "seen from behind";
    scene.diffuse(emitter).backface_emit = true;
    EXPECT_EQ(renderPreview(scene, 1).at(4, 4).g, 2.0f);
}

TEST(PreviewShading, SphereAndMeshInTheShadowOfEachOther) {
    PreviewScene scene(8, 8);
    scene.setSunSky({0, 0, 1}).extra_atmospheric = true;
    lookDown(scene, 0.2);
    scene.camera->setPosition({0, 0, 0.3});
    scene.addFloor(0, 0, 0, 4, scene.addMaterial(0.5));
    scene.addSphere({0, 0, 2}, 1, scene.addMaterial(0.5));
    EXPECT_LT(renderPreview(scene, 4).mean(), 1.0) << "of 30 in the sun";
}

TEST(PreviewShading, ModelInvisibleToTheCameraStillCastsItsShadow) {
    PreviewScene scene(8, 8);
    scene.setSunSky({0, 0, 1}).extra_atmospheric = true;
    lookDown(scene, 0.2);
    scene.addFloor(0, 0, 0, 4, scene.addMaterial(0.5));
    SceneNodeModel* const cover = scene.addFloor(0, 0, 0.25, 1, scene.addMaterial(0.0));
    scene.diffuse(cover->materials[0].getPointer()).albedo = uniformParam(1.0);
    EXPECT_GT(renderPreview(scene, 4).mean(), 50) << "the cover itself, in the sun";
    cover->invisible_to_camera = true;
    EXPECT_LT(renderPreview(scene, 4).mean(), 25) << "the floor, lit through its gap to the cover alone";
}

TEST(PreviewShading, RoomOfEmittersAndReflectorsIsTheSameByEachWayOfSampling) {
    // A large near light: chosen places and chance hits both matter.
    PreviewScene scene(8, 8);
    lookDown(scene, 0.01);
    scene.camera->setPosition({0, 0, 0.05});
    scene.addFloor(0, 0, 0, 20, scene.addMaterial(1.0));
    scene.addQuad({-50, 50, 0.1f}, {50, 50, 0.1f}, {50, -50, 0.1f}, {-50, -50, 0.1f}, scene.addEmitter(1.0));
    EXPECT_NEAR(renderPreview(scene, 256).mean(), 1.0, 0.01);
}
