// Colours that come from images.

#include "scene/SharedShaderInfo.h"
#include "tests/preview/PreviewRender.h"
#include "tests/support/FileBytes.h"

#include <array>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Velmar;

namespace {

/// A parameter of the renderer library's kind that is backed by an image.
class TextureParam : public Destroyable<TextureParam, WavelengthDependentParam> {
  public:
    void writeXML(OStream&, std::uint32_t, const XMLWriteOptions&) const override {}
    std::uint32_t getType() const override { return 2; }
    void traverse(TraversalState&, SceneNode*) override {}
    void updateHash(XXH64_state_t*) const override {}
    Reference<WavelengthDependentParam>* cloneInto(Reference<WavelengthDependentParam>* result) const override {
        return new (result) Reference<WavelengthDependentParam>;
    }

    Texture texture;
};

/// An image of 2 x 2 texels, as bytes: upper left, upper right, lower left, lower right.
void writeImage(const std::string& path, const std::array<int, 4>& texels) {
    std::ofstream file(systemPath(path), std::ios::binary);
    file << "P6\n2 2\n255\n";
    for (const int value : texels)
        for (int i = 0; i < 3; ++i)
            file.put(static_cast<char>(value));
}

/// The mean around the middle of a texel of the image, over half of its width and height: in each direction an eighth
/// comes from the neighbour, which is the same one on both sides, because the image repeats.
double around(int texel, int beside, int above, int across) {
    constexpr double own = 0.875;
    constexpr double other = 0.125;
    return (own * own * texel + own * other * (beside + above) + other * other * across) / 255;
}

/// A square that fills the picture of 8 x 8 pixels, lit evenly, with an image on it.
class PreviewTexture : public testing::Test {
  protected:
    PreviewTexture() : scene(8, 8), model(scene.addSquare(0, 4, 0, 4, scene.addMaterial(0))) {
        scene.setUniformBackground(1.0);
        path = dir.file("image.ppm");
        writeImage(path, {51, 102, 153, 255});
        Mesh& mesh = *static_cast<SceneNodeMesh&>(*model->geometry).mesh;
        mesh.num_uv_mappings = 1;
        for (const Vec2f& uv : {Vec2f{0, 0}, Vec2f{1, 0}, Vec2f{1, 1}, Vec2f{0, 1}})
            mesh.uv_pairs.push_back(uv);
        param->texture.path = path.c_str();
        param->texture.has_exponent = true;
        param->texture.exponent = 1;
        PreviewScene::diffuse(model->materials[0].getPointer()).albedo = param;
    }

    TempDir dir;
    std::string path;
    PreviewScene scene;
    SceneNodeModel* model;
    TextureParam* param = new TextureParam;
};

} // namespace

TEST_F(PreviewTexture, TexelsLieWithTheImagesLowerLeftCornerAtTheOrigin) {
    const RenderedPicture picture = renderPreview(scene, 64);
    EXPECT_NEAR(picture.mean(1, 1, 3, 3), around(51, 102, 153, 255), 0.002);
    EXPECT_NEAR(picture.mean(5, 1, 7, 3), around(102, 51, 255, 153), 0.002);
    EXPECT_NEAR(picture.mean(1, 5, 3, 7), around(153, 255, 51, 102), 0.002);
    EXPECT_NEAR(picture.mean(5, 5, 7, 7), around(255, 153, 102, 51), 0.002);
    EXPECT_NEAR(picture.mean(3, 3, 5, 5), (51 + 102 + 153 + 255) / 255.0 / 4, 0.002) << "in the middle of all";
}

TEST_F(PreviewTexture, ImageRepeats) {
    Mesh& mesh = *static_cast<SceneNodeMesh&>(*model->geometry).mesh;
    for (Vec2f& uv : mesh.uv_pairs)
        uv = {uv.x - 3, uv.y + 7};
    EXPECT_NEAR(renderPreview(scene, 64).mean(5, 1, 7, 3), around(102, 51, 255, 153), 0.002);
}

TEST_F(PreviewTexture, ValuesAreShapedByExponentAndCoefficients) {
    writeImage(path, {102, 102, 102, 102});
    param->texture.has_exponent = false;
    EXPECT_NEAR(renderPreview(scene, 4).mean(), std::pow(0.4, 2.2), 1e-4) << "as displays encode";
    param->texture.has_exponent = true;
    param->texture.exponent = 2;
    param->texture.a = 0.5;
    param->texture.b = 2;
    param->texture.c = 0.1;
    const double v = 0.4 * 0.4;
    EXPECT_NEAR(renderPreview(scene, 4).mean(), 0.5 * v * v + 2 * v + 0.1, 1e-4);
}

TEST_F(PreviewTexture, ImageOfLinearLightIsNotDecoded) {
    path = dir.file("image.hdr");
    std::string content = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 2\n";
    // 128 / 256 * 2^(128 - 128) in each colour.
    content.append(16, '\x80');
    writeFileBytes(path, content);
    param->texture.path = path.c_str();
    param->texture.has_exponent = false;
    EXPECT_NEAR(renderPreview(scene, 4).mean(), 0.5, 1e-4);
}

TEST_F(PreviewTexture, SetOfCoordinatesIsChosenByItsIndex) {
    Mesh& mesh = *static_cast<SceneNodeMesh&>(*model->geometry).mesh;
    mesh.num_uv_mappings = 2;
    mesh.uv_pairs.clear();
    for (int i = 0; i < 4; ++i) {
        mesh.uv_pairs.push_back({0.25f, 0.25f});
        mesh.uv_pairs.push_back({0.75f, 0.75f});
    }
    EXPECT_NEAR(renderPreview(scene, 4).mean(), 153 / 255.0, 1e-4);
    param->texture.uv_set_index = 1;
    EXPECT_NEAR(renderPreview(scene, 4).mean(), 102 / 255.0, 1e-4);
    param->texture.uv_set_index = 2;
    EXPECT_TRUE(std::isfinite(renderPreview(scene, 4).mean())) << "a set that isn't there";
}

TEST_F(PreviewTexture, IndicesOfCoordinatesThatAreNotThereAreSafe) {
    Mesh& mesh = *static_cast<SceneNodeMesh&>(*model->geometry).mesh;
    mesh.quads[0].uv_indices[2] = 0xFFFFFFFF;
    EXPECT_TRUE(std::isfinite(renderPreview(scene, 4).mean()));
}

TEST_F(PreviewTexture, MissingAndBrokenImagesAreReportedAndGrey) {
    std::ofstream(systemPath(path), std::ios::binary) << "\x89PNG\r\n\x1a\n and no more";
    testing::internal::CaptureStderr();
    EXPECT_FLOAT_EQ(static_cast<float>(renderPreview(scene, 4).mean()), 0.8f);
    param->texture.path = "no such image.png";
    EXPECT_FLOAT_EQ(static_cast<float>(renderPreview(scene, 4).mean()), 0.8f);
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("image.ppm': "), std::string::npos) << report;
    EXPECT_NE(report.find("texture 'no such image.png': "), std::string::npos) << report;
}

TEST_F(PreviewTexture, ImagesThatEndTooEarlyAreGreyOrDrawnAsFarAsTheyGo) {
    const std::string whole = readFileBytes(VELMAR_TEST_DATA "/preview.png");
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 12 + 1) {
        std::ofstream(systemPath(path), std::ios::binary) << whole.substr(0, size);
        EXPECT_TRUE(std::isfinite(renderPreview(scene, 1).mean())) << size;
    }
    param->texture.path = dir.path().c_str();
    EXPECT_FLOAT_EQ(static_cast<float>(renderPreview(scene, 4).mean()), 0.8f) << "a folder";
}

TEST_F(PreviewTexture, EmissionMayComeFromAnImage) {
    DiffuseMaterial& material = PreviewScene::diffuse(model->materials[0].getPointer());
    material.emission = param;
    material.base_emission = uniformParam(3.0);
    material.albedo = uniformParam(0.0);
    EXPECT_NEAR(renderPreview(scene, 64).mean(1, 1, 3, 3), 3 * around(51, 102, 153, 255), 0.01);
}
