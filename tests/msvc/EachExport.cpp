// Each exported function that throws, called by a program of Microsoft's form. Those that call a renderer library are
// in Rendering.cpp.

#include "Check.h"
#include "FailingMemory.h"
#include "velmarapi.h"

namespace {

/// Calls `call` again and again, with each of its allocations failing once.
template <class Call>
[[gnu::noinline]] void expectBadAlloc(const char* name, Call call) {
    for (int countdown = 1;; ++countdown) {
        int destroyed = 0;
        bool caught = false;
        try {
            const Witness witness(destroyed);
            failAllocation(countdown);
            call();
            CHECK(!allocationFailed(), name);
        } catch (const std::bad_alloc& exception) {
            caught = true;
            CHECK(strcmp(exception.what(), "bad allocation") == 0, name);
        }
        CHECK(destroyed == 1, name);
        if (!caught) {
            CHECK(countdown > 1, name);
            break;
        }
    }
    failAllocation(0);
}

template <class Call>
[[gnu::noinline]] void expectVelmarException(const char* text, Call call) {
    int destroyed = 0;
    bool caught = false;
    try {
        const Witness witness(destroyed);
        call();
    } catch (const Velmar::VelmarException& exception) {
        caught = true;
        CHECK(isText(exception.getMessage(), text), text);
    }
    CHECK(caught && destroyed == 1, text);
}

constexpr const char* long_name = "a name that doesn't fit into the text itself";

void exhaustMemory() {
    expectBadAlloc("VelmarBackground_CreateUniform", [] { VelmarBackground_CreateUniform(1, 1, 1, 1); });
    expectBadAlloc("VelmarBackground_CreateSunSky", [] { VelmarBackground_CreateSunSky(0, 0, 1, long_name); });
    expectBadAlloc("VelmarCamera_Create", [] { VelmarCamera_Create(); });
    expectBadAlloc("VelmarCamera_SetPosition", [] { VelmarCamera_SetPosition(VelmarCamera_Create(), 1, 2, 3); });
    expectBadAlloc("VelmarContext_Create", [] { VelmarContext_Delete(VelmarContext_Create()); });
    expectBadAlloc("VelmarMaterial_CreateNode", [] {
        VelmarMaterial_Delete(reinterpret_cast<VelmarMaterial*>(VelmarMaterial_CreateNode(long_name)));
    });
    expectBadAlloc("VelmarMaterial_CreateDiffuse", [] { VelmarMaterial_CreateDiffuse(long_name, 1, 1, 1); });
    expectBadAlloc("VelmarMesh_Create", [] { VelmarMesh_Delete(VelmarMesh_Create(long_name)); });
    expectBadAlloc("VelmarMesh_AddVertices", [] {
        constexpr float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
        VelmarMesh_AddVertices(VelmarMesh_Create("Mesh"), 3, corners);
    });
    expectBadAlloc("VelmarMesh_AddFaces", [] {
        constexpr uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};
        VelmarMesh_AddFaces(VelmarMesh_Create("Mesh"), 1, face);
    });
    expectBadAlloc("VelmarMesh_AddTextureCoordinates", [] {
        constexpr float pair[] = {0, 0};
        VelmarMesh_AddTextureCoordinates(VelmarMesh_Create("Mesh"), 1, pair);
    });
    expectBadAlloc("VelmarMesh_AddMaterialUsed",
                   [] { VelmarMesh_AddMaterialUsed(VelmarMesh_Create("Mesh"), long_name); });
    expectBadAlloc("VelmarModel_Create", [] { VelmarModel_Create(long_name, VelmarMesh_Create("Mesh")); });
    expectBadAlloc("VelmarModel_SetMaterials", [] {
        VelmarMaterialNode* nodes[] = {VelmarMaterial_CreateNode("One"), VelmarMaterial_CreateNode("Two")};
        VelmarModel_SetMaterials(VelmarModel_Create("Model", VelmarMesh_Create("Mesh")), 2, nodes);
    });
    expectBadAlloc("VelmarModel_SetTransformation", [] {
        constexpr float rotation[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        VelmarModel_SetTransformation(VelmarModel_Create("Model", VelmarMesh_Create("Mesh")), rotation, rotation, 0);
    });
    expectBadAlloc("VelmarRenderSettings_Create", [] { VelmarRenderSettings_Delete(VelmarRenderSettings_Create()); });
    expectBadAlloc("VelmarScene_Create", [] { VelmarScene_Delete(VelmarScene_Create()); });
    expectBadAlloc("VelmarScene_AddModel", [] {
        VelmarScene_AddModel(VelmarScene_Create(), VelmarModel_Create("Model", VelmarMesh_Create("Mesh")));
    });
    expectBadAlloc("VelmarScene_AddBackground",
                   [] { VelmarScene_AddBackground(VelmarScene_Create(), VelmarBackground_CreateUniform(1, 1, 1, 1)); });
    expectBadAlloc("VelmarScene_AddCamera", [] { VelmarScene_AddCamera(VelmarScene_Create(), VelmarCamera_Create()); });
    expectBadAlloc("VelmarScene_AddMaterial",
                   [] { VelmarScene_AddMaterial(VelmarScene_Create(), VelmarMaterial_CreateNode("Node")); });
    expectBadAlloc("VelmarScene_AddMesh", [] { VelmarScene_AddMesh(VelmarScene_Create(), VelmarMesh_Create("Mesh")); });
    expectBadAlloc("VelmarScene_AddRenderSettings",
                   [] { VelmarScene_AddRenderSettings(VelmarScene_Create(), VelmarRenderSettings_Create()); });
    expectBadAlloc("VelmarScene_AddTonemapping",
                   [] { VelmarScene_AddTonemapping(VelmarScene_Create(), VelmarTonemapping_Create()); });
    expectBadAlloc("VelmarScene_AddGroundPlane", [] { VelmarScene_AddGroundPlane(VelmarScene_Create(), 0, 1); });
    expectBadAlloc("VelmarTonemapping_Create", [] { VelmarTonemapping_Delete(VelmarTonemapping_Create()); });
    expectBadAlloc("VelmarTonemapping_SetResponseFunctionPath",
                   [] { VelmarTonemapping_SetResponseFunctionPath(VelmarTonemapping_Create(), long_name); });
    expectBadAlloc("velmar_create_default_material", [] { velmar_create_default_material(VelmarScene_Create()); });
    expectBadAlloc("velmar_create_dummy_lighting", [] { velmar_create_dummy_lighting(VelmarScene_Create()); });
    expectBadAlloc("velmar_create_plane", [] { velmar_create_plane(VelmarScene_Create()); });
    expectBadAlloc("velmar_create_sunsky", [] { velmar_create_sunsky(VelmarScene_Create()); });
    expectBadAlloc("velmar_write_mesh_to_file",
                   [] { velmar_write_mesh_to_file(VelmarMesh_Create("Mesh"), "each_export.txt"); });
}

void breakRules() {
    VelmarMesh* const mesh = VelmarMesh_Create("Mesh");
    expectVelmarException("Failed to open file 'no_such_folder\\mesh.vmmesh' for writing.",
                          [=] { VelmarMesh_WriteToFile(mesh, "no_such_folder\\mesh.vmmesh"); });
    constexpr float pairs[] = {0, 0, 1, 0, 1, 1};
    VelmarMesh_AddTextureCoordinates(mesh, 1, pairs);
    VelmarMesh_AddTextureCoordinates(mesh, 2, pairs);
    constexpr const char* uneven = "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 3, "
                                   "num_uv_mappings: 2";
    expectVelmarException(uneven, [=] { VelmarMesh_Build(mesh); });
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddMesh(scene, mesh);
    expectVelmarException(uneven, [=] { VelmarScene_WriteToXML(scene, "each_export.xml"); });

    // What isn't a VelmarException becomes one on its way through the writer.
    bool caught = false;
    VelmarScene* const plain = VelmarScene_Create();
    velmar_create_plane(plain);
    failAllocation(8);
    try {
        VelmarScene_WriteToXML(plain, "each_export_plain.xml");
    } catch (const Velmar::VelmarException& exception) {
        caught = true;
        CHECK(isText(exception.getMessage(), "An unhandled error has occured."));
    } catch (const std::bad_alloc&) {
        caught = true;
    }
    CHECK(caught);
    failAllocation(0);
}

} // namespace

void run() {
    watchMemory("VelmarAPI.dll");
    exhaustMemory();
    breakRules();
    if (failures == 0) puts("each exception of the exports is caught");
}
