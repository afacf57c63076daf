#include "api/Handles.h"
#include "mesh/VmmeshFile.h"

#include <span>

using namespace Velmar;

VelmarMesh* VelmarMesh_Create(const char* name) {
    NewObject<SceneNodeMesh> node(new SceneNodeMesh);
    node->mesh = new Mesh;
    node->setName(String(name));
    node->view_dependent_subdivision = false;
    node->max_num_subdivisions = 0;
    return toHandle<VelmarMesh>(node.release());
}

void VelmarMesh_NormalSmoothing(VelmarMesh* mesh, VelmarBool smooth) {
    fromHandle(mesh)->normal_smoothing = smooth != 0;
}

void VelmarMesh_ViewDependentSubdivision(VelmarMesh* mesh, VelmarBool view_dependent) {
    fromHandle(mesh)->view_dependent_subdivision = view_dependent != 0;
}

void VelmarMesh_MaxNumSubdivisions(VelmarMesh* mesh, unsigned max_num_subdivisions) {
    fromHandle(mesh)->max_num_subdivisions = static_cast<int32_t>(max_num_subdivisions);
}

void VelmarMesh_AddVertices(VelmarMesh* mesh, int32_t count, const float* xyz) {
    if (count < 1) return;
    fromHandle(mesh)->mesh->addVertices({reinterpret_cast<const Vec3f*>(xyz), static_cast<std::size_t>(count)});
}

void VelmarMesh_AddFaces(VelmarMesh* mesh, int32_t count, const uint32_t* words) {
    if (count < 1) return;
    fromHandle(mesh)->mesh->addFaces(static_cast<std::size_t>(count), words);
}

void VelmarMesh_AddTextureCoordinates(VelmarMesh* mesh, int32_t count, const float* uv) {
    Mesh& data = *fromHandle(mesh)->mesh;
    if (count > 0) data.uv_pairs.append({reinterpret_cast<const Vec2f*>(uv), static_cast<std::size_t>(count)});
    // After what can fail.
    ++data.num_uv_mappings;
}

void VelmarMesh_AddMaterialUsed(VelmarMesh* mesh, const char* name) {
    fromHandle(mesh)->mesh->addMaterialUsed(String(name));
}

uint32_t VelmarMesh_Build(VelmarMesh* mesh) {
    return fromHandle(mesh)->mesh->build();
}

void VelmarMesh_WriteToFile(VelmarMesh* mesh, const char* path) {
    writeToFile(String(path), *fromHandle(mesh)->mesh, false);
}
