#include "tests/fake_library/ExampleScene.h"

namespace TestSupport {

VelmarScene* makeExampleScene() {
    VelmarScene* const scene = VelmarScene_Create();

    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_Width(settings, 8);
    VelmarRenderSettings_Height(settings, 6);
    VelmarRenderSettings_SuperSampleFactor(settings, 2);
    VelmarRenderSettings_HaltTime(settings, 2.5);
    VelmarRenderSettings_RenderForegroundAlpha(settings, 1);
    VelmarRenderSettings_DepthPass(settings, 1);
    VelmarScene_AddRenderSettings(scene, settings);

    VelmarCamera* const camera = VelmarCamera_Create();
    VelmarCamera_SetForwards(camera, 0.5, 0.25, -0.125);
    VelmarCamera_SetPosition(camera, 1, 2, 3);
    VelmarScene_AddCamera(scene, camera);

    VelmarTonemapping* const tonemapping = VelmarTonemapping_Create();
    VelmarTonemapping_SetIso(tonemapping, 400);
    VelmarScene_AddTonemapping(scene, tonemapping);

    const float xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};
    VelmarMesh* const mesh = VelmarMesh_Create("triangle");
    VelmarMesh_AddVertices(mesh, 3, xyz);
    VelmarMesh_AddFaces(mesh, 1, face);
    VelmarMesh_Build(mesh);
    VelmarScene_AddMesh(scene, mesh);

    VelmarMaterialNode* material = VelmarMaterial_CreateNode("red");
    VelmarMaterial_AddToNode(material, VelmarMaterial_CreateDiffuse("red", 0.75, 0.125, 0.125));
    VelmarScene_AddMaterial(scene, material);

    const float no_rotation[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const float position[] = {10, 20, 30};
    VelmarModel* const model = VelmarModel_Create("placed", mesh);
    VelmarModel_SetMaterials(model, 1, &material);
    VelmarModel_SetTransformation(model, no_rotation, position, 0);
    VelmarScene_AddModel(scene, model);

    VelmarScene_AddBackground(scene, VelmarBackground_CreateUniform(0.5, 0.5, 0.5, 2));
    VelmarScene_AddGroundPlane(scene, -1, 100);
    return scene;
}

std::vector<std::string> expectedRecordOfExampleScene() {
    // clang-format off
    return {
        "create VelmarInterface",
        "interface initialised in vs2017_64, application data known yes",
        "create ToneMapperDLLAPI",
        "tone mapper initialised in vs2017_64, application data known yes, image store held 2 times, components 3",
        "create DataManagerDLLAPI",
        "data manager initialised in vs2017_64",
        "create TextureManagerDLLAPI",
        "texture manager initialised in vs2017_64",
        "interface given a scene held 3 times, strings 0, data manager held 2 times, tone mapper held 2 times",
        "  one image store yes, tone mapper complains ''",
        "  image 8 x 6, margin 4, super sample factor 2, layers 32 x 28, second 0 x 0",
        "  start divider 1, progressive yes, regions no, one allocator yes",
        "  floats per pixel 5, main 4480, second 0, third 0, light layers 1",
        "  channel '' of type 0 at 0, components 3",
        "  channel 'alpha' of type 1 at 3, components 1",
        "  channel 'depth' of type 2 at 4, components 1",
        "  scene Scene with UID 0 has 10 children, is its own parent no",
        "    no clone",
        "  node 1 of type 2 named Render Settings, in the scene yes",
        "    width 8, height 6, super sample factor 2, halt time 2.5, samples 0",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 2, UID 1, named Render Settings, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 2 of type 1 named Camera, in the scene yes",
        "    aperture 0.001, focus 20, autofocus yes, key frames 1, forwards 0.5 0.25 -0.125, type 0",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 1, UID 2, named Camera, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 3 of type 8 named Tone Mapping, in the scene yes",
        "    kind 1000, scale 1, ISO 400, response data/camera_response_functions/dscs315.txt",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 8, UID 3, named Tone Mapping, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 4 of type 4 named triangle, in the scene yes",
        "    mesh held 1 times, smoothings 2, pixel threshold 4, smooth normals no, scale 1",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    no clone",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 5 of type 3 named red, in the scene yes",
        "    material held 1 times, scatter nodes 0 and 0",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 3, UID 5, named red, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 6 of type 5 named placed, in the scene yes",
        "    geometry triangle with UID 4, materials 1, key frames 1, scale 1, rotated yes",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 5, UID 6, named placed, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs 4 5",
        "  node 7 of type 10 named Background Settings, in the scene yes",
        "    emission scaled no, material held 1 times",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 10, UID 7, named Background Settings, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 8 of type 4 named Mesh, in the scene yes",
        "    mesh held 1 times, smoothings 2, pixel threshold 4, smooth normals no, scale 1",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    no clone",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 9 of type 3 named GroundPlane, in the scene yes",
        "    material held 1 times, scatter nodes 0 and 0",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 3, UID 9, named GroundPlane, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs",
        "  node 10 of type 5 named GroundPlane, in the scene yes",
        "    geometry Mesh with UID 8, materials 1, key frames 1, scale 1, rotated yes",
        "    renamed to A name of the library's choice",
        "    same as itself yes, as the scene no",
        "    clone of type 5, UID 10, named GroundPlane, in a scene no, held 1 times, equal yes",
        "    layers to 0, material masks 0, object masks 0",
        "    refers to the scene no, equal to itself yes, depends on UIDs 8 9",
        "  pass 0 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  pass 1 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 4, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  pass 2 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  pass 3 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  pass 4 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds -100 -100 -1 to 100 100 30",
        "  pass 5 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  UIDs 1001 1002 1003 1004 1005 1006 1007 1008 1009 1010",
        "  pass 5 over scene.xml in scenes, buckets 4 and 4, as paths yes: depth 0, dependencies 0, bounds infinite infinite infinite to -infinite -infinite -infinite",
        "  UIDs 1 2 3 4 5 6 7 8 9 10",
        "  the same child by child and as a whole yes",
    };
    // clang-format on
}

} // namespace TestSupport
