#pragma once

#include "velmarkit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace TestSupport {

/// Expects a status and a text that contains `text`.
inline void expectFailure(int32_t status, int32_t wanted, const char* text) {
    EXPECT_EQ(status, wanted) << VelmarKit_LastError();
    EXPECT_THAT(VelmarKit_LastError(), testing::HasSubstr(text));
}

inline void expectRefused(int32_t status, const char* text) {
    expectFailure(status, VELMARKIT_BAD_ARGUMENT, text);
}

#define EXPECT_SUCCESS(call) EXPECT_EQ(call, VELMARKIT_SUCCESS) << VelmarKit_LastError()

inline VelmarScene* newScene() {
    VelmarScene* scene = nullptr;
    EXPECT_SUCCESS(VelmarKit_Scene_Create(&scene));
    return scene;
}

inline VelmarMesh* newMesh(const char* name = "Mesh") {
    VelmarMesh* mesh = nullptr;
    EXPECT_SUCCESS(VelmarKit_Mesh_Create(name, &mesh));
    return mesh;
}

/// A mesh with one triangle.
inline VelmarMesh* newTriangle() {
    constexpr float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    constexpr uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};
    VelmarMesh* const mesh = newMesh("Triangle");
    EXPECT_SUCCESS(VelmarKit_Mesh_AddVertices(mesh, 3, corners));
    EXPECT_SUCCESS(VelmarKit_Mesh_AddFaces(mesh, 1, face));
    EXPECT_SUCCESS(VelmarKit_Mesh_Build(mesh, nullptr));
    return mesh;
}

inline std::string nameOf(const void* node) {
    const char* name = nullptr;
    uint64_t size = 0;
    EXPECT_SUCCESS(VelmarKit_Node_GetName(node, &name, &size));
    return std::string(name, size);
}

} // namespace TestSupport
