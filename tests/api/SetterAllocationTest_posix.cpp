#include "velmarapi.h"

#include "tests/support/AllocationCount.h"

#include <gtest/gtest.h>

using namespace TestSupport;

TEST(SetterAllocation, CountSeesTheLibrarysAllocations) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    EXPECT_EQ(
        allocationsOf([&] { VelmarTonemapping_SetResponseFunctionPath(tonemapping, "a text of some length.txt"); }),
        1U);
    VelmarTonemapping_Delete(tonemapping);
}

TEST(SetterAllocation, NoneForToneMapping) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    EXPECT_EQ(allocationsOf([&] {
                  VelmarTonemapping_SetType(tonemapping, VELMAR_TONEMAPPING_CAMERA);
                  VelmarTonemapping_SetScale(tonemapping, 0.5);
                  VelmarTonemapping_SetPreScale(tonemapping, 0.5);
                  VelmarTonemapping_SetPostScale(tonemapping, 0.5);
                  VelmarTonemapping_SetBurn(tonemapping, 0.5);
                  VelmarTonemapping_SetIso(tonemapping, 400);
                  VelmarTonemapping_EvAdjust(tonemapping, 1);
              }),
              0U);
    VelmarTonemapping_Delete(tonemapping);
}

TEST(SetterAllocation, NoneForACameraThatHasItsKeyFrame) {
    VelmarCamera* const camera = VelmarCamera_Create();
    EXPECT_EQ(allocationsOf([&] { VelmarCamera_SetPosition(camera, 1, 2, 3); }), 1U);
    EXPECT_EQ(allocationsOf([&] {
                  VelmarCamera_SetLensRadius(camera, 0.01);
                  VelmarCamera_SetAutofocus(camera, 1);
                  VelmarCamera_SetExposureDuration(camera, 0.01);
                  VelmarCamera_SetLensSensorDistance(camera, 0.03);
                  VelmarCamera_SetLensShiftRightDistance(camera, 0.001);
                  VelmarCamera_SetLensShiftUpDistance(camera, 0.001);
                  VelmarCamera_SetSensorWidth(camera, 0.035);
                  VelmarCamera_SetFocusDistance(camera, 3);
                  VelmarCamera_SetForwards(camera, 0, 1, 0);
                  VelmarCamera_SetUp(camera, 0, 0, 1);
                  VelmarCamera_SetPosition(camera, 0, -3, 1);
                  VelmarCamera_SetFov(camera, 45, 0.035);
                  VelmarCamera_SetAperature(camera, 1, 2);
              }),
              0U);
    // Scenes delete their camera; alone it is one more node.
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddCamera(scene, camera);
    VelmarScene_Delete(scene);
}

TEST(SetterAllocation, NoneForRenderSettings) {
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    EXPECT_EQ(allocationsOf([&] {
                  VelmarRenderSettings_Width(settings, 1920);
                  VelmarRenderSettings_Height(settings, 1080);
                  VelmarRenderSettings_SuperSampleFactor(settings, 2);
                  VelmarRenderSettings_HaltTime(settings, 60);
                  VelmarRenderSettings_HaltSamplesPerPixel(settings, 100);
                  VelmarRenderSettings_ImageSavePeriod(settings, 10);
                  VelmarRenderSettings_Metropolis(settings, 1);
                  VelmarRenderSettings_Bidirectional(settings, 1);
                  VelmarRenderSettings_Dithering(settings, 1);
                  VelmarRenderSettings_Vignetting(settings, 1);
                  VelmarRenderSettings_ShadowPass(settings, 1);
                  VelmarRenderSettings_RenderForegroundAlpha(settings, 1);
                  VelmarRenderSettings_InfoOverlay(settings, 1);
                  VelmarRenderSettings_DepthPass(settings, 1);
                  VelmarRenderSettings_MaterialIdTracer(settings, 1);
              }),
              0U);
    VelmarRenderSettings_Delete(settings);
}

TEST(SetterAllocation, NoneForTheSettingsOfAMesh) {
    VelmarMesh* const mesh = VelmarMesh_Create("mesh");
    EXPECT_EQ(allocationsOf([&] {
                  VelmarMesh_NormalSmoothing(mesh, 1);
                  VelmarMesh_SetNormalSmoothing(mesh, 0);
                  VelmarMesh_ViewDependentSubdivision(mesh, 1);
                  VelmarMesh_MaxNumSubdivisions(mesh, 3);
              }),
              0U);
    VelmarMesh_Delete(mesh);
}

TEST(SetterAllocation, PlacingAModelMakesItsNewRotationAlone) {
    VelmarMesh* const mesh = VelmarMesh_Create("mesh");
    VelmarModel* const model = VelmarModel_Create("model", mesh);
    constexpr float rotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    constexpr float position[3] = {1, 2, 3};
    EXPECT_EQ(allocationsOf([&] { VelmarModel_SetTransformation(model, rotation, position, 0); }), 1U);
    VelmarModel_Delete(model);
}
