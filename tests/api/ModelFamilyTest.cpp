#include "velmarapi.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/Handles.h"

#include <gtest/gtest.h>
#include <string>

namespace ModelFamilyTests {

using namespace TestSupport;

namespace {

constexpr float identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr float quarter_turn[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
constexpr float position[3] = {0.5f, 2, -3};

/// A model of an empty mesh in a scene that holds nothing else.
class ModelFamily : public testing::Test {
  protected:
    ModelFamily() { VelmarScene_AddModel(scene, model); }
    ~ModelFamily() override { VelmarScene_Delete(scene); }

    /// What the document holds between the model's geometry and its materials.
    std::string placement() const {
        const std::string text = documentOf(scene);
        const std::string begin_mark = withSystemLineEnds("</geometry_uid>\n");
        const std::size_t begin = text.find(begin_mark) + begin_mark.size();
        return text.substr(begin, text.find("\t\t<materials>") - begin);
    }

    VelmarMesh* const mesh = VelmarMesh_Create("mesh");
    VelmarModel* const model = VelmarModel_Create("Chair", mesh);
    VelmarScene* const scene = VelmarScene_Create();
};

std::string rotationElement(const std::string& numbers) {
    return "\t\t<rotation>\n\t\t\t<matrix>\n\t\t\t\t" + numbers + " \n\t\t\t</matrix>\n\t\t</rotation>\n";
}

} // namespace

TEST_F(ModelFamily, NewModelStandsAtTheOriginWithoutMaterials) {
    EXPECT_EQ(refCountOf(mesh), 1);
    EXPECT_EQ(documentOf(scene), document({golden("model/plain")}));
}

TEST_F(ModelFamily, DeleteReleasesTheMesh) {
    VelmarModel* const other = VelmarModel_Create("other", mesh);
    EXPECT_EQ(refCountOf(mesh), 2);
    VelmarModel_Delete(other);
    EXPECT_EQ(refCountOf(mesh), 1);
    VelmarModel_Delete(nullptr);
}

TEST_F(ModelFamily, MaterialsAreListedInTheirOrder) {
    VelmarMaterialNode* const wood = VelmarMaterial_CreateNode("wood");
    VelmarMaterialNode* const steel = VelmarMaterial_CreateNode("steel");
    VelmarScene_AddMaterial(scene, wood);
    VelmarScene_AddMaterial(scene, steel);
    VelmarMaterialNode* materials[] = {steel, wood, steel};
    VelmarModel_SetMaterials(model, 3, materials);
    EXPECT_EQ(refCountOf(steel), 3);
    EXPECT_EQ(refCountOf(wood), 2);
    EXPECT_NE(documentOf(scene).find(withSystemLineEnds("\t\t<materials>\n"
                                                        "\t\t\t<uid>3</uid>\n"
                                                        "\t\t\t<uid>2</uid>\n"
                                                        "\t\t\t<uid>3</uid>\n"
                                                        "\t\t</materials>\n")),
              std::string::npos);
}

TEST_F(ModelFamily, NoMaterialsClearTheList) {
    VelmarMaterialNode* material = VelmarMaterial_CreateNode("wood");
    VelmarScene_AddMaterial(scene, material);
    VelmarModel_SetMaterials(model, 1, &material);
    VelmarModel_SetMaterials(model, 0, nullptr);
    EXPECT_EQ(refCountOf(material), 1);
    VelmarModel_SetMaterials(model, 1, &material);
    VelmarModel_SetMaterials(model, -5, nullptr);
    EXPECT_EQ(refCountOf(material), 1);
}

TEST_F(ModelFamily, NullAmongTheMaterialsKeepsItsPlace) {
    VelmarMaterialNode* materials[] = {nullptr};
    VelmarModel_SetMaterials(model, 1, materials);
    EXPECT_NE(documentOf(scene).find("<uid>4294967295</uid>"), std::string::npos);
}

TEST_F(ModelFamily, NumberOfMaterialsIsPrintedWhateverItIs) {
    testing::internal::CaptureStdout();
    VelmarModel_SetMaterials(model, 0, nullptr);
    VelmarModel_SetMaterials(model, -5, nullptr);
    VelmarMaterialNode* materials[1234] = {};
    VelmarModel_SetMaterials(model, 1234, materials);
    // Read back as text, so the system's line ends are undone.
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Num materials: 0\nNum materials: -5\nNum materials: 1234\n");
}

TEST_F(ModelFamily, TransformationTurnsAndPlaces) {
    VelmarModel_SetTransformation(model, quarter_turn, position, 0);
    EXPECT_EQ(placement(), withSystemLineEnds(rotationElement("0 -1 0 1 0 0 0 0 1") + "\t\t<pos>0.5 2 -3</pos>\n"));
}

TEST_F(ModelFamily, NumbersShowTheDoubleThatAFloatBecomes) {
    const float tenth[3] = {0.1f, 0, 0};
    VelmarModel_SetTransformation(model, identity, tenth, 0);
    EXPECT_EQ(placement(), withSystemLineEnds("\t\t<pos>0.10000000149011612 0 0</pos>\n"));
}

TEST_F(ModelFamily, LastRotationCounts) {
    VelmarModel_SetTransformation(model, quarter_turn, position, 0);
    VelmarModel_SetTransformation(model, identity, position, 0);
    EXPECT_EQ(placement(), withSystemLineEnds("\t\t<pos>0.5 2 -3</pos>\n"));
}

TEST_F(ModelFamily, NegativeIndexSetsTheRotationAlone) {
    VelmarModel_SetTransformation(model, quarter_turn, position, -1);
    EXPECT_EQ(placement(), withSystemLineEnds(rotationElement("0 -1 0 1 0 0 0 0 1") + "\t\t<pos>0 0 0</pos>\n"));
}

using ModelFamilyDeathTest = ModelFamily;

TEST_F(ModelFamilyDeathTest, IndexPastTheEndIsReported) {
    EXPECT_DEATH(VelmarModel_SetTransformation(model, identity, position, 1), "index < size_");
}

} // namespace ModelFamilyTests
