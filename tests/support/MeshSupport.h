#pragma once

#include "velmarexceptions.h"
#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Velmar {

/// Records are compared by their bytes, so that NaNs and signed zeros count too.
template <class T>
std::string bytesOf(const Vector<T>& records) {
    if (records.empty()) return {};
    return std::string(reinterpret_cast<const char*>(records.data()), records.size() * sizeof(T));
}

template <class T>
std::string bytesOf(const std::vector<T>& records) {
    return std::string(reinterpret_cast<const char*>(records.data()), records.size() * sizeof(T));
}

inline std::vector<std::string> namesOf(const Vector<String>& names) {
    std::vector<std::string> result;
    for (const String& name : names)
        result.push_back(toStdString(name));
    return result;
}

/// Four corners of a unit square in the plane z = 0, in turning order.
inline void addUnitSquare(Mesh& mesh) {
    for (const Vec3f& corner : {Vec3f{0, 0, 0}, Vec3f{1, 0, 0}, Vec3f{1, 1, 0}, Vec3f{0, 1, 0}})
        mesh.addVertex(corner);
}

/// Two materials, five vertices with normals, two UV sets, triangles whose first index falls, a quad; not built.
inline void fillSample(Mesh& mesh) {
    mesh.raiseNumUVMappings(2);
    mesh.addMaterialUsed("wood");
    mesh.addMaterialUsed("a name of more than sixteen bytes");
    for (const Vec3f& corner :
         {Vec3f{0, 0, 0}, Vec3f{1, 0, 0}, Vec3f{1, 1, 0}, Vec3f{0, 1, 0}, Vec3f{0.5f, 0.5f, -2.25f}})
        mesh.addVertexWithNormal(corner, {0, 0, 2});
    for (float u = 0; u < 3; ++u) {
        const Vec2f pairs[] = {{u, 0.25f}, {u, 0.75f}};
        mesh.addUVs(pairs);
    }
    mesh.addTriangle({4, 0, 1}, {2, 0, 1}, 0);
    mesh.addTriangle({0, 1, 2}, {0, 1, 2}, 1);
    mesh.addQuad({3, 2, 1, 0}, {1, 1, 2, 0}, 4);
    mesh.addQuad({0, 1, 2, 3}, {0, 0, 0, 0}, 0);
}

inline void expectSameContent(const Mesh& actual, const Mesh& expected) {
    EXPECT_EQ(actual.num_uv_mappings, expected.num_uv_mappings);
    EXPECT_EQ(namesOf(actual.used_materials), namesOf(expected.used_materials));
    EXPECT_EQ(bytesOf(actual.verts), bytesOf(expected.verts));
    EXPECT_EQ(bytesOf(actual.normals), bytesOf(expected.normals));
    EXPECT_EQ(actual.uv_layout, expected.uv_layout);
    EXPECT_EQ(bytesOf(actual.uv_pairs), bytesOf(expected.uv_pairs));
    EXPECT_EQ(bytesOf(actual.triangles), bytesOf(expected.triangles));
    EXPECT_EQ(bytesOf(actual.quads), bytesOf(expected.quads));
}

} // namespace Velmar
