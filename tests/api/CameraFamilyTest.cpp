#include "velmarapi.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/Handles.h"
#include "tests/support/System.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <pugixml.hpp>

namespace CameraFamilyTests {

using namespace TestSupport;

namespace {

/// Writes the camera, which it takes over, and reads the document back.
class CameraDocument {
  public:
    explicit CameraDocument(VelmarCamera* camera) {
        VelmarScene* const scene = VelmarScene_Create();
        VelmarScene_AddCamera(scene, camera);
        document = documentOf(scene);
        VelmarScene_Delete(scene);
        xml.load_buffer(document.data(), document.size());
        element = xml.child("scene").child("camera");
    }

    std::string text(const char* name) const { return element.child_value(name); }
    double number(const char* name) const { return element.child(name).text().as_double(NAN); }

    std::string document;
    pugi::xml_document xml;
    pugi::xml_node element;
};

} // namespace

TEST(CameraFamily, ANewCameraHasItsDefaults) {
    EXPECT_EQ(CameraDocument(VelmarCamera_Create()).document, TestSupport::document({golden("camera/new")}));
}

TEST(CameraFamily, ANewCameraIsCountedByNobody) {
    VelmarCamera* const camera = VelmarCamera_Create();
    EXPECT_EQ(refCountOf(camera), 0);
    CameraDocument document(camera);
}

TEST(CameraFamily, EachSetterReachesItsElement) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetLensRadius(camera, 1.5);
    VelmarCamera_SetFocusDistance(camera, 2.5);
    VelmarCamera_SetSensorWidth(camera, 3.5);
    VelmarCamera_SetLensSensorDistance(camera, 4.5);
    VelmarCamera_SetExposureDuration(camera, 5.5);
    VelmarCamera_SetLensShiftUpDistance(camera, 6.5);
    VelmarCamera_SetLensShiftRightDistance(camera, 7.5);
    VelmarCamera_SetAutofocus(camera, 0);
    VelmarCamera_SetPosition(camera, 1, 2, 3);
    VelmarCamera_SetUp(camera, 4, 5, 6);
    VelmarCamera_SetForwards(camera, 7, 8, 9);
    EXPECT_EQ(CameraDocument(camera).document, TestSupport::document({golden("camera/full")}));
}

TEST(CameraFamily, AnyByteButZeroIsTrue) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetAutofocus(camera, 0);
    VelmarCamera_SetAutofocus(camera, 2);
    EXPECT_TRUE(CameraDocument(camera).element.child("autofocus"));
}

TEST(CameraFamily, SettersWorkAfterTheSceneOwnsTheCamera) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarScene_AddCamera(scene, camera);
    EXPECT_EQ(refCountOf(camera), 1);
    VelmarCamera_SetFocusDistance(camera, 5);
    EXPECT_NE(documentOf(scene).find("<focus_distance>5</focus_distance>"), std::string::npos);
    VelmarScene_Delete(scene);
}

TEST(CameraFamily, TheFieldOfViewLandsInTheApertureAndTheWidthInTheSensor) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetLensSensorDistance(camera, 0.05);
    VelmarCamera_SetFov(camera, std::numbers::pi / 2, 0.036);
    const CameraDocument document(camera);
    EXPECT_NEAR(document.number("aperture_radius"), 0.018, 1e-15);
    EXPECT_EQ(document.text("sensor_width"), "0.036");
    EXPECT_EQ(document.text("lens_sensor_dist"), "0.05");
}

TEST(CameraFamily, ALaterLensRadiusOverwritesThatOfTheFieldOfView) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetFov(camera, std::numbers::pi / 2, 0.036);
    VelmarCamera_SetLensRadius(camera, 0.25);
    EXPECT_EQ(CameraDocument(camera).text("aperture_radius"), "0.25");
}

TEST(CameraFamily, SetAperatureOnlyComputes) {
    VelmarCamera* const camera = VelmarCamera_Create();
    EXPECT_EQ(VelmarCamera_SetAperature(camera, 4.0, 2.0), 0.25);
    EXPECT_TRUE(std::isinf(VelmarCamera_SetAperature(camera, 0.0, 2.0)));
    EXPECT_TRUE(std::isnan(VelmarCamera_SetAperature(camera, 0.0, 0.0)));
    EXPECT_EQ(CameraDocument(camera).document, TestSupport::document({golden("camera/new")}));
}

TEST(CameraFamily, SetAperatureDoesNotLookAtTheCamera) {
    EXPECT_EQ(VelmarCamera_SetAperature(nullptr, 1.0, 1.0), 0.5);
}

TEST(CameraFamily, ThePositionSetLastStandsInTheOneKeyFrame) {
    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetPosition(camera, 1, 2, 3);
    VelmarCamera_SetPosition(camera, 4, 5, 6);
    const CameraDocument document(camera);
    const auto frames = document.element.children("keyframe");
    ASSERT_EQ(std::distance(frames.begin(), frames.end()), 1);
    EXPECT_STREQ(frames.begin()->child_value("pos"), "4 5 6");
}

TEST(CameraFamily, FourSettersAreThoseOfToneMapping) {
    for (const auto& [camera_name, tonemapping_name] :
         {std::pair{"VelmarCamera_SetLensRadius", "VelmarTonemapping_SetScale"},
          {"VelmarCamera_SetFocusDistance", "VelmarTonemapping_SetPreScale"},
          {"VelmarCamera_SetSensorWidth", "VelmarTonemapping_SetPostScale"},
          {"VelmarCamera_SetLensSensorDistance", "VelmarTonemapping_SetBurn"}}) {
        ASSERT_NE(exportedFunction(camera_name), nullptr) << camera_name;
        EXPECT_EQ(exportedFunction(camera_name), exportedFunction(tonemapping_name)) << camera_name;
    }
}

TEST(CameraFamily, ToneMappingsSettersSetACamerasFields) {
    VelmarCamera* const camera = VelmarCamera_Create();
    auto* const as_tonemapping = reinterpret_cast<VelmarTonemapping*>(camera);
    VelmarTonemapping_SetScale(as_tonemapping, 1.5);
    VelmarTonemapping_SetPreScale(as_tonemapping, 2.5);
    VelmarTonemapping_SetPostScale(as_tonemapping, 3.5);
    VelmarTonemapping_SetBurn(as_tonemapping, 4.5);
    const CameraDocument document(camera);
    EXPECT_EQ(document.text("aperture_radius"), "1.5");
    EXPECT_EQ(document.text("focus_distance"), "2.5");
    EXPECT_EQ(document.text("sensor_width"), "3.5");
    EXPECT_EQ(document.text("lens_sensor_dist"), "4.5");
}

} // namespace CameraFamilyTests
