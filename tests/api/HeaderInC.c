/* The public header is plain C99: this file is compiled as C, and what it makes is called from HeaderInCTest.cpp. */
#include "velmarapi.h"

const char* writeSceneFromC(const char* path);

const char* writeSceneFromC(const char* path) {
    const float xyz[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};
    VelmarScene* scene = VelmarScene_Create();
    VelmarMesh* mesh = VelmarMesh_Create("from C");
    VelmarMesh_AddVertices(mesh, 3, xyz);
    VelmarMesh_AddFaces(mesh, 1, face);
    VelmarMesh_AddMaterialUsed(mesh, "default");
    VelmarMesh_Build(mesh);
    VelmarScene_AddMesh(scene, mesh);
    VelmarScene_AddTonemapping(scene, VelmarTonemapping_Create());
    VelmarScene_WriteToXML(scene, path);
    VelmarScene_Delete(scene);
    return path;
}
