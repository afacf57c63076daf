#include "velmarapi.h"

#include "tests/support/FileBytes.h"
#include "tests/support/Handles.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace RenderSettingsFamilyTests {

using namespace TestSupport;

namespace {

/// Writes the node, which it takes over, and returns what follows its name.
std::string settingsOf(VelmarRenderSettings* settings) {
    const TempDir dir;
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddRenderSettings(scene, settings);
    VelmarScene_WriteToXML(scene, dir.file("scene.xml").c_str());
    VelmarScene_Delete(scene);
    const std::string document = readFileBytes(dir.file("scene.xml"));
    const std::string name = withSystemLineEnds("<name>Render Settings</name>\n");
    const std::size_t begin = document.find(name) + name.size();
    return document.substr(begin, document.find("\t</renderer_settings>") - begin);
}

} // namespace

TEST(RenderSettingsFamily, AFreshNodeWritesNoSetting) {
    EXPECT_EQ(settingsOf(VelmarRenderSettings_Create()), "");
}

TEST(RenderSettingsFamily, AFreshNodeIsCountedByNobody) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    EXPECT_EQ(refCountOf(settings), 0);
    VelmarRenderSettings_Delete(settings);
}

TEST(RenderSettingsFamily, ASettingIsWrittenOnceItIsSet) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_Width(settings, 800);
    EXPECT_EQ(settingsOf(settings), withSystemLineEnds("\t\t<width>800</width>\n"));
}

TEST(RenderSettingsFamily, EachSetterReachesItsElement) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_Width(settings, 1920);
    VelmarRenderSettings_Height(settings, -1080);
    VelmarRenderSettings_SuperSampleFactor(settings, 3);
    VelmarRenderSettings_HaltTime(settings, -1.0);
    VelmarRenderSettings_HaltSamplesPerPixel(settings, 0.5);
    VelmarRenderSettings_ImageSavePeriod(settings, 60);
    VelmarRenderSettings_Metropolis(settings, 1);
    VelmarRenderSettings_Bidirectional(settings, 0);
    VelmarRenderSettings_Dithering(settings, 1);
    VelmarRenderSettings_Vignetting(settings, 0);
    VelmarRenderSettings_ShadowPass(settings, 1);
    VelmarRenderSettings_RenderForegroundAlpha(settings, 0);
    VelmarRenderSettings_InfoOverlay(settings, 1);
    VelmarRenderSettings_DepthPass(settings, 0);
    VelmarRenderSettings_MaterialIdTracer(settings, 1);
    EXPECT_EQ(settingsOf(settings), withSystemLineEnds(R"(		<bidirectional>false</bidirectional>
		<metropolis>true</metropolis>
		<render_foreground_alpha>false</render_foreground_alpha>
		<shadow_pass>true</shadow_pass>
		<info_overlay>true</info_overlay>
		<vignetting>false</vignetting>
		<dithering>true</dithering>
		<depth_channel>false</depth_channel>
		<material_id_channel>true</material_id_channel>
		<width>1920</width>
		<height>-1080</height>
		<super_sample_factor>3</super_sample_factor>
		<halt_time>-1</halt_time>
		<halt_samples_per_pixel>0.5</halt_samples_per_pixel>
		<image_save_period>60</image_save_period>
)"));
}

TEST(RenderSettingsFamily, AFalseDepthPassIsWrittenExplicitly) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_DepthPass(settings, 0);
    EXPECT_EQ(settingsOf(settings), withSystemLineEnds("\t\t<depth_channel>false</depth_channel>\n"));
}

TEST(RenderSettingsFamily, AnyByteButZeroIsTrue) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_Metropolis(settings, 200);
    EXPECT_EQ(settingsOf(settings), withSystemLineEnds("\t\t<metropolis>true</metropolis>\n"));
}

TEST(RenderSettingsFamily, DeleteAcceptsNull) {
    VelmarRenderSettings_Delete(nullptr);
}

TEST(RenderSettingsFamily, DeleteIsTheSharedOne) {
    EXPECT_EQ(exportedFunction("VelmarRenderSettings_Delete"), exportedFunction("VelmarScene_Delete"));
}

} // namespace RenderSettingsFamilyTests
