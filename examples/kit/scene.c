/* Builds a complete scene and writes it, by VelmarKit: a box of two materials on the ground, in sunlight, seen by a
 * camera. Each call returns a status; the text of a failure is printed.
 *
 * Usage: scene_with_kit_in_c [SCENE.xml] */
#include <stdio.h>
#include <velmarkit.h>

/* The corners of a box of 2 x 2 x 2 metres on the ground. */
static const float corners[] = {
    -1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0, /* below */
    -1, -1, 2, 1, -1, 2, 1, 1, 2, -1, 1, 2, /* above */
};

/* All sides use the same square of texture coordinates. */
static const float texture_coordinates[] = {0, 0, 1, 0, 1, 1, 0, 1};

enum { TRIANGLE = 0, QUAD = 1 };
enum { WALLS = 0, LID = 1 };

/* A record begins with its kind; vertices, texture coordinates and the material follow. */
static const uint32_t sides[] = {
    QUAD,     0, 3, 2, 1, 0, 1, 2,   3, WALLS, /* the bottom */
    QUAD,     0, 1, 5, 4, 0, 1, 2,   3, WALLS, /* and around */
    QUAD,     1, 2, 6, 5, 0, 1, 2,   3, WALLS, /* */
    QUAD,     2, 3, 7, 6, 0, 1, 2,   3, WALLS, /* */
    QUAD,     3, 0, 4, 7, 0, 1, 2,   3, WALLS, /* */
    TRIANGLE, 4, 5, 6, 0, 1, 2, LID,           /* the top, of two triangles */
    TRIANGLE, 4, 6, 7, 0, 2, 3, LID,           /* */
};

/* Leaves a function with the status of a call that failed. */
#define TRY(call)                                                                                                      \
    do {                                                                                                               \
        const int32_t status = (call);                                                                                 \
        if (status != VELMARKIT_SUCCESS) return status;                                                                \
    } while (0)

/* Every node is added right after it is created. The scene owns it then, and destroys it whatever fails later. */

static int32_t add_render_settings(VelmarScene* scene) {
    VelmarRenderSettings* settings;
    TRY(VelmarKit_RenderSettings_Create(&settings));
    TRY(VelmarKit_Scene_AddRenderSettings(scene, settings));
    TRY(VelmarKit_RenderSettings_Width(settings, 800));
    TRY(VelmarKit_RenderSettings_Height(settings, 600));
    return VelmarKit_RenderSettings_HaltSamplesPerPixel(settings, 200);
}

static int32_t add_camera(VelmarScene* scene) {
    VelmarCamera* camera;
    TRY(VelmarKit_Camera_Create(&camera));
    TRY(VelmarKit_Scene_AddCamera(scene, camera));
    TRY(VelmarKit_Camera_SetPosition(camera, 0, -8, 2));
    TRY(VelmarKit_Camera_SetForwards(camera, 0, 1, -0.125));
    TRY(VelmarKit_Camera_SetUp(camera, 0, 0, 1));
    /* As far from the lens as the sensor is wide: a field of view of 53 degrees. */
    TRY(VelmarKit_Camera_SetSensorWidth(camera, 0.036));
    TRY(VelmarKit_Camera_SetLensSensorDistance(camera, 0.036));
    return VelmarKit_Camera_SetFocusDistance(camera, 8);
}

static int32_t add_tone_mapping(VelmarScene* scene) {
    VelmarTonemapping* tone_mapping;
    TRY(VelmarKit_Tonemapping_Create(&tone_mapping));
    TRY(VelmarKit_Scene_AddTonemapping(scene, tone_mapping));
    TRY(VelmarKit_Tonemapping_SetType(tone_mapping, VELMAR_TONEMAPPING_REINHARD));
    return VelmarKit_Tonemapping_SetBurn(tone_mapping, 10);
}

static int32_t add_light(VelmarScene* scene) {
    VelmarBackground* background;
    TRY(VelmarKit_Background_CreateSunSky(-1, -1, 1, "captured-simulation", &background));
    return VelmarKit_Scene_AddBackground(scene, background);
}

static int32_t add_material(VelmarScene* scene, const char* name, double r, double g, double b,
                            VelmarMaterialNode** node) {
    VelmarMaterial* material;
    TRY(VelmarKit_Material_CreateNode(name, node));
    TRY(VelmarKit_Scene_AddMaterial(scene, *node));
    TRY(VelmarKit_Material_CreateDiffuse(name, r, g, b, &material));
    return VelmarKit_Material_AddToNode(*node, material);
}

static int32_t add_box(VelmarScene* scene, VelmarMesh** mesh) {
    TRY(VelmarKit_Mesh_Create("Box", mesh));
    TRY(VelmarKit_Scene_AddMesh(scene, *mesh));
    TRY(VelmarKit_Mesh_AddMaterialUsed(*mesh, "Walls"));
    TRY(VelmarKit_Mesh_AddMaterialUsed(*mesh, "Lid"));
    TRY(VelmarKit_Mesh_AddVertices(*mesh, 8, corners));
    TRY(VelmarKit_Mesh_AddTextureCoordinates(*mesh, 4, texture_coordinates));
    TRY(VelmarKit_Mesh_AddFaces(*mesh, 7, sides));
    return VelmarKit_Mesh_Build(*mesh, NULL);
}

static int32_t add_model(VelmarScene* scene, VelmarMesh* mesh, VelmarMaterialNode** materials, int count) {
    /* A rotation by 90 degrees around z, row by row, and a position. */
    static const float rotation[] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    static const float position[] = {0.5f, 0, 0};
    VelmarModel* model;
    TRY(VelmarKit_Model_Create("Box", mesh, &model));
    TRY(VelmarKit_Scene_AddModel(scene, model));
    TRY(VelmarKit_Model_SetMaterials(model, count, materials));
    return VelmarKit_Model_SetTransformation(model, rotation, position, 0);
}

static int32_t write_scene(VelmarScene* scene, const char* path) {
    VelmarMaterialNode* materials[2];
    VelmarMesh* mesh;
    TRY(add_render_settings(scene));
    TRY(add_camera(scene));
    TRY(add_tone_mapping(scene));
    TRY(add_light(scene));
    /* In the order of the mesh's names. */
    TRY(add_material(scene, "Walls", 0.6, 0.2, 0.1, &materials[WALLS]));
    TRY(add_material(scene, "Lid", 0.8, 0.8, 0.7, &materials[LID]));
    TRY(add_box(scene, &mesh));
    TRY(add_model(scene, mesh, materials, 2));
    TRY(VelmarKit_Scene_AddGroundPlane(scene, 0, 100));
    return VelmarKit_Scene_WriteToXML(scene, path);
}

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "scene.xml";
    VelmarScene* scene = NULL;
    int32_t status = VelmarKit_Scene_Create(&scene);
    if (status == VELMARKIT_SUCCESS) status = write_scene(scene, path);
    if (status != VELMARKIT_SUCCESS)
        fprintf(stderr, "%s: %s\n", VelmarKit_StatusName(status), VelmarKit_LastError());
    else
        printf("%s\n", path);
    VelmarKit_Scene_Delete(scene);
    return status == VELMARKIT_SUCCESS ? 0 : 1;
}
