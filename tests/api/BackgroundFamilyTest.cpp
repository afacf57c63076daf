#include "velmarapi.h"

#include "tests/api/Library.h"
#include "tests/api/SceneDocument.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

using namespace TestSupport;

namespace {

/// Writes the node, which it takes over.
std::string documentOfNode(VelmarBackground* node) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddBackground(scene, node);
    const std::string text = documentOf(scene);
    VelmarScene_Delete(scene);
    return text;
}

/// A block of the C heap that begins with `object`, which it counts as a holder does.
void* holderRecordOf(void* object) {
    const std::int64_t count = refCountOf(object) + 1;
    std::memcpy(static_cast<char*>(object) + 8, &count, sizeof count);
    void* const record = std::malloc(sizeof object);
    std::memcpy(record, &object, sizeof object);
    return record;
}

} // namespace

TEST(BackgroundFamily, UniformBackgroundIsABlackSurfaceThatEmits) {
    VelmarBackground* const background = VelmarBackground_CreateUniform(0.1, 0.2, 0.3, 2);
    EXPECT_EQ(refCountOf(background), 0);
    EXPECT_EQ(documentOfNode(background), document("\t<background_settings>\n"
                                                   "\t\t<uid>1</uid>\n"
                                                   "\t\t<name>Background Settings</name>\n"
                                                   "\t\t<background_material>\n"
                                                   "\t\t\t<material>\n"
                                                   "\t\t\t\t<name></name>\n"
                                                   "\t\t\t\t<diffuse>\n"
                                                   "\t\t\t\t\t<albedo>\n"
                                                   "\t\t\t\t\t\t<constant>\n"
                                                   "\t\t\t\t\t\t\t<uniform>\n"
                                                   "\t\t\t\t\t\t\t\t<value>0</value>\n"
                                                   "\t\t\t\t\t\t\t</uniform>\n"
                                                   "\t\t\t\t\t\t</constant>\n"
                                                   "\t\t\t\t\t</albedo>\n"
                                                   "\t\t\t\t\t<base_emission>\n"
                                                   "\t\t\t\t\t\t<constant>\n"
                                                   "\t\t\t\t\t\t\t<uniform>\n"
                                                   "\t\t\t\t\t\t\t\t<value>2</value>\n"
                                                   "\t\t\t\t\t\t\t</uniform>\n"
                                                   "\t\t\t\t\t\t</constant>\n"
                                                   "\t\t\t\t\t</base_emission>\n"
                                                   "\t\t\t\t\t<emission>\n"
                                                   "\t\t\t\t\t\t<constant>\n"
                                                   "\t\t\t\t\t\t\t<rgb>\n"
                                                   "\t\t\t\t\t\t\t\t<rgb>0.1 0.2 0.3</rgb>\n"
                                                   "\t\t\t\t\t\t\t\t<gamma>2.2</gamma>\n"
                                                   "\t\t\t\t\t\t\t</rgb>\n"
                                                   "\t\t\t\t\t\t</constant>\n"
                                                   "\t\t\t\t\t</emission>\n"
                                                   "\t\t\t\t</diffuse>\n"
                                                   "\t\t\t</material>\n"
                                                   "\t\t</background_material>\n"
                                                   "\t</background_settings>\n"));
}

TEST(BackgroundFamily, StrengthOfZeroKeepsTheColour) {
    const std::string text = documentOfNode(VelmarBackground_CreateUniform(0.1, 0.2, 0.3, 0));
    const std::size_t base_emission = text.find("<base_emission>");
    ASSERT_NE(base_emission, std::string::npos);
    EXPECT_LT(text.find("<value>0</value>", base_emission), text.find("</base_emission>"));
    EXPECT_NE(text.find("<rgb>0.1 0.2 0.3</rgb>"), std::string::npos);
}

TEST(BackgroundFamily, SunAndSkyTakeDirectionAndModelAsGiven) {
    EXPECT_EQ(documentOfNode(VelmarBackground_CreateSunSky(0, -3, 4, "no such model")),
              document("\t<background_settings>\n"
                       "\t\t<uid>1</uid>\n"
                       "\t\t<name>Background Settings</name>\n"
                       "\t\t<background_material>\n"
                       "\t\t\t<material>\n"
                       "\t\t\t\t<name></name>\n"
                       "\t\t\t\t<sunsky>\n"
                       "\t\t\t\t\t<sundir>0 -3 4</sundir>\n"
                       "\t\t\t\t\t<turbidity>2</turbidity>\n"
                       "\t\t\t\t\t<extra_atmospheric>false</extra_atmospheric>\n"
                       "\t\t\t\t\t<enable_sky>true</enable_sky>\n"
                       "\t\t\t\t\t<sun_layer>0</sun_layer>\n"
                       "\t\t\t\t\t<sky_layer>0</sky_layer>\n"
                       "\t\t\t\t\t<model>no such model</model>\n"
                       "\t\t\t\t</sunsky>\n"
                       "\t\t\t</material>\n"
                       "\t\t</background_material>\n"
                       "\t</background_settings>\n"));
}

TEST(BackgroundFamily, DeleteAcceptsNull) {
    VelmarBackground_Delete(nullptr);
}

TEST(BackgroundFamily, DeleteReleasesWhatTheRecordHolds) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode("n");
    VelmarMaterial* const material = VelmarMaterial_CreateDiffuse("m", 0, 0, 0);
    VelmarMaterial_AddToNode(node, material);
    VelmarBackground_Delete(holderRecordOf(material));
    EXPECT_EQ(refCountOf(material), 1);
    VelmarMaterial_Delete(node);
}

TEST(BackgroundFamily, DeleteOfTheLastHolderDestroysTheObject) {
    VelmarMaterialNode* const held = VelmarMaterial_CreateNode("n");
    VelmarMaterial* const shared = VelmarMaterial_CreateDiffuse("m", 0, 0, 0);
    VelmarMaterialNode* const other = VelmarMaterial_CreateNode("o");
    VelmarMaterial_AddToNode(held, shared);
    VelmarMaterial_AddToNode(other, shared);
    VelmarBackground_Delete(holderRecordOf(held));
    EXPECT_EQ(refCountOf(shared), 1) << "the node that went has released its material";
    VelmarMaterial_Delete(other);
}

TEST(BackgroundFamily, DeleteAcceptsARecordThatHoldsNothing) {
    VelmarBackground_Delete(std::calloc(1, sizeof(void*)));
}
