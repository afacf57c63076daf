#include "velmarapi.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/Handles.h"

#include <gtest/gtest.h>

namespace MaterialFamilyTests {

using namespace TestSupport;

namespace {

/// Writes the node, which it takes over.
std::string documentOfNode(VelmarMaterialNode* node) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddMaterial(scene, node);
    const std::string text = documentOf(scene);
    VelmarScene_Delete(scene);
    return text;
}

} // namespace

TEST(MaterialFamily, NodeHasADefaultMaterialOfItsName) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode("Wood");
    EXPECT_EQ(refCountOf(node), 0);
    EXPECT_EQ(documentOfNode(node), document({golden("material/plain")}));
}

TEST(MaterialFamily, DiffuseMaterialBringsNameAndColourToItsNode) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode("Wood");
    VelmarMaterial* const material = VelmarMaterial_CreateDiffuse("Red & white", 0.9, 0.1, 0);
    EXPECT_EQ(refCountOf(material), 0);
    VelmarMaterial_AddToNode(node, material);
    EXPECT_EQ(refCountOf(material), 1);
    EXPECT_EQ(documentOfNode(node), document({golden("material/coloured")}));
}

TEST(MaterialFamily, MaterialOfTwoNodesIsCountedTwice) {
    VelmarMaterialNode* const first = VelmarMaterial_CreateNode("1");
    VelmarMaterialNode* const second = VelmarMaterial_CreateNode("2");
    VelmarMaterial* const material = VelmarMaterial_CreateDiffuse("m", 0, 0, 0);
    VelmarMaterial_AddToNode(first, material);
    VelmarMaterial_AddToNode(second, material);
    EXPECT_EQ(refCountOf(material), 2);
    // Another material in its place releases the first; under the sanitizers one that isn't freed shows as a leak.
    VelmarMaterial_AddToNode(first, VelmarMaterial_CreateDiffuse("n", 0, 0, 0));
    EXPECT_EQ(refCountOf(material), 1);
    VelmarMaterial_Delete(second);
    VelmarMaterial_Delete(first);
}

TEST(MaterialFamily, NullMaterialEmptiesTheNode) {
    VelmarMaterialNode* const node = VelmarMaterial_CreateNode("Wood");
    VelmarMaterial_AddToNode(node, nullptr);
    EXPECT_EQ(documentOfNode(node), document({golden("material/empty")}));
}

TEST(MaterialFamily, DeleteTakesNodesMaterialsAndNull) {
    VelmarMaterial_Delete(VelmarMaterial_CreateNode("n"));
    VelmarMaterial_Delete(VelmarMaterial_CreateDiffuse("m", 1, 1, 1));
    VelmarMaterial_Delete(nullptr);
}

} // namespace MaterialFamilyTests
