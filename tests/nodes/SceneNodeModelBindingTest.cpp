#include "velmarexceptions.h"

#include "scene/nodes/SceneNodeModel.h"
#include "tests/nodes/ModelSupport.h"
#include "tests/support/FakeParams.h"
#include "tests/support/PlainNode.h"
#include "tests/support/Throws.h"

#include <gtest/gtest.h>
#include <string>

namespace SceneNodeModelBindingTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

/// A scene with a mesh of UID 1 that has the names "a" and "b", materials of UID 2 and 3, and a model of UID 4 that
/// knows all by UID.
class ModelBinding : public testing::Test {
  protected:
    ModelBinding() {
        root->addChildNode(mesh);
        root->addChildNode(first_material);
        root->addChildNode(second_material);
        root->addChildNode(node);
        node->geometry_uid = 1;
        node->material_uids = vectorOf<UID>({3, 2});
    }

    void bind() { pass(*node, TraversalKind::BindReferences); }

    template <class Exception = VelmarException>
    std::string messageOfBinding() {
        return messageOf<Exception>([&] { bind(); });
    }

    EmissionScale& addScale(const char* material_name) {
        node->emission_scales.push_back(new EmissionScale);
        EmissionScale& record = *node->emission_scales[node->emission_scales.size() - 1];
        record.material_name = material_name;
        return record;
    }

    IESProfile& addProfile(const char* material_name) {
        node->ies_profiles.push_back(new IESProfile);
        IESProfile& record = *node->ies_profiles[node->ies_profiles.size() - 1];
        record.material_name = material_name;
        return record;
    }

    const Reference<SceneNodeRoot> root{new SceneNodeRoot};
    const Reference<SceneNodeMesh> mesh = meshNode({"a", "b"});
    const Reference<SceneNodeMaterial> first_material = materialNode();
    const Reference<SceneNodeMaterial> second_material = materialNode();
    const Reference<SceneNodeModel> node = model();
};

} // namespace

TEST_F(ModelBinding, TurnsUIDsIntoReferences) {
    bind();
    EXPECT_EQ(node->geometry.getPointer(), mesh.getPointer());
    ASSERT_EQ(node->materials.size(), 2u);
    EXPECT_EQ(node->materials[0], second_material);
    EXPECT_EQ(node->materials[1], first_material);
    EXPECT_EQ(first_material->getRefCount(), 3);
}

TEST_F(ModelBinding, KeepsReferencesThatAreThere) {
    const auto other_mesh = meshNode();
    node->geometry = other_mesh.getPointer();
    node->materials.push_back(first_material);
    node->geometry_uid = 99;
    node->material_uids = vectorOf<UID>({98, 97});
    bind();
    EXPECT_EQ(node->geometry.getPointer(), other_mesh.getPointer());
    EXPECT_EQ(node->materials.size(), 1u);
}

TEST_F(ModelBinding, OutsideASceneFailsEvenWithGeometry) {
    const auto outside = model();
    outside->setGeometry(mesh);
    EXPECT_EQ(messageOf<VelmarException>([&] { pass(*outside, TraversalKind::BindReferences); }),
              "While binding geometry: root node was NULL");
}

TEST_F(ModelBinding, MissingGeometryThrows) {
    node->geometry_uid = 99;
    EXPECT_EQ(messageOfBinding(), "While processing node 'Model', UID 4:  Failed to find geometry for UID 99");
}

TEST_F(ModelBinding, CameraAsGeometryIsRefused) {
    root->addChildNode(new PlainNode(NodeType::Camera));
    node->geometry_uid = 5;
    EXPECT_EQ(messageOfBinding(),
              "While processing node 'Model', UID 4:  Referenced node (UID=5) did not have type SceneNodeMesh or "
              "SceneNodeParametricSurface or SceneNodeDisplacedQuad, but instead had type Camera.");
}

TEST_F(ModelBinding, ModelAsGeometryIsRefusedAsAnObject) {
    node->geometry_uid = 4;
    EXPECT_EQ(messageOfBinding(),
              "While processing node 'Model', UID 4:  Referenced node (UID=4) did not have type SceneNodeMesh or "
              "SceneNodeParametricSurface or SceneNodeDisplacedQuad, but instead had type Object.");
}

TEST_F(ModelBinding, OtherKindsOfGeometryAreTaken) {
    for (const NodeType type : {NodeType::ParametricSurface, NodeType::DisplacedQuad}) {
        const Reference<PlainNode> surface(new PlainNode(type));
        root->addChildNode(surface);
        node->geometry = nullptr;
        node->geometry_uid = surface->getUID();
        bind();
        EXPECT_EQ(node->geometry.getPointer(), surface.getPointer());
    }
}

TEST_F(ModelBinding, MissingMaterialThrowsAndLeavesWhatWasBound) {
    node->material_uids = vectorOf<UID>({2, 99});
    EXPECT_EQ(messageOfBinding(), "While processing node 'Model', UID 4:  Failed to find material for UID 99");
    ASSERT_EQ(node->materials.size(), 2u);
    EXPECT_EQ(node->materials[0], first_material);
    EXPECT_FALSE(node->materials[1]);
}

TEST_F(ModelBinding, MeshAsMaterialIsRefused) {
    node->material_uids = vectorOf<UID>({1});
    EXPECT_EQ(messageOfBinding(), "While processing node 'Model', UID 4:  Referenced node (UID 1) did not have type "
                                  "SceneNodeMaterial, but instead had type Mesh.");
}

TEST_F(ModelBinding, RecordsAreBoundByUID) {
    EmissionScale& scale = addScale("not on the mesh");
    scale.material_uid = 2;
    IESProfile& profile = addProfile("not on the mesh");
    profile.material_uid = 3;
    bind();
    EXPECT_EQ(scale.material, first_material);
    EXPECT_EQ(profile.material, second_material);
}

TEST_F(ModelBinding, RecordsThatAreBoundAreLeftAlone) {
    EmissionScale& scale = addScale("not on the mesh");
    scale.material = first_material;
    IESProfile& profile = addProfile("not on the mesh");
    profile.material = first_material;
    node->emission_scales.push_back(nullptr);
    node->ies_profiles.push_back(nullptr);
    bind();
    EXPECT_EQ(scale.material_uid, invalid_uid);
    EXPECT_EQ(profile.material_uid, invalid_uid);
}

TEST_F(ModelBinding, NamesAreLookedUpInTheMeshAndFoundAmongStoredUIDs) {
    EmissionScale& scale = addScale("b");
    IESProfile& profile = addProfile("a");
    bind();
    EXPECT_EQ(scale.material_uid, 2u);
    EXPECT_EQ(scale.material, first_material);
    EXPECT_EQ(profile.material_uid, 3u);
    EXPECT_EQ(profile.material, second_material);
}

TEST_F(ModelBinding, NamesAreFoundAmongBoundMaterialsWhenNoUIDsAreStored) {
    node->materials = vectorOf({first_material, second_material});
    node->material_uids.clear();
    EmissionScale& scale = addScale("b");
    bind();
    EXPECT_EQ(scale.material, second_material);
}

TEST_F(ModelBinding, NameThatTheMeshDoesntHaveThrows) {
    addScale("c");
    mesh->setName("Chair");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "Material 'c' is not defined on mesh Chair.");
}

TEST_F(ModelBinding, NamesAreComparedByBytes) {
    addScale("A");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "Material 'A' is not defined on mesh Mesh.");
}

TEST_F(ModelBinding, EmptyNameThrowsUnlessTheMeshHasIt) {
    EmissionScale& scale = addScale("");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "Material '' is not defined on mesh Mesh.");
    mesh->mesh->addMaterialUsed("");
    node->material_uids.push_back(2);
    bind();
    EXPECT_EQ(scale.material, first_material);
}

TEST_F(ModelBinding, NameWithBothListsFilledThrows) {
    node->materials.push_back(first_material);
    addProfile("a");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "No materials assigned to model Model.");
}

TEST_F(ModelBinding, NameBeyondTheModelsMaterialsStaysUnbound) {
    node->material_uids.clear();
    addScale("b");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(),
              "Failed binding material to Emission scale in model Model: Invalid UID.");
}

TEST_F(ModelBinding, NameAfterTheLastStoredUIDStaysUnbound) {
    node->material_uids = vectorOf<UID>({2});
    addScale("b");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(),
              "Failed binding material to Emission scale in model Model: Invalid UID.");
}

TEST_F(ModelBinding, NameOfAMissingMaterialStaysUnbound) {
    node->material_uids.clear();
    node->materials.push_back(nullptr);
    addProfile("a");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(),
              "Failed binding material to IES profile in model Model: Invalid UID.");
}

TEST_F(ModelBinding, NamesOfAMeshNodeWithoutAMeshAreUnknown) {
    mesh->mesh = nullptr;
    addScale("a");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "Material 'a' is not defined on mesh Mesh.");
}

TEST_F(ModelBinding, NamesServeMeshesOnly) {
    node->geometry = new PlainNode(NodeType::ParametricSurface);
    addScale("a");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(),
              "Failed binding material to Emission scale in model Model: Invalid UID.");
    node->emission_scales.clear();
    addProfile("a");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(),
              "Failed binding material to IES profile in model Model: Invalid UID.");
}

TEST_F(ModelBinding, EmissionScalesAreLookedUpBeforeProfiles) {
    addProfile("no such profile");
    addScale("no such scale");
    EXPECT_EQ(messageOfBinding<SceneParserExcep>(), "Material 'no such scale' is not defined on mesh Mesh.");
}

TEST_F(ModelBinding, RecordWithTheUIDOfAnotherKindOfNodeIsRefused) {
    addScale("").material_uid = 1;
    EXPECT_EQ(messageOfBinding(), "While processing node 'Model', UID 4:  Referenced node (UID 1) did not have type "
                                  "SceneNodeMaterial, but instead had type Mesh.");
}

} // namespace SceneNodeModelBindingTests
