// From light to pictures: channels, regions, filter, tone mapping and files.

#include "scene/MaterialParams.h"
#include "scene/Spectra.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "tests/preview/PreviewRender.h"
#include "tests/support/FileBytes.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Velmar;

namespace {

/// The display value of sRGB (IEC 61966-2-1) for a linear one.
int sRGB(double linear) {
    const double encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
    return static_cast<int>(std::lround(255 * std::min(encoded, 1.0)));
}

/// The first byte of an even picture of that light.
int shownOf(const PreviewScene& scene) {
    return renderPreview(scene, 1).bytes[0];
}

class PreviewChannels : public testing::Test {
  protected:
    PreviewChannels() : scene(32, 32), model(scene.addSquare(0, 4, 0, 2, scene.addMaterial(0.5))) {
        scene.setUniformBackground(1.0);
    }

    std::vector<float> render(const std::string& channel, std::size_t components) {
        const PreviewFolder folder;
        const PreviewRenderer renderer(folder, scene);
        renderer.start();
        EXPECT_TRUE(renderer.wait());
        picture = renderer.picture();
        return renderer.channel(channel, components);
    }

    static constexpr std::size_t middle = 16 * 32 + 16;
    PreviewScene scene;
    SceneNodeModel* model;
    RenderedPicture picture;
};

} // namespace

TEST_F(PreviewChannels, DepthIsTheDistanceAlongTheRayInMetres) {
    scene.settings->depth_channel.set(true);
    const std::vector<float> depth = render("depth", 1);
    ASSERT_EQ(depth.size(), 1024u);
    EXPECT_NEAR(depth[middle], 4, 0.01);
    EXPECT_NEAR(depth[16 * 32 + 22], 4 * std::hypot(1.0, 6.5 / 32, 0.5 / 32), 1e-4);
    EXPECT_EQ(depth[0], 0.0f);
}

TEST_F(PreviewChannels, NormalsAndPositionsAreThoseOfTheSurface) {
    scene.settings->normals_channel.set(true);
    scene.settings->position_channel.set(true);
    const std::vector<float> normals = render("normals", 3);
    ASSERT_EQ(normals.size(), 3072u);
    EXPECT_NEAR(normals[3 * middle + 1], -1, 1e-6);
    const std::vector<float> positions = render("position", 3);
    EXPECT_NEAR(positions[3 * middle], 0.5 / 32 * 4, 1e-5);
    EXPECT_NEAR(positions[3 * middle + 1], 4, 1e-5);
    EXPECT_NEAR(positions[3 * middle + 2], -0.5 / 32 * 4, 1e-5);
}

TEST_F(PreviewChannels, NumbersOfMaterialAndObjectAreTheirUIDs) {
    scene.settings->material_id_channel.set(true);
    scene.settings->object_id_channel.set(true);
    EXPECT_EQ(std::lround(255 * render("material_id", 3)[3 * middle]),
              static_cast<long>(model->materials[0]->getUID()));
    EXPECT_EQ(std::lround(255 * render("object_id", 3)[3 * middle]), static_cast<long>(model->getUID()));
    EXPECT_EQ(render("object_id", 3)[0], 0.0f);
}

TEST_F(PreviewChannels, ChannelsThatAreNotAskedForAreNotThere) {
    EXPECT_TRUE(render("depth", 1).empty());
    EXPECT_TRUE(render("no such channel", 1).empty());
}

TEST_F(PreviewChannels, MasksCoverTheirObjectsAndMaterials) {
    model->mask_name = "the square";
    model->materials[0]->material->mask_name = "grey";
    scene.settings->object_masks.set(true);
    scene.settings->material_masks.set(true);
    const std::vector<float> object = render("the square", 1);
    EXPECT_EQ(object[middle], 1.0f);
    EXPECT_EQ(object[0], 0.0f);
    // 2 m at 4 m: half of the width, so a quarter of the picture.
    double sum = 0;
    for (const float value : object)
        sum += double{value};
    EXPECT_NEAR(sum / 1024, 0.25, 1e-6);
    EXPECT_EQ(render("grey", 1), object);
}

TEST_F(PreviewChannels, AlphaIsTheCoverageAndTheBackgroundIsLeftOut) {
    scene.settings->render_foreground_alpha.set(true);
    const std::vector<float> alpha = render("alpha", 1);
    EXPECT_EQ(alpha[0], 0.0f);
    EXPECT_EQ(alpha[middle], 1.0f);
    EXPECT_EQ(picture.at(0, 0).g, 0.0f);
    EXPECT_FLOAT_EQ(picture.at(16, 16).g, 0.5f) << "lit by it all the same";
}

TEST_F(PreviewChannels, LightingPassesAddUpToThePicture) {
    for (Optional<bool>* const option :
         {&scene.settings->direct_lighting_channel, &scene.settings->indirect_lighting_channel,
          &scene.settings->emission_lighting_channel})
        option->set(true);
    scene.addFloor(0, 4, -1, 4, model->materials[0].getPointer());
    const std::vector<float> direct = render("direct_lighting", 3);
    const std::vector<float> indirect = render("indirect_lighting", 3);
    const std::vector<float> emission = render("emission_lighting", 3);
    bool any_indirect = false;
    for (std::size_t i = 0; i < direct.size(); ++i) {
        EXPECT_NEAR(direct[i] + indirect[i] + emission[i], picture.light[i], 1e-5);
        any_indirect = any_indirect || indirect[i] > 0;
    }
    EXPECT_EQ(emission[0], 1.0f);
    EXPECT_EQ(emission[3 * middle], 0.0f);
    EXPECT_TRUE(any_indirect);
}

TEST_F(PreviewChannels, LayersHoldTheLightOfTheirSourcesAndAreWeighed) {
    SceneNodeMaterial* const emitter = scene.addEmitter(3.0);
    PreviewScene::diffuse(emitter).layer = 1;
    scene.addSquare(0, 2, 0, 0.5, emitter);
    render("", 1);
    EXPECT_EQ(picture.at(16, 16).g, 3.0f);
    for (int layer = 0; layer < 2; ++layer) {
        Reference<LayerSetting> setting(new LayerSetting);
        setting->enabled = layer == 1;
        setting->layer_scale = new RGBSpectrum({1, 0.5, 0}, 1);
        scene.settings->layer_settings.push_back(setting);
    }
    render("", 1);
    EXPECT_EQ(picture.at(0, 0).g, 0.0f) << "the background's layer is off";
    EXPECT_EQ(picture.at(16, 16).r, 3.0f);
    EXPECT_EQ(picture.at(16, 16).g, 1.5f);
    EXPECT_EQ(picture.at(16, 16).b, 0.0f);
}

TEST(PreviewRegions, OnlyTheRegionsAreRendered) {
    PreviewScene scene(40, 30);
    scene.setUniformBackground(1.0);
    for (const std::int32_t factor : {1, 2}) {
        scene.settings->super_sample_factor.set(factor);
        scene.settings->render_regions.clear();
        RenderRegion region;
        region.x1 = 5, region.y1 = 10, region.x2 = 8, region.y2 = 20;
        scene.settings->render_regions.push_back(region);
        region.x1 = 30, region.y1 = 0, region.x2 = 50, region.y2 = 2;
        scene.settings->render_regions.push_back(region);
        const RenderedPicture picture = renderPreview(scene, 4);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                const bool inside = (x >= 5 && x < 8 && y >= 10 && y < 20) || (x >= 30 && y < 2);
                EXPECT_NEAR(picture.at(x, y).g, inside ? 1.0 : 0.0, 1e-5) << x << ", " << y;
            }
    }
}

TEST(PreviewFilter, SuperSamplingKeepsEvenLightAndSpreadsEdgesByTheFilter) {
    PreviewScene scene(40, 8);
    SceneNodeMaterial* const emitter = scene.addEmitter(1.0);
    // The left half, far beyond the picture.
    scene.addQuad({-40, 4, -40}, {0, 4, -40}, {0, 4, 40}, {-40, 4, 40}, emitter);
    scene.settings->super_sample_factor.set(4);
    const RenderedPicture picture = renderPreview(scene, 16);
    EXPECT_NEAR(picture.at(10, 4).g, 1.0, 1e-5);
    EXPECT_NEAR(picture.at(30, 4).g, 0.0, 1e-5);
    // The cubic B-spline with a support of 1.6 pixels: its integral from 0.5 pixels on. With x = 0.5 * 2 / 1.6 and
    // 1/6 (3 x^3 - 6 x^2 + 4) below 1, the integral from 0 to x is (3 x^4 / 4 - 2 x^3 + 4 x) / 6.
    const double x = 0.625;
    const double below = (0.75 * x * x * x * x - 2 * x * x * x + 4 * x) / 6;
    EXPECT_NEAR(picture.at(20, 4).g, 0.5 - below, 0.02);
    EXPECT_NEAR(picture.at(19, 4).g, 0.5 + below, 0.02);
}

TEST(PreviewToneMapping, LinearScalesAndEncodesForSRGB) {
    PreviewScene scene(4, 4);
    scene.setUniformBackground(0.2);
    EXPECT_EQ(shownOf(scene), sRGB(0.2));
    scene.tone_mapping->scale = 2.5;
    EXPECT_EQ(shownOf(scene), sRGB(0.5));
    scene.tone_mapping->scale = 100;
    EXPECT_EQ(shownOf(scene), 255);
    PreviewScene dark(4, 4);
    dark.setUniformBackground(0.008);
    EXPECT_EQ(shownOf(dark), sRGB(0.008));
    dark.tone_mapping->scale = 0.25;
    EXPECT_EQ(shownOf(dark), sRGB(0.002)) << "where the encoding is linear";
}

TEST(PreviewToneMapping, ReinhardMapsTheMeanOfThePictureToItsKey) {
    PreviewScene scene(4, 4);
    scene.tone_mapping->tone_mapper_kind = 1001;
    scene.tone_mapping->pre_scale = 1;
    scene.tone_mapping->post_scale = 0.9;
    scene.tone_mapping->burn = 3;
    // 0.18, whatever the light.
    const int expected = sRGB(0.9 * 0.18 * (1 + 0.18 / 9) / 1.18);
    scene.setUniformBackground(0.001);
    EXPECT_EQ(shownOf(scene), expected);
    PreviewScene bright(4, 4);
    bright.tone_mapping->tone_mapper_kind = 1001;
    bright.tone_mapping->pre_scale = 1;
    bright.tone_mapping->post_scale = 0.9;
    bright.tone_mapping->burn = 3;
    bright.setUniformBackground(1000);
    EXPECT_EQ(shownOf(bright), expected);
}

TEST(PreviewToneMapping, FilmicIsTheCurveOfHable) {
    PreviewScene scene(4, 4);
    scene.tone_mapping->tone_mapper_kind = 1003;
    scene.tone_mapping->scale = 0.5;
    scene.setUniformBackground(1.0);
    const auto curve = [](double x) {
        return (x * (0.15 * x + 0.05) + 0.004) / (x * (0.15 * x + 0.5) + 0.06) - 0.02 / 0.3;
    };
    EXPECT_EQ(shownOf(scene), sRGB(curve(1.0) / curve(11.2)));
}

TEST(PreviewToneMapping, CameraExposesTheFilmByItsSpeed) {
    PreviewScene scene(4, 4);
    scene.tone_mapping->tone_mapper_kind = 1002;
    scene.camera->aperture_radius = 0.001;
    scene.camera->autofocus = false;
    scene.camera->exposure_duration = 0.01;
    scene.tone_mapping->film_iso = 400;
    scene.tone_mapping->ev_adjust = -1;
    scene.setUniformBackground(1.0);
    // pi / 4 L t / N^2 with N = 0.036 / 0.002, against 78 / ISO.
    const double exposure = 3.14159265358979 / 4 * 683 * 0.01 / (18 * 18) / (78.0 / 400) / 2;
    EXPECT_EQ(shownOf(scene), sRGB(exposure)) << "without a file the curve is that of sRGB";
}

TEST(PreviewToneMapping, CameraTakesItsCurveFromAFile) {
    PreviewScene scene(4, 4);
    scene.tone_mapping->tone_mapper_kind = 1002;
    scene.camera->exposure_duration = 78 / 683.0 / 3.14159265358979;
    scene.camera->aperture_radius = scene.camera->lens_sensor_dist;
    scene.camera->autofocus = false;
    scene.tone_mapping->film_iso = 0.5;
    scene.setUniformBackground(1.0);
    const TempDir dir;
    std::ofstream(systemPath(dir.file("curve.txt"))) << "A film\ngraph\nI =\n0 0.25 0.5\n1\nB = 0 0.1 0.8 1\n";
    const std::string path = dir.file("curve.txt");
    scene.tone_mapping->response_function_path = path.c_str();
    EXPECT_EQ(shownOf(scene), std::lround(0.8 * 255)) << "an exposure of one half";
}

TEST(PreviewToneMapping, ThreeCurvesOfAFileAreThoseOfTheColours) {
    PreviewScene scene(4, 4);
    scene.tone_mapping->tone_mapper_kind = 1002;
    scene.tone_mapping->film_iso = 1e9;
    scene.camera->aperture_radius = scene.camera->lens_sensor_dist;
    scene.setUniformBackground(1.0);
    const TempDir dir;
    const std::string path = dir.file("curves.txt");
    std::ofstream(systemPath(path)) << "red\ngraph\nI =\n0 1\nB =\n0 0.2\ngreen\ngraph\nI =\n0 1\nB =\n0 0.4\n"
                                       "blue\ngraph\nI =\n0 1\nB =\n0 0.6\n";
    scene.tone_mapping->response_function_path = path.c_str();
    const RenderedPicture picture = renderPreview(scene, 1);
    EXPECT_EQ(picture.bytes[0], 51);
    EXPECT_EQ(picture.bytes[1], 102);
    EXPECT_EQ(picture.bytes[2], 153);
}

TEST(PreviewToneMapping, CurvesThatAreNotFiniteAreNotTaken) {
    PreviewScene scene(4, 4);
    scene.setUniformBackground(1.0);
    const TempDir dir;
    const std::string path = dir.file("curve.txt");
    std::ofstream(systemPath(path)) << "A film\ngraph\nI =\n0 1\nB = nan nan\n";
    scene.tone_mapping->response_function_path = path.c_str();
    scene.tone_mapping->tone_mapper_kind = 1002;
    scene.tone_mapping->film_iso = 1e9;
    scene.camera->aperture_radius = scene.camera->lens_sensor_dist;
    testing::internal::CaptureStderr();
    EXPECT_EQ(shownOf(scene), 255);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("holds no curve"), std::string::npos);

    scene.tone_mapping->tone_mapper_kind = 1000;
    scene.settings->colour_curves = new ColourCurves;
    Vector<float> knots;
    for (const float at : {0.0f, std::numeric_limits<float>::quiet_NaN()})
        knots.push_back(at);
    scene.settings->colour_curves->overall = new SceneNodeCurve1D(knots, knots);
    EXPECT_EQ(shownOf(scene), 255);
}

TEST(PreviewToneMapping, WhitePointIsShownWithoutAColour) {
    PreviewScene scene(4, 4);
    scene.setUniformBackground(0.5);
    scene.settings->white_point = new WhitePoint(1.0 / 3, 1.0 / 3);
    EXPECT_EQ(shownOf(scene), sRGB(0.5));
    // Warmer than even light: what is shown becomes bluer.
    scene.settings->white_point = new WhitePoint(0.45, 0.41);
    const RenderedPicture picture = renderPreview(scene, 1);
    EXPECT_LT(picture.bytes[0], picture.bytes[1]);
    EXPECT_LT(picture.bytes[1], picture.bytes[2]);
}

TEST(PreviewToneMapping, ColourCurvesComeLast) {
    PreviewScene scene(4, 4);
    scene.setUniformBackground(1.0);
    scene.settings->colour_curves = new ColourCurves;
    Vector<float> knots;
    Vector<float> values;
    for (const float at : {0.0f, 1.0f}) {
        knots.push_back(at);
        values.push_back(0.4f * at);
    }
    scene.settings->colour_curves->green = new SceneNodeCurve1D(knots, values);
    const RenderedPicture picture = renderPreview(scene, 1);
    EXPECT_EQ(picture.bytes[0], 255);
    EXPECT_EQ(picture.bytes[1], 102);
}

TEST(PreviewFiles, PortableFloatMapHoldsTheLightFromTheLowestRowOn) {
    PreviewScene scene(4, 2);
    scene.setUniformBackground(2.0);
    scene.addQuad({-9, 4, 0}, {9, 4, 0}, {9, 4, 9}, {-9, 4, 9}, scene.addEmitter(0.25));
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene, "light.PFM");
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    const std::string bytes = readFileBytes("light.PFM");
    const std::string head = "PF\n4 2\n-1.0\n";
    ASSERT_EQ(bytes.size(), head.size() + 4 * 2 * 3 * 4);
    EXPECT_EQ(bytes.substr(0, head.size()), head);
    float first = 0;
    float last = 0;
    std::memcpy(&first, bytes.data() + head.size(), 4);
    std::memcpy(&last, bytes.data() + bytes.size() - 4, 4);
    EXPECT_EQ(first, 2.0f);
    EXPECT_EQ(last, 0.25f);
}

TEST(PreviewFiles, RadianceFileIsWritten) {
    PreviewScene scene(4, 2);
    scene.setUniformBackground(2.0);
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene, "light.hdr");
    renderer.start();
    EXPECT_TRUE(renderer.wait());
    EXPECT_EQ(readFileBytes("light.hdr").substr(0, 10), "#?RADIANCE");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 2) << "the library and the picture alone";
}

TEST(PreviewFiles, PictureIsWrittenWhenAsked) {
    PreviewScene scene(4, 2);
    const PreviewFolder folder;
    const PreviewRenderer renderer(folder, scene, "");
    auto* const write = folder.get<decltype(VelmarPreview_WriteImage)>("VelmarPreview_WriteImage");
    EXPECT_EQ(write(renderer.handle(), "early.pfm"), VELMAR_PREVIEW_ERROR) << "not begun";
    renderer.start();
    ASSERT_TRUE(renderer.wait());
    EXPECT_EQ(renderer.progress().pictures, 0u);
    EXPECT_EQ(write(renderer.handle(), "asked.pfm"), 0);
    EXPECT_TRUE(std::filesystem::exists(folder.path("asked.pfm")));
    EXPECT_EQ(write(renderer.handle(), nullptr), VELMAR_PREVIEW_ERROR);
    testing::internal::CaptureStderr();
    EXPECT_EQ(write(renderer.handle(), "no such folder/picture.png"), VELMAR_PREVIEW_ERROR);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("'no such folder/picture.png': "), std::string::npos);
}

TEST(PreviewFiles, PictureThatCannotBeWrittenIsReported) {
    PreviewScene scene(4, 2);
    const PreviewFolder folder;
    testing::internal::CaptureStderr();
    {
        const PreviewRenderer renderer(folder, scene, "no such folder/picture.png");
        renderer.start();
        EXPECT_TRUE(renderer.wait());
        EXPECT_EQ(renderer.progress().state, VELMAR_PREVIEW_FINISHED);
    }
    EXPECT_NE(testing::internal::GetCapturedStderr().find("'no such folder/picture.png': "), std::string::npos);
}
