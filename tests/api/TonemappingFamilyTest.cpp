#include "velmarapi.h"

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using namespace TestSupport;

namespace {

std::string settingsOf(VelmarTonemapping* tonemapping) {
    const TempDir dir;
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddTonemapping(scene, tonemapping);
    VelmarScene_WriteToXML(scene, dir.file("scene.xml").c_str());
    VelmarScene_Delete(scene);
    const std::string document = readFileBytes(dir.file("scene.xml"));
    const std::string name = withSystemLineEnds("<name>Tone Mapping</name>\n");
    const std::size_t begin = document.find(name) + name.size();
    return document.substr(begin, document.find("\t</tonemapping>") - begin);
}

} // namespace

TEST(TonemappingFamily, SetsEachFieldOfTheReinhardKind) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    VelmarTonemapping_SetType(tonemapping, VELMAR_TONEMAPPING_REINHARD);
    VelmarTonemapping_SetPreScale(tonemapping, 1.5);
    VelmarTonemapping_SetPostScale(tonemapping, 2.5);
    VelmarTonemapping_SetBurn(tonemapping, 3.5);
    EXPECT_EQ(settingsOf(tonemapping), withSystemLineEnds("\t\t<reinhard>\n"
                                                          "\t\t\t<pre_scale>1.5</pre_scale>\n"
                                                          "\t\t\t<post_scale>2.5</post_scale>\n"
                                                          "\t\t\t<burn>3.5</burn>\n"
                                                          "\t\t</reinhard>\n"));
}

TEST(TonemappingFamily, SetsEachFieldOfTheCameraKind) {
    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    VelmarTonemapping_SetType(tonemapping, VELMAR_TONEMAPPING_CAMERA);
    VelmarTonemapping_SetIso(tonemapping, 400);
    VelmarTonemapping_EvAdjust(tonemapping, -0.5);
    VelmarTonemapping_SetResponseFunctionPath(tonemapping, "f.txt");
    EXPECT_EQ(settingsOf(tonemapping),
              withSystemLineEnds("\t\t<camera>\n"
                                 "\t\t\t<response_function_path>f.txt</response_function_path>\n"
                                 "\t\t\t<film_iso>400</film_iso>\n"
                                 "\t\t\t<ev_adjust>-0.5</ev_adjust>\n"
                                 "\t\t</camera>\n"));
}

TEST(TonemappingFamily, TheScaleServesTwoKinds) {
    for (const auto& [type, element] :
         {std::pair{VELMAR_TONEMAPPING_LINEAR, "linear"}, {VELMAR_TONEMAPPING_FILMIC, "filmic"}}) {
        VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
        VelmarTonemapping_SetType(tonemapping, type);
        VelmarTonemapping_SetScale(tonemapping, 0.25);
        EXPECT_EQ(settingsOf(tonemapping),
                  withSystemLineEnds(std::string("\t\t<") + element + ">\n\t\t\t<scale>0.25</scale>\n\t\t</" + element +
                                     ">\n"));
    }
}

TEST(TonemappingFamily, AnyTypeCodeIsStoredAndUnknownOnesWriteNothing) {
    for (const int type : {5, -1}) {
        VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
        VelmarTonemapping_SetType(tonemapping, type);
        EXPECT_EQ(settingsOf(tonemapping), "");
    }
}

TEST(TonemappingFamily, ANodeThatWasNeverAddedIsDeletedByItsHost) {
    VelmarTonemapping_Delete(VelmarTonemapping_Create());
}
