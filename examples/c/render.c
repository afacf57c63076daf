/* Renders a scene with the renderer library in the folder "vs2017_64" of the working directory.
 *
 * The order is that of every host: context, renderer, scene, the render itself, and one delete that ends all three. */

#include "velmarapi.h"

#include <stdio.h>

static VelmarScene* makeScene(void) {
    static const float xyz[] = {-1, 0, 0, 1, 0, 0, 0, 0, 2};
    static const uint32_t triangle[] = {0, 0, 1, 2, 0, 0, 0, 0};
    VelmarScene* scene = VelmarScene_Create();
    VelmarRenderSettings* settings = VelmarRenderSettings_Create();
    VelmarCamera* camera = VelmarCamera_Create();
    VelmarMesh* mesh = VelmarMesh_Create("Triangle");
    VelmarMaterialNode* material = VelmarMaterial_CreateNode("Red");
    VelmarModel* model;

    /* The size of the image must be set: it has no default. */
    VelmarRenderSettings_Width(settings, 640);
    VelmarRenderSettings_Height(settings, 360);
    VelmarRenderSettings_SuperSampleFactor(settings, 2);
    VelmarRenderSettings_HaltSamplesPerPixel(settings, 16);
    VelmarScene_AddRenderSettings(scene, settings);

    VelmarCamera_SetPosition(camera, 0, -5, 1);
    VelmarCamera_SetForwards(camera, 0, 1, 0);
    VelmarScene_AddCamera(scene, camera);

    VelmarScene_AddTonemapping(scene, VelmarTonemapping_Create());

    VelmarMesh_AddVertices(mesh, 3, xyz);
    VelmarMesh_AddFaces(mesh, 1, triangle);
    VelmarMesh_Build(mesh);
    VelmarScene_AddMesh(scene, mesh);

    VelmarScene_AddMaterial(scene, material);
    VelmarMaterial_AddToNode(material, VelmarMaterial_CreateDiffuse("Red", 0.75, 0.125, 0.125));
    model = VelmarModel_Create("Triangle", mesh);
    VelmarScene_AddModel(scene, model);
    VelmarModel_SetMaterials(model, 1, &material);

    VelmarScene_AddGroundPlane(scene, 0, 50);
    velmar_create_sunsky(scene);
    return scene;
}

int main(void) {
    VelmarContext* context = VelmarContext_Create();
    VelmarRenderer* renderer;

    if (VelmarContext_Initialize(context) != 0) {
        /* The reason was printed on the standard error stream. No renderer owns the context, so we delete it. */
        VelmarContext_Delete(context);
        return 1;
    }

    /* The renderer owns the context now, and the scene after the next line. */
    renderer = VelmarRenderer_Create(context);
    VelmarRenderer_InitializeWithScene(renderer, context, makeScene());

    VelmarRenderer_Start(renderer);
    VelmarRenderer_Pause(renderer);
    VelmarRenderer_Resume(renderer);
    VelmarRenderer_Stop(renderer);

    /* Destroys the renderer, the scene and the context, and unloads the library. */
    VelmarRenderer_Delete(renderer);
    puts("Rendered.");
    return 0;
}
