// Surfaces that only catch shadows, and a picture that all builds draw alike.

#include "tests/preview/PreviewRender.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_SIMD
#include <stb_image.h>

using namespace TestSupport;
using namespace Velmar;

namespace {

struct Image {
    int width = 0;
    int height = 0;
    std::vector<int> values;
};

/// A PNG file's values, `components` for each pixel.
Image loadImage(const std::string& path, int components) {
    Image image;
    int ignored = 0;
    stbi_uc* const pixels = stbi_load(path.c_str(), &image.width, &image.height, &ignored, components);
    if (pixels == nullptr) throw std::runtime_error(path + " can't be read");
    image.values.assign(pixels, pixels + components * image.width * image.height);
    stbi_image_free(pixels);
    return image;
}

/// A floor that only catches shadows, seen from the side: the picture is a hundredth of a metre around the origin.
class PreviewShadowCatcher : public testing::Test {
  protected:
    PreviewShadowCatcher() : scene(16, 16), floor(scene.addMaterial(0.5)) {
        floor->material->shadow_catcher = true;
        scene.addFloor(0, 0, 0, 4, floor);
        scene.setUniformBackground(1.0);
        scene.camera->camera_type = SceneNodeCamera::orthographic;
        scene.camera->sensor_width = 0.01;
        scene.camera->forwards = {0, 1, -0.1};
        scene.camera->setPosition({0, -3, 0.3});
    }

    PreviewScene scene;
    SceneNodeMaterial* floor;
};

} // namespace

TEST_F(PreviewShadowCatcher, IsNotSeenWhereNothingHidesTheLight) {
    EXPECT_EQ(renderPreview(scene).mean(), 1.0);
}

TEST_F(PreviewShadowCatcher, ShowsTheBackgroundDarkenedByTheHiddenPartOfTheSky) {
    // Of the light that falls on the floor below it, a sphere of radius r at height h hides (r / h)^2.
    scene.addSphere({0, 0, 1}, 0.5, scene.addMaterial(0.5));
    EXPECT_NEAR(renderPreview(scene, 64).mean(), 0.75, 0.01);
}

TEST_F(PreviewShadowCatcher, CoversAsMuchAsItDarkens) {
    scene.addSphere({0, 0, 1}, 0.5, scene.addMaterial(0.5));
    scene.settings->render_foreground_alpha.set(true);
    scene.settings->halt_samples_per_pixel.set(64);
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene, "picture.png");
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.picture().mean(), 0.0);
    const Image image = loadImage("picture.png", 4);
    double alpha = 0;
    for (std::size_t i = 3; i < image.values.size(); i += 4)
        alpha += image.values[i];
    EXPECT_NEAR(alpha / (255 * image.width * image.height), 0.25, 0.01);
}

TEST_F(PreviewShadowCatcher, ReflectsNoLightToOtherObjects) {
    // The floor would hide half of the sky from the sphere.
    scene.addSphere({0, 0, 1}, 0.5, scene.addMaterial(0.6));
    scene.camera->forwards = {0, 1, 0};
    scene.camera->setPosition({0, -3, 1});
    EXPECT_NEAR(renderPreview(scene).mean(), 0.6, 0.003);
}

TEST(PreviewPicture, IsTheSameInAllBuilds) {
    PreviewScene scene(96, 64);
    SunSkyMaterial& sky = scene.setSunSky({0.5, -0.6, 0.7});
    sky.turbidity = 3;
    scene.camera->setPosition({0, 0, 0.8});
    scene.camera->forwards = {0, 1, -0.15};
    scene.camera->aperture_radius = 0.03;
    scene.camera->focus_distance = 4;
    scene.tone_mapping->tone_mapper_kind = 1001;
    scene.tone_mapping->pre_scale = 4;
    scene.tone_mapping->post_scale = 1;
    scene.tone_mapping->burn = 10;
    scene.addFloor(0, 4, 0, 12, scene.addMaterial(0.6));
    scene.addSphere({-0.7, 4, 0.5}, 0.5, scene.addMaterial(0.8));
    PreviewScene::move(scene.addSquare(0, 0, 0, 0.6, scene.addMaterial(0.3))->keyframes, {0.6, 3.5, 0.4},
                       {0.9, 3.5, 0.5});
    scene.addModel(
        scene.addMesh({{0, 5, 0}, {1.5, 5, 0}, {0.75, 5.5, 0}, {0.75, 5, 1.5}}, {{0, 1, 3}, {1, 2, 3}, {2, 0, 3}}),
        scene.addMaterial(0.4));
    // A picture.png of this test. Before the working directory changes, which may be on another drive.
    const Image expected = loadImage(VELMAR_TEST_DATA "/preview.png", 3);
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene, "picture.png");
    renderer.setOption(VELMAR_PREVIEW_SEED, 7);
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    const Image picture = loadImage("picture.png", 3);
    ASSERT_EQ(picture.values.size(), expected.values.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < picture.values.size(); i += 3) {
        int worst = 0;
        for (std::size_t c = i; c < i + 3; ++c)
            worst = std::max(worst, std::abs(picture.values[c] - expected.values[c]));
        different += worst > 1 ? 1 : 0;
    }
    EXPECT_LE(static_cast<double>(different), 0.001 * expected.width * expected.height);
}
