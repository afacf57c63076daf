#include "velmarapi.h"
#include "velmarexceptions.h"

#include "tests/api/SceneDocument.h"
#include "tests/support/FileBytes.h"
#include "tests/support/Handles.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace SceneFamilyTests {

using namespace TestSupport;

TEST(SceneFamily, AnEmptySceneIsTheFrameAlone) {
    VelmarScene* const scene = VelmarScene_Create();
    EXPECT_EQ(documentOf(scene), document({}));
    VelmarScene_Delete(scene);
}

TEST(SceneFamily, AnAddedNodeIsCountedOnceByTheScene) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarMesh* const mesh = VelmarMesh_Create("m");
    EXPECT_EQ(refCountOf(mesh), 0);
    VelmarScene_AddMesh(scene, mesh);
    EXPECT_EQ(refCountOf(mesh), 1);
    VelmarScene_Delete(scene);
}

TEST(SceneFamily, NodesAreInTheOrderOfAddingWhateverTheFunction) {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddTonemapping(scene, VelmarTonemapping_Create());
    VelmarScene_AddBackground(scene, reinterpret_cast<VelmarBackground*>(VelmarTonemapping_Create()));
    VelmarScene_AddModel(scene, reinterpret_cast<VelmarModel*>(VelmarTonemapping_Create()));
    std::vector<std::string> elements;
    for (const char* const uid : {"<uid>1<", "<uid>2<", "<uid>3<"})
        elements.push_back(replaced(golden("tonemapping/linear"), {{"<uid>1<", uid}}));
    EXPECT_EQ(documentOf(scene), document(elements));
    VelmarScene_Delete(scene);
}

TEST(SceneFamily, ADocumentThatCantBeOpenedIsNotReported) {
    const TempDir dir;
    VelmarScene* const scene = VelmarScene_Create();
    VelmarScene_AddTonemapping(scene, VelmarTonemapping_Create());
    VelmarScene_WriteToXML(scene, dir.file("missing\\scene.xml").c_str());
    EXPECT_TRUE(std::filesystem::is_empty(systemPath(dir.path())));
    VelmarScene_Delete(scene);
}

TEST(SceneFamily, AFailureOfANodeLeavesTheExportAsTheLibrarysException) {
    const TempDir dir;
    VelmarScene* const scene = VelmarScene_Create();
    VelmarMesh* const mesh = VelmarMesh_Create("three pairs for two sets");
    const float uv[] = {0, 0, 1, 0, 1, 1};
    VelmarMesh_AddTextureCoordinates(mesh, 3, uv);
    VelmarMesh_AddTextureCoordinates(mesh, 0, nullptr);
    VelmarScene_AddMesh(scene, mesh);
    EXPECT_EQ(messageOf<Velmar::VelmarException>([&] { documentIn(dir, scene); }),
              "Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): 3, num_uv_mappings: 2");
    EXPECT_EQ(refCountOf(mesh), 1);
    VelmarScene_Delete(scene);
}

TEST(SceneFamily, DeletesAcceptNull) {
    VelmarScene_Delete(nullptr);
    VelmarMesh_Delete(nullptr);
    VelmarTonemapping_Delete(nullptr);
}

TEST(SceneFamily, NamesThatAreOneFunctionShareItsAddress) {
    const auto sameAddress = [](std::initializer_list<const char*> names) {
        void* const first = exportedFunction(*names.begin());
        ASSERT_NE(first, nullptr) << *names.begin();
        for (const char* name : names)
            EXPECT_EQ(exportedFunction(name), first) << name;
    };
    sameAddress({"VelmarScene_AddBackground", "VelmarScene_AddCamera", "VelmarScene_AddMaterial", "VelmarScene_AddMesh",
                 "VelmarScene_AddRenderSettings", "VelmarScene_AddTonemapping"});
    sameAddress({"VelmarContext_Delete", "VelmarMaterial_Delete", "VelmarMesh_Delete", "VelmarModel_Delete",
                 "VelmarRenderSettings_Delete", "VelmarRenderer_Delete", "VelmarScene_Delete",
                 "VelmarTonemapping_Delete"});
    EXPECT_NE(exportedFunction("VelmarBackground_Delete"), exportedFunction("VelmarScene_Delete"));
    sameAddress({"VelmarMesh_NormalSmoothing", "VelmarMesh_SetNormalSmoothing"});
    EXPECT_NE(exportedFunction("VelmarScene_AddModel"), exportedFunction("VelmarScene_AddMesh"));
}

} // namespace SceneFamilyTests
