#include "tests/kit/Support.h"

#include <cmath>

using namespace TestSupport;

TEST(KitGetters, GiveWhatSettersSet) {
    VelmarCamera* camera = nullptr;
    EXPECT_SUCCESS(VelmarKit_Camera_Create(&camera));
    EXPECT_SUCCESS(VelmarKit_Camera_SetSensorWidth(camera, 0.024));
    EXPECT_SUCCESS(VelmarKit_Camera_SetLensRadius(camera, 0.002));
    EXPECT_SUCCESS(VelmarKit_Camera_SetFocusDistance(camera, 7));
    EXPECT_SUCCESS(VelmarKit_Camera_SetLensSensorDistance(camera, 0.05));
    EXPECT_SUCCESS(VelmarKit_Camera_SetAutofocus(camera, 0));
    EXPECT_SUCCESS(VelmarKit_Camera_SetForwards(camera, 1, 2, 3));
    EXPECT_SUCCESS(VelmarKit_Camera_SetPosition(camera, 4, 5, 6));
    double value = 0, x = 0, y = 0, z = 0;
    VelmarBool on = 1;
    EXPECT_SUCCESS(VelmarKit_Camera_GetSensorWidth(camera, &value));
    EXPECT_EQ(value, 0.024);
    EXPECT_SUCCESS(VelmarKit_Camera_GetLensRadius(camera, &value));
    EXPECT_EQ(value, 0.002);
    EXPECT_SUCCESS(VelmarKit_Camera_GetFocusDistance(camera, &value));
    EXPECT_EQ(value, 7);
    EXPECT_SUCCESS(VelmarKit_Camera_GetLensSensorDistance(camera, &value));
    EXPECT_EQ(value, 0.05);
    EXPECT_SUCCESS(VelmarKit_Camera_GetAutofocus(camera, &on));
    EXPECT_EQ(on, 0);
    EXPECT_SUCCESS(VelmarKit_Camera_GetForwards(camera, &x, nullptr, &z));
    EXPECT_EQ(x, 1);
    EXPECT_EQ(z, 3);
    EXPECT_SUCCESS(VelmarKit_Camera_GetPosition(camera, &x, &y, &z));
    EXPECT_EQ(y, 5);
    EXPECT_SUCCESS(VelmarKit_Node_Delete(camera));
}

TEST(KitGetters, RenderSettingsThatAreNotSetAreZero) {
    VelmarRenderSettings* settings = nullptr;
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Create(&settings));
    int32_t width = 5;
    EXPECT_SUCCESS(VelmarKit_RenderSettings_GetWidth(settings, &width));
    EXPECT_EQ(width, 0);
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Width(settings, 640));
    EXPECT_SUCCESS(VelmarKit_RenderSettings_DepthPass(settings, 1));
    EXPECT_SUCCESS(VelmarKit_RenderSettings_GetWidth(settings, &width));
    EXPECT_EQ(width, 640);
    VelmarBool depth = 0;
    EXPECT_SUCCESS(VelmarKit_RenderSettings_GetDepthPass(settings, &depth));
    EXPECT_EQ(depth, 1);
    EXPECT_SUCCESS(VelmarKit_RenderSettings_Delete(settings));
}

TEST(KitGetters, ModelGivesItsMeshMaterialsAndPlace) {
    VelmarMesh* const mesh = newMesh();
    VelmarModel* model = nullptr;
    VelmarMaterialNode* node = nullptr;
    EXPECT_SUCCESS(VelmarKit_Material_CreateNode("Red", &node));
    EXPECT_SUCCESS(VelmarKit_Model_Create("Model", mesh, &model));
    EXPECT_SUCCESS(VelmarKit_Model_SetMaterials(model, 1, &node));
    constexpr float rotation[] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    constexpr float position[] = {1, 2, 3};
    EXPECT_SUCCESS(VelmarKit_Model_SetTransformation(model, rotation, position, 0));

    VelmarMesh* geometry = nullptr;
    uint64_t materials = 0;
    EXPECT_SUCCESS(VelmarKit_Model_GetGeometry(model, &geometry, &materials));
    EXPECT_EQ(geometry, mesh);
    EXPECT_EQ(materials, 1u);
    VelmarMaterialNode* material = nullptr;
    EXPECT_SUCCESS(VelmarKit_Model_GetMaterial(model, 0, &material));
    EXPECT_EQ(material, node);
    EXPECT_SUCCESS(VelmarKit_Model_GetMaterial(model, 1, &material));
    EXPECT_EQ(material, nullptr);
    double matrix[9], place[3];
    EXPECT_SUCCESS(VelmarKit_Model_GetTransformation(model, matrix, place, 0));
    EXPECT_EQ(matrix[1], -1);
    EXPECT_EQ(place[2], 3);
    expectRefused(VelmarKit_Model_GetTransformation(model, matrix, place, 1), "key frame");
    EXPECT_SUCCESS(VelmarKit_Model_Delete(model));
}

TEST(KitCamera, LooksAtATarget) {
    VelmarCamera* camera = nullptr;
    EXPECT_SUCCESS(VelmarKit_Camera_Create(&camera));
    EXPECT_SUCCESS(VelmarKit_Camera_SetPosition(camera, 1, 1, 1));
    EXPECT_SUCCESS(VelmarKit_Camera_LookAt(camera, 1, 6, 1, 0, 0, 5));
    double x = 0, y = 0, z = 0;
    EXPECT_SUCCESS(VelmarKit_Camera_GetForwards(camera, &x, &y, &z));
    EXPECT_THAT((std::array{x, y, z}), testing::ElementsAre(0, 1, 0));
    EXPECT_SUCCESS(VelmarKit_Camera_GetUp(camera, &x, &y, &z));
    EXPECT_THAT((std::array{x, y, z}), testing::ElementsAre(0, 0, 1));
    // A view that isn't level: up is at a right angle to it.
    EXPECT_SUCCESS(VelmarKit_Camera_LookAt(camera, 1, 2, 2, 0, 0, 1));
    EXPECT_SUCCESS(VelmarKit_Camera_GetUp(camera, &x, &y, &z));
    EXPECT_NEAR(y, -std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(z, std::sqrt(0.5), 1e-15);
    expectRefused(VelmarKit_Camera_LookAt(camera, 1, 1, 1, 0, 0, 1), "the target has no direction");
    expectRefused(VelmarKit_Camera_LookAt(camera, 1, 1, 9, 0, 0, 1), "up is parallel");
    EXPECT_SUCCESS(VelmarKit_Node_Delete(camera));
}

TEST(KitCamera, FieldOfViewIsThatOfSensorAndLens) {
    VelmarCamera* camera = nullptr;
    EXPECT_SUCCESS(VelmarKit_Camera_Create(&camera));
    EXPECT_SUCCESS(VelmarKit_Camera_SetFieldOfView(camera, 1.0));
    double radians = 0, radius = 0;
    EXPECT_SUCCESS(VelmarKit_Camera_GetFieldOfView(camera, &radians));
    EXPECT_NEAR(radians, 1.0, 1e-15);
    EXPECT_SUCCESS(VelmarKit_Camera_GetLensRadius(camera, &radius));
    EXPECT_EQ(radius, 0.001) << "untouched";
    expectRefused(VelmarKit_Camera_SetFieldOfView(camera, 4.0), "radians");
    expectRefused(VelmarKit_Camera_SetFieldOfView(camera, NAN), "radians");
    EXPECT_SUCCESS(VelmarKit_Node_Delete(camera));
}

TEST(KitGetters, MaterialGivesItsColour) {
    VelmarMaterialNode* node = nullptr;
    VelmarMaterial* material = nullptr;
    double r = 9, g = 9, b = 9;
    EXPECT_SUCCESS(VelmarKit_Material_CreateNode("Red", &node));
    expectRefused(VelmarKit_Material_GetColour(node, &r, &g, &b), "material has no colour");
    EXPECT_EQ(r, 9);
    EXPECT_SUCCESS(VelmarKit_Material_CreateDiffuse("Red", 0.75, 0.5, 0.25, &material));
    EXPECT_SUCCESS(VelmarKit_Material_AddToNode(node, material));
    EXPECT_SUCCESS(VelmarKit_Material_GetColour(node, &r, nullptr, &b));
    EXPECT_EQ(r, 0.75);
    EXPECT_EQ(b, 0.25);
    expectRefused(VelmarKit_Material_GetColour(nullptr, &r, &g, &b), "material is null");
    EXPECT_SUCCESS(VelmarKit_Node_Delete(node));
}

TEST(KitGetters, BackgroundGivesWhatItWasMadeOf) {
    VelmarBackground* uniform = nullptr;
    VelmarBackground* sky = nullptr;
    EXPECT_SUCCESS(VelmarKit_Background_CreateUniform(0.5, 0.25, 1, 3, &uniform));
    EXPECT_SUCCESS(VelmarKit_Background_CreateSunSky(1, 2, -3, "original", &sky));
    double x = 0, y = 0, z = 0, strength = 0;
    EXPECT_SUCCESS(VelmarKit_Background_GetUniform(uniform, &x, &y, &z, &strength));
    EXPECT_EQ(x, 0.5);
    EXPECT_EQ(y, 0.25);
    EXPECT_EQ(strength, 3);
    const char* model = nullptr;
    uint64_t size = 0;
    EXPECT_SUCCESS(VelmarKit_Background_GetSunSky(sky, &x, &y, &z, &model, &size));
    EXPECT_EQ(z, -3);
    EXPECT_EQ(std::string(model, size), "original");
    expectRefused(VelmarKit_Background_GetUniform(sky, &x, &y, &z, &strength), "background isn't uniform light");
    expectRefused(VelmarKit_Background_GetSunSky(uniform, &x, &y, &z, &model, &size), "background isn't sun and sky");
    EXPECT_SUCCESS(VelmarKit_Node_Delete(uniform));
    EXPECT_SUCCESS(VelmarKit_Node_Delete(sky));
}
