#include "velmarapi.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/Handles.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace BackgroundFamilyTests {

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
    EXPECT_EQ(documentOfNode(background), document({golden("background/uniform")}));
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
              document({replaced(golden("background/sun_sky"),
                                 {{"1 1 1", "0 -3 4"}, {"captured-simulation", "no such model"}})}));
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

} // namespace BackgroundFamilyTests
