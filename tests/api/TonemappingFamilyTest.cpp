#include "velmarapi.h"

#include "tests/api/SceneDocument.h"

#include <gtest/gtest.h>

namespace TonemappingFamilyTests {

using namespace TestSupport;

namespace {

/// Writes the node, which it takes over.
std::string documentOfNode(VelmarTonemapping* tonemapping) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddTonemapping(scene, tonemapping);
    const std::string text = documentOf(scene);
    VelmarScene_Delete(scene);
    return text;
}

} // namespace

TEST(TonemappingFamily, SetsEachFieldOfTheReinhardKind) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    VelmarTonemapping_SetType(tonemapping, VELMAR_TONEMAPPING_REINHARD);
    VelmarTonemapping_SetPreScale(tonemapping, 1.5);
    VelmarTonemapping_SetPostScale(tonemapping, 2.5);
    VelmarTonemapping_SetBurn(tonemapping, 3.5);
    EXPECT_EQ(documentOfNode(tonemapping),
              document({replaced(golden("tonemapping/reinhard"), {{"<pre_scale>4<", "<pre_scale>1.5<"},
                                                                  {"<post_scale>1<", "<post_scale>2.5<"},
                                                                  {"<burn>6<", "<burn>3.5<"}})}));
}

TEST(TonemappingFamily, SetsEachFieldOfTheCameraKind) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    VelmarTonemapping_SetType(tonemapping, VELMAR_TONEMAPPING_CAMERA);
    VelmarTonemapping_SetIso(tonemapping, 400);
    VelmarTonemapping_EvAdjust(tonemapping, -0.5);
    VelmarTonemapping_SetResponseFunctionPath(tonemapping, "f.txt");
    EXPECT_EQ(documentOfNode(tonemapping),
              document({replaced(golden("tonemapping/camera"), {{"data/camera_response_functions/dscs315.txt", "f.txt"},
                                                                {"<film_iso>200<", "<film_iso>400<"},
                                                                {"<ev_adjust>0<", "<ev_adjust>-0.5<"}})}));
}

TEST(TonemappingFamily, TheScaleServesTwoKinds) {
    for (const auto& [type, element] :
         {std::pair{VELMAR_TONEMAPPING_LINEAR, "linear"}, {VELMAR_TONEMAPPING_FILMIC, "filmic"}}) {
        VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
        VelmarTonemapping_SetType(tonemapping, type);
        VelmarTonemapping_SetScale(tonemapping, 0.25);
        EXPECT_EQ(
            documentOfNode(tonemapping),
            document({replaced(golden("tonemapping/linear"), {{"linear", element}, {"<scale>1<", "<scale>0.25<"}})}));
    }
}

TEST(TonemappingFamily, AnyTypeCodeIsStoredAndUnknownOnesWriteNothing) {
    for (const int type : {5, -1}) {
        VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
        VelmarTonemapping_SetType(tonemapping, type);
        EXPECT_EQ(documentOfNode(tonemapping),
                  document({replaced(golden("tonemapping/linear"),
                                     {{"\t<linear>\n\t\t<scale>1</scale>\n\t</linear>\n", ""}})}));
    }
}

TEST(TonemappingFamily, ANodeThatWasNeverAddedIsDeletedByItsHost) {
    VelmarTonemapping_Delete(VelmarTonemapping_Create());
}

} // namespace TonemappingFamilyTests
