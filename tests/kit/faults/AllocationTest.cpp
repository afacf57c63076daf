// Calls of the kit with each of their allocations failing, alone and with all that follow. Each call gives the status
// of exhausted memory, and every handle is as it was.

#include "api/Handles.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "tests/faults/FailingAllocation.h"
#include "tests/kit/Support.h"
#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <functional>
#include <memory>
#include <string_view>
#include <thread>

using namespace TestSupport;
using Faults::FailingAllocation;
using Faults::Lasting;

namespace {

/// A host's handles, made anew for each call.
struct Host {
    Host() {
        EXPECT_SUCCESS(VelmarKit_Scene_Create(&scene));
        EXPECT_SUCCESS(VelmarKit_Mesh_Create("Mesh", &mesh));
        EXPECT_SUCCESS(VelmarKit_Material_CreateNode("Node", &node));
        EXPECT_SUCCESS(VelmarKit_Material_CreateDiffuse("Material", 1, 1, 1, &material));
        EXPECT_SUCCESS(VelmarKit_Camera_Create(&camera));
        EXPECT_SUCCESS(VelmarKit_Tonemapping_Create(&tonemapping));
        EXPECT_SUCCESS(VelmarKit_Mesh_Create("Geometry", &geometry));
        EXPECT_SUCCESS(VelmarKit_Model_Create("Model", geometry, &model));
        constexpr float corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
        EXPECT_SUCCESS(VelmarKit_Mesh_AddVertices(mesh, 3, corners));
        EXPECT_SUCCESS(VelmarKit_create_default_material(scene));
    }
    /// What the call hasn't given to another object is deleted, which a dead handle wouldn't survive.
    ~Host() {
        for (void* const object : {static_cast<void*>(mesh), static_cast<void*>(node), static_cast<void*>(camera),
                                   static_cast<void*>(tonemapping), static_cast<void*>(model)})
            VelmarKit_Node_Delete(object);
        VelmarKit_Material_Delete(material);
        VelmarKit_Node_Delete(made);
        EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    VelmarScene* scene = nullptr;
    VelmarMesh* mesh = nullptr;
    VelmarMesh* geometry = nullptr;
    VelmarModel* model = nullptr;
    VelmarMaterialNode* node = nullptr;
    VelmarMaterial* material = nullptr;
    VelmarCamera* camera = nullptr;
    VelmarTonemapping* tonemapping = nullptr;
    void* made = nullptr;
    std::string path;
    std::string binary_path;
    std::string document;
    std::string document_to_read;
};

constexpr const char* long_name = "a name that doesn't fit into the text itself";
constexpr float numbers[] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
constexpr std::uint32_t face[] = {0, 0, 1, 2, 0, 0, 0, 0};

template <class Handle>
Handle** place(Host& host) {
    return reinterpret_cast<Handle**>(&host.made);
}

struct Call {
    const char* name;
    std::int32_t (*act)(Host& host);
    friend void PrintTo(const Call& call, std::ostream* stream) { *stream << call.name; }
};

const Call calls[] = {
    {"Scene_Create", [](Host& h) { return VelmarKit_Scene_Create(place<VelmarScene>(h)); }},
    {"Mesh_Create", [](Host& h) { return VelmarKit_Mesh_Create(long_name, place<VelmarMesh>(h)); }},
    {"Camera_Create", [](Host& h) { return VelmarKit_Camera_Create(place<VelmarCamera>(h)); }},
    {"RenderSettings_Create", [](Host& h) { return VelmarKit_RenderSettings_Create(place<VelmarRenderSettings>(h)); }},
    {"Tonemapping_Create", [](Host& h) { return VelmarKit_Tonemapping_Create(place<VelmarTonemapping>(h)); }},
    {"Material_CreateNode",
     [](Host& h) { return VelmarKit_Material_CreateNode(long_name, place<VelmarMaterialNode>(h)); }},
    {"Material_CreateDiffuse",
     [](Host&) {
         VelmarMaterial* made = nullptr;
         const std::int32_t status = VelmarKit_Material_CreateDiffuse(long_name, 1, 1, 1, &made);
         VelmarKit_Material_Delete(made);
         return status;
     }},
    {"Background_CreateUniform",
     [](Host& h) { return VelmarKit_Background_CreateUniform(1, 1, 1, 1, place<VelmarBackground>(h)); }},
    {"Background_CreateSunSky",
     [](Host& h) { return VelmarKit_Background_CreateSunSky(0, 0, 1, long_name, place<VelmarBackground>(h)); }},
    {"Mesh_AddVertices", [](Host& h) { return VelmarKit_Mesh_AddVertices(h.mesh, 3, numbers); }},
    {"Mesh_AddFaces", [](Host& h) { return VelmarKit_Mesh_AddFaces(h.mesh, 1, face); }},
    {"Mesh_AddTextureCoordinates", [](Host& h) { return VelmarKit_Mesh_AddTextureCoordinates(h.mesh, 4, numbers); }},
    {"Mesh_AddMaterialUsed", [](Host& h) { return VelmarKit_Mesh_AddMaterialUsed(h.mesh, long_name); }},
    {"Mesh_SetNormals", [](Host& h) { return VelmarKit_Mesh_SetNormals(h.mesh, 3, numbers); }},
    {"Mesh_SetTextureCoordinates",
     [](Host& h) {
         constexpr const float* sets[] = {numbers, numbers};
         return VelmarKit_Mesh_SetTextureCoordinates(h.mesh, 2, 4, sets);
     }},
    {"Model_SetMaterials", [](Host& h) { return VelmarKit_Model_SetMaterials(h.model, 1, &h.node); }},
    {"Model_SetTransformation",
     [](Host& h) { return VelmarKit_Model_SetTransformation(h.model, numbers, numbers, 0); }},
    {"Camera_SetPosition", [](Host& h) { return VelmarKit_Camera_SetPosition(h.camera, 1, 2, 3); }},
    {"Tonemapping_SetResponseFunctionPath",
     [](Host& h) { return VelmarKit_Tonemapping_SetResponseFunctionPath(h.tonemapping, long_name); }},
    {"Scene_AddMesh", [](Host& h) { return VelmarKit_Scene_AddMesh(h.scene, h.mesh); }},
    {"Scene_AddModel", [](Host& h) { return VelmarKit_Scene_AddModel(h.scene, h.model); }},
    {"Scene_AddMaterial", [](Host& h) { return VelmarKit_Scene_AddMaterial(h.scene, h.node); }},
    {"Scene_AddCamera", [](Host& h) { return VelmarKit_Scene_AddCamera(h.scene, h.camera); }},
    {"Scene_AddTonemapping", [](Host& h) { return VelmarKit_Scene_AddTonemapping(h.scene, h.tonemapping); }},
    {"create_default_material", [](Host& h) { return VelmarKit_create_default_material(h.scene); }},
    {"create_plane", [](Host& h) { return VelmarKit_create_plane(h.scene); }},
    {"Mesh_LoadFile", [](Host& h) { return VelmarKit_Mesh_LoadFile(h.path.c_str(), 1, place<VelmarMesh>(h)); }},
    {"Mesh_LoadFile_OfVmmesh",
     [](Host& h) { return VelmarKit_Mesh_LoadFile(h.binary_path.c_str(), 1, place<VelmarMesh>(h)); }},
    {"Scene_AddGroundPlane", [](Host& h) { return VelmarKit_Scene_AddGroundPlane(h.scene, 0, 1); }},
    {"create_sunsky", [](Host& h) { return VelmarKit_create_sunsky(h.scene); }},
    {"Scene_LoadModel", [](Host& h) { return VelmarKit_Scene_LoadModel(h.scene, h.path.c_str(), 1, nullptr); }},
    {"Mesh_WriteToFile", [](Host& h) { return VelmarKit_Mesh_WriteToFile(h.mesh, h.document.c_str()); }},
    {"write_mesh_to_file", [](Host& h) { return VelmarKit_write_mesh_to_file(h.mesh, h.document.c_str()); }},
    {"Scene_Read", [](Host& h) { return VelmarKit_Scene_Read(h.document_to_read.c_str(), place<VelmarScene>(h)); }},
    {"Scene_WriteToXML", [](Host& h) { return VelmarKit_Scene_WriteToXML(h.scene, h.document.c_str()); }},
};

class EachAllocation : public testing::TestWithParam<Call> {};

} // namespace

TEST_P(EachAllocation, GivesItsStatusAndKeepsTheHandles) {
    const TempDir dir;
    writeFileBytes(dir.file("one.obj"), "v 0 0 0\nv 1 0 0\nv 0 2 0\nusemtl red\nf 1 2 3\n");
    writeFileBytes(dir.file("read.xml"),
                   "<scene><camera><uid>1</uid><name>a name that is long enough</name></camera>"
                   "<material><uid>2</uid><diffuse><albedo><constant><rgb><rgb>1 1 1</rgb></rgb></constant></albedo>"
                   "</diffuse><name>Red</name></material>"
                   "<material><uid>5</uid><phong><exponent>5</exponent></phong><name>Phong</name></material>"
                   "<mesh><uid>3</uid><name>m</name><external><path>one.obj</path></external></mesh>"
                   "<model2><uid>4</uid><name>m</name><geometry_uid>3</geometry_uid><pos>0 0 0</pos>"
                   "<materials><uid>2</uid><uid>9</uid></materials></model2></scene>");
    VelmarMesh* const triangle = newTriangle();
    EXPECT_SUCCESS(VelmarKit_Mesh_WriteToFile(triangle, dir.file("one.vmmesh").c_str()));
    EXPECT_SUCCESS(VelmarKit_Mesh_Delete(triangle));
    Faults::prepareRuntime();
    // The text of a failure has its block from now on.
    EXPECT_NE(VelmarKit_create_plane(nullptr), VELMARKIT_SUCCESS);
    for (const Lasting lasting : {Lasting::once, Lasting::for_ever}) {
        bool met = true;
        for (std::int64_t nth = 1; met; ++nth) {
            Host host;
            host.path = dir.file("one.obj");
            host.binary_path = dir.file("one.vmmesh");
            host.document = dir.file("one.xml");
            host.document_to_read = dir.file("read.xml");
            std::int32_t status = VELMARKIT_SUCCESS;
            {
                FailingAllocation fault(nth, lasting);
                status = GetParam().act(host);
                met = fault.hasStruck();
            }
            if (status != VELMARKIT_SUCCESS) {
                EXPECT_EQ(status, VELMARKIT_OUT_OF_MEMORY) << "allocation " << nth << ": " << VelmarKit_LastError();
                EXPECT_STRNE(VelmarKit_LastError(), "");
                EXPECT_EQ(host.made, nullptr);
                // The same call works at once.
                EXPECT_SUCCESS(GetParam().act(host));
            }
            ASSERT_LT(nth, 1000);
        }
    }
}

TEST(KitFaults, TextThatFoundNoMemoryIsForgottenWithTheNextFailure) {
    Faults::prepareRuntime();
    const std::string long_path = std::string(400, 'x') + ".obj";
    enum class Outcome { none_failed, text_kept, text_lost };
    // A new thread each, whose block for texts is still small.
    const auto failAtAllocation = [&](std::int64_t nth, Outcome& outcome) {
        EXPECT_NE(VelmarKit_create_plane(nullptr), VELMARKIT_SUCCESS);
        VelmarMesh* mesh = nullptr;
        {
            FailingAllocation fault(nth, Lasting::once);
            EXPECT_NE(VelmarKit_Mesh_LoadFile(long_path.c_str(), 1, &mesh), VELMARKIT_SUCCESS);
            outcome = fault.hasStruck() ? Outcome::text_kept : Outcome::none_failed;
        }
        if (std::string_view(VelmarKit_LastError()).ends_with("also for the text of this failure."))
            outcome = Outcome::text_lost;
        expectRefused(VelmarKit_create_plane(nullptr), "scene is null");
    };
    Outcome outcome = Outcome::text_kept;
    for (std::int64_t nth = 1; outcome == Outcome::text_kept; ++nth)
        std::thread(failAtAllocation, nth, std::ref(outcome)).join();
    EXPECT_EQ(outcome, Outcome::text_lost);
}

TEST(KitFaults, MeshNodeWithoutAMeshIsNamedBeforeAnythingIsWritten) {
    const TempDir dir;
    VelmarScene* const scene = newScene();
    const Velmar::Reference<Velmar::SceneNodeMesh> node(new Velmar::SceneNodeMesh);
    node->setName("Hollow");
    Velmar::fromHandle(scene)->addChildNode(node);
    expectFailure(VelmarKit_Scene_WriteToXML(scene, dir.file("a.xml").c_str()), VELMARKIT_DOCUMENT_ERROR,
                  "Mesh node 'Hollow' has no mesh.");
    EXPECT_TRUE(dir.names().empty());
    EXPECT_SUCCESS(VelmarKit_Scene_Delete(scene));
}

INSTANTIATE_TEST_SUITE_P(KitFaults, EachAllocation, testing::ValuesIn(calls),
                         [](const auto& case_info) { return std::string(case_info.param.name); });
