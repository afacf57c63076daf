/* Builds a complete scene and writes it: a box of two materials on the ground, in sunlight, seen by a camera.
 *
 * Usage: scene_in_c [SCENE.xml]
 *
 * A path without a directory gives a document that names its meshes as seen from itself, so that it can be moved with
 * them. A host in C can't catch what the library throws: a failure in a mesh file ends the program. */
#include <stdio.h>
#include <velmarapi.h>

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

/* Every node is added right after it is created. The scene owns it then, and its setters may still be called. */

static void add_render_settings(VelmarScene* scene) {
    VelmarRenderSettings* settings = VelmarRenderSettings_Create();
    VelmarScene_AddRenderSettings(scene, settings);
    VelmarRenderSettings_Width(settings, 800);
    VelmarRenderSettings_Height(settings, 600);
    VelmarRenderSettings_HaltSamplesPerPixel(settings, 200);
}

static void add_camera(VelmarScene* scene) {
    VelmarCamera* camera = VelmarCamera_Create();
    VelmarScene_AddCamera(scene, camera);
    VelmarCamera_SetPosition(camera, 0, -8, 2);
    VelmarCamera_SetForwards(camera, 0, 1, -0.125);
    VelmarCamera_SetUp(camera, 0, 0, 1);
    /* As far from the lens as the sensor is wide: a field of view of 53 degrees. */
    VelmarCamera_SetSensorWidth(camera, 0.036);
    VelmarCamera_SetLensSensorDistance(camera, 0.036);
    VelmarCamera_SetFocusDistance(camera, 8);
}

static void add_tone_mapping(VelmarScene* scene) {
    VelmarTonemapping* tone_mapping = VelmarTonemapping_Create();
    VelmarScene_AddTonemapping(scene, tone_mapping);
    VelmarTonemapping_SetType(tone_mapping, VELMAR_TONEMAPPING_REINHARD);
    VelmarTonemapping_SetBurn(tone_mapping, 10);
}

static void add_light(VelmarScene* scene) {
    VelmarScene_AddBackground(scene, VelmarBackground_CreateSunSky(-1, -1, 1, "captured-simulation"));
}

static VelmarMaterialNode* add_material(VelmarScene* scene, const char* name, double r, double g, double b) {
    VelmarMaterialNode* node = VelmarMaterial_CreateNode(name);
    VelmarScene_AddMaterial(scene, node);
    VelmarMaterial_AddToNode(node, VelmarMaterial_CreateDiffuse(name, r, g, b));
    return node;
}

static VelmarMesh* add_box(VelmarScene* scene) {
    VelmarMesh* mesh = VelmarMesh_Create("Box");
    VelmarScene_AddMesh(scene, mesh);
    VelmarMesh_AddMaterialUsed(mesh, "Walls");
    VelmarMesh_AddMaterialUsed(mesh, "Lid");
    VelmarMesh_AddVertices(mesh, 8, corners);
    VelmarMesh_AddTextureCoordinates(mesh, 4, texture_coordinates);
    VelmarMesh_AddFaces(mesh, 7, sides);
    VelmarMesh_Build(mesh);
    return mesh;
}

static void add_model(VelmarScene* scene, VelmarMesh* mesh, VelmarMaterialNode** materials, int count) {
    /* A rotation by 90 degrees around z, row by row, and a position. */
    static const float rotation[] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    static const float position[] = {0.5f, 0, 0};
    VelmarModel* model = VelmarModel_Create("Box", mesh);
    VelmarScene_AddModel(scene, model);
    VelmarModel_SetMaterials(model, count, materials);
    VelmarModel_SetTransformation(model, rotation, position, 0);
}

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "scene.xml";
    VelmarScene* scene = VelmarScene_Create();
    VelmarMaterialNode* materials[2];
    FILE* file;

    add_render_settings(scene);
    add_camera(scene);
    add_tone_mapping(scene);
    add_light(scene);
    /* In the order of the mesh's names. */
    materials[WALLS] = add_material(scene, "Walls", 0.6, 0.2, 0.1);
    materials[LID] = add_material(scene, "Lid", 0.8, 0.8, 0.7);
    add_model(scene, add_box(scene), materials, 2);
    VelmarScene_AddGroundPlane(scene, 0, 100);

    VelmarScene_WriteToXML(scene, path);
    VelmarScene_Delete(scene);

    /* A document that can't be written isn't reported. */
    file = fopen(path, "r+");
    if (!file) {
        fprintf(stderr, "%s couldn't be written\n", path);
        return 1;
    }
    fclose(file);
    printf("%s\n", path);
    return 0;
}
