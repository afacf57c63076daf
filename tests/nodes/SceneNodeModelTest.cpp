#include "scene/nodes/SceneNodeModel.h"

#include "velmarexceptions.h"

#include "tests/nodes/ModelSupport.h"
#include "tests/support/Documents.h"
#include "tests/support/FakeParams.h"
#include "tests/support/Golden.h"
#include "tests/support/PlainNode.h"
#include "tests/support/Throws.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace SceneNodeModelTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

constexpr double quarter_turn[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};

/// The part of the element between the geometry and the materials.
std::string placementOf(const SceneNodeModel& node) {
    const std::string element = elementOf(node);
    const std::size_t begin = element.find("</geometry_uid>\n") + 16;
    return element.substr(begin, element.find("\t<materials>") - begin);
}

std::vector<UID> listOf(const Vector<UID>& uids) {
    return {uids.begin(), uids.end()};
}

} // namespace

TEST(SceneNodeModel, IsAnObjectNamedModel) {
    const Reference<SceneNodeModel> node(new SceneNodeModel);
    EXPECT_EQ(node->getName(), "Model");
    EXPECT_EQ(node->getType(), NodeType::Object);
    EXPECT_EQ(getNodeTypeName(node->getType()), "Object");
}

TEST(SceneNodeModel, PlainModelWritesAPositionAndAnEmptyListOfMaterials) {
    const auto node = model();
    node->setUID(4);
    node->geometry_uid = 2;
    expectGolden(
        elementOf(*node, 1),
        indented(replaced(golden("model/plain"), {{"<uid>1<", "<uid>4<"}, {"Chair", "Model"}, {"4294967295", "2"}})));
}

TEST(SceneNodeModel, WritesEverythingInFixedOrder) {
    const auto node = model();
    node->setUID(4);
    node->setName("Lamp & shade");
    node->geometry_uid = 2;
    node->scale = 0.5;
    node->invisible_to_camera = true;
    node->rotation = new MatrixRotation(quarter_turn);
    node->keyframes[0].pos = {1, 2, 3.5};
    node->materials = vectorOf({materialNode(7), materialNode(6)});
    const Reference<IESProfile> profile(new IESProfile);
    profile->path = "lamp.ies";
    profile->material = node->materials[0];
    node->ies_profiles.push_back(profile);
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->measure = EmissionScale::luminous_emittance;
    scale->value = 1000;
    scale->material = node->materials[1];
    node->emission_scales.push_back(scale);
    node->mask_name = "lamps";
    expectGolden(elementOf(*node), golden("model/full"));
}

TEST(SceneNodeModel, FrameAtAnotherTimeIsAKeyFrame) {
    const auto node = model();
    node->keyframes[0].time = 0.25;
    expectGolden(placementOf(*node), indented(golden("model/late_frame")));
}

TEST(SceneNodeModel, RotatedFrameIsAKeyFrame) {
    const auto node = model();
    node->keyframes[0].angle = 1;
    EXPECT_EQ(placementOf(*node).substr(0, 12), "\t<keyframe>\n");
}

TEST(SceneNodeModel, ShearedFrameIsAKeyFrame) {
    const auto node = model();
    node->keyframes[0].S[1] = 0.5;
    EXPECT_EQ(placementOf(*node).substr(0, 12), "\t<keyframe>\n");
}

TEST(SceneNodeModel, AxisAloneDoesntMakeAKeyFrame) {
    const auto node = model();
    node->keyframes[0].axis = {1, 0, 0};
    EXPECT_EQ(placementOf(*node), "\t<pos>0 0 0</pos>\n");
}

TEST(SceneNodeModel, TwoFramesAreKeyFramesEvenWhenPlain) {
    const auto node = model();
    node->keyframes.push_back(KeyFrame());
    const std::string frame = "\t<keyframe>\n\t\t<time>0</time>\n\t\t<pos>0 0 0</pos>\n\t</keyframe>\n";
    EXPECT_EQ(placementOf(*node), frame + frame);
}

TEST(SceneNodeModel, WithoutFramesNoPositionIsWritten) {
    const auto node = model();
    node->keyframes.clear();
    EXPECT_EQ(placementOf(*node), "");
}

TEST(SceneNodeModel, ScaleIsWrittenUnlessItIsExactly1) {
    const auto node = model();
    node->scale = 1.0000001;
    EXPECT_EQ(placementOf(*node), "\t<scale>1.0000001</scale>\n\t<pos>0 0 0</pos>\n");
}

TEST(SceneNodeModel, GeometryUIDFollowsTheBoundNode) {
    const auto node = model();
    const auto mesh = meshNode();
    mesh->setUID(5);
    node->setGeometry(mesh);
    mesh->setUID(9);
    EXPECT_EQ(node->geometry_uid, 5u);
    EXPECT_NE(elementOf(*node).find("<geometry_uid>9</geometry_uid>"), std::string::npos);
}

TEST(SceneNodeModel, MaterialsKnownByUIDOnlyAreNotWritten) {
    const auto node = model();
    node->material_uids.push_back(7);
    EXPECT_NE(elementOf(*node).find("\t<materials>\n\t</materials>\n"), std::string::npos);
}

TEST(SceneNodeModel, MissingMaterialKeepsItsPlaceInTheList) {
    const auto node = model();
    node->materials.push_back(nullptr);
    node->materials.push_back(materialNode(7));
    EXPECT_NE(elementOf(*node).find("\t\t<uid>4294967295</uid>\n\t\t<uid>7</uid>\n"), std::string::npos);
}

TEST(SceneNodeModel, RecordOfMeasure4LeavesNoTraceBetweenItsNeighbours) {
    const auto node = model();
    for (const auto measure : {EmissionScale::luminance, EmissionScale::none, EmissionScale::luminous_flux}) {
        node->emission_scales.push_back(new EmissionScale);
        node->emission_scales[node->emission_scales.size() - 1]->measure = measure;
    }
    const std::string element = elementOf(*node);
    const std::string first = "<measure>luminance</measure>\n\t\t<value>0</value>\n\t\t<material_uid>4294967295"
                              "</material_uid>\n\t</emission_scale>\n\t<emission_scale>\n"
                              "\t\t<measure>luminous_flux</measure>\n";
    EXPECT_NE(element.find(first), std::string::npos);
}

TEST(SceneNodeModel, CloneSharesGeometryAndMaterialsAndCopiesTheRest) {
    const auto node = model();
    node->setUID(3);
    node->setName("Chair");
    node->setGeometry(meshNode());
    node->geometry_uid = 8;
    node->scale = 2;
    node->keyframes[0].pos = {1, 2, 3};
    node->rotation = new MatrixRotation(quarter_turn);
    node->materials.push_back(materialNode(7));
    node->material_uids.push_back(11);
    node->ies_profiles.push_back(new IESProfile);
    node->ies_profiles.push_back(nullptr);
    node->emission_scales.push_back(new EmissionScale);

    const Reference<SceneNode> copy = node->clone();
    const auto& cloned = static_cast<const SceneNodeModel&>(*copy);
    EXPECT_EQ(cloned.getUID(), 3u);
    EXPECT_EQ(cloned.getName(), "Chair");
    EXPECT_EQ(cloned.geometry_uid, 8u);
    EXPECT_EQ(cloned.geometry, node->geometry);
    EXPECT_EQ(cloned.scale, 2);
    EXPECT_EQ(cloned.keyframes[0].pos, (Vec3d{1, 2, 3}));
    EXPECT_NE(cloned.rotation.getPointer(), node->rotation.getPointer());
    EXPECT_FALSE(cloned.rotation->isIdentity());
    EXPECT_EQ(cloned.materials[0], node->materials[0]);
    EXPECT_EQ(listOf(cloned.material_uids), std::vector<UID>{11});
    EXPECT_NE(cloned.ies_profiles[0], node->ies_profiles[0]);
    EXPECT_FALSE(cloned.ies_profiles[1]);
    EXPECT_NE(cloned.emission_scales[0], node->emission_scales[0]);
}

TEST(SceneNodeModel, CloneIsVisibleAndHasNoMaskName) {
    const auto node = model();
    node->invisible_to_camera = true;
    node->mask_name = "mask";
    const Reference<SceneNode> copy = node->clone();
    EXPECT_FALSE(static_cast<const SceneNodeModel&>(*copy).invisible_to_camera);
    EXPECT_EQ(static_cast<const SceneNodeModel&>(*copy).mask_name, "");
}

TEST(SceneNodeModel, RebindsMaterialsByUIDButNotTheGeometry) {
    const auto node = model();
    const auto old_mesh = meshNode();
    old_mesh->setUID(1);
    node->setGeometry(old_mesh);
    node->materials = vectorOf({materialNode(7), materialNode(8), materialNode(9), Reference<SceneNodeMaterial>()});
    const auto kept = node->materials[1];
    const auto new_material = materialNode(7);
    const Reference<PlainNode> camera(new PlainNode(NodeType::Camera));
    const auto new_mesh = meshNode();
    NodeUIDMap map;
    map.insert(7, new_material.getPointer());
    map.insert(8, camera.getPointer());
    map.insert(9, nullptr);
    map.insert(1, new_mesh.getPointer());
    node->updateNodeReferences(map);
    EXPECT_EQ(node->materials[0], new_material);
    EXPECT_EQ(node->materials[1], kept);
    EXPECT_EQ(node->materials[2]->getUID(), 9u);
    EXPECT_EQ(node->geometry.getPointer(), old_mesh.getPointer());
}

TEST(SceneNodeModel, MaskNameIsEnteredOnceUnlessEmpty) {
    MaskNameMap map;
    const auto node = model();
    node->getModelMaskNames(map);
    EXPECT_EQ(map.size(), 0u);
    for (const char* const mask : {"b", "a", "b"}) {
        node->mask_name = mask;
        node->getModelMaskNames(map);
    }
    ASSERT_EQ(map.size(), 2u);
    EXPECT_EQ(*map.find("b"), 0u);
    EXPECT_EQ(*map.find("a"), 1u);
}

TEST(SceneNodeModel, DependsOnGeometryAndBoundMaterials) {
    const auto node = model();
    node->geometry_uid = 20;
    node->material_uids.push_back(30);
    EXPECT_EQ(listOf(node->getDependencyUIDs()), std::vector<UID>{20});
    const auto mesh = meshNode();
    mesh->setUID(21);
    node->geometry = mesh;
    node->materials = vectorOf({materialNode(7), Reference<SceneNodeMaterial>(), materialNode(6)});
    const Vector<UID> uids = node->getDependencyUIDs();
    EXPECT_EQ(listOf(uids), (std::vector<UID>{21, 7, 6}));
    EXPECT_EQ(uids.capacity(), 4u);
}

TEST(SceneNodeModel, GetDependenciesReportsGeometryOnceThenProfilesThenMaterials) {
    const auto mesh = meshNode();
    mesh->setUID(1);
    mesh->path = "mesh.vmmesh";
    const auto material = materialNode(2);
    material->material->shared_shader_info = new SharedShaderInfo;
    material->material->shared_shader_info->includes.push_back("noise.txt");
    TraversalState state(TraversalKind::GetDependencies, "", "");
    for (const char* const profile : {"a.ies", "b.ies"}) {
        const auto node = model();
        node->setGeometry(mesh);
        node->materials = vectorOf({material, Reference<SceneNodeMaterial>()});
        node->ies_profiles.push_back(nullptr);
        node->ies_profiles.push_back(new IESProfile);
        node->ies_profiles[1]->path = profile;
        node->traverse(state);
    }
    std::vector<std::string> paths;
    for (const String& path : state.dependencies)
        paths.push_back(toStdString(path));
    EXPECT_EQ(paths, (std::vector<std::string>{"mesh.vmmesh", "a.ies", "noise.txt", "b.ies", "noise.txt"}));
}

TEST(SceneNodeModel, UpdateDependenciesReplacesProfilesOnly) {
    const auto mesh = meshNode();
    mesh->path = "mesh.vmmesh";
    const auto node = model();
    node->setGeometry(mesh);
    node->ies_profiles.push_back(nullptr);
    node->ies_profiles.push_back(new IESProfile);
    node->ies_profiles[1]->path = "a.ies";
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    EXPECT_EQ(messageOf<VelmarException>([&] { node->traverse(state); }),
              "While updating dependencies: Missing mapping for old path 'a.ies'.");
    state.path_map.insert("a.ies", "moved\\a.ies");
    node->traverse(state);
    EXPECT_EQ(node->ies_profiles[1]->path, "moved\\a.ies");
    EXPECT_EQ(mesh->path, "mesh.vmmesh");
}

TEST(SceneNodeModel, OffsetReachesItsUIDsButNotThoseOfRecords) {
    const auto node = model();
    node->setUID(1);
    node->geometry_uid = 2;
    node->material_uids = vectorOf<UID>({3, invalid_uid});
    node->emission_scales.push_back(new EmissionScale);
    node->emission_scales[0]->material_uid = 3;
    pass(*node, TraversalKind::OffsetUIDs, 10);
    EXPECT_EQ(node->getUID(), 11u);
    EXPECT_EQ(node->geometry_uid, 12u);
    EXPECT_EQ(listOf(node->material_uids), (std::vector<UID>{13, invalid_uid}));
    EXPECT_EQ(node->emission_scales[0]->material_uid, 3u);
}

TEST(SceneNodeModel, LoadMeshesDoesNothing) {
    const auto node = model();
    node->setGeometry(new PlainNode);
    EXPECT_NO_THROW(pass(*node, TraversalKind::LoadMeshes));
}

// ---- equality
// ---------------------------------------------------------------------------------------------------------

namespace {

class ModelEquality : public testing::Test {
  protected:
    ModelEquality() {
        for (SceneNodeModel* const node : {a.getPointer(), b.getPointer()}) {
            const auto mesh = meshNode();
            mesh->setUID(5);
            node->setGeometry(mesh);
            node->materials.push_back(materialNode(6));
            node->emission_scales.push_back(new EmissionScale);
        }
    }

    bool equal() const { return a->isEqual(b.getPointer()); }

    const Reference<SceneNodeModel> a = model();
    const Reference<SceneNodeModel> b = model();
};

} // namespace

TEST_F(ModelEquality, HoldsForEqualContentInDistinctObjects) {
    EXPECT_TRUE(equal());
}

TEST_F(ModelEquality, FailsByNameOrUID) {
    b->setName("Other");
    EXPECT_FALSE(equal());
    b->setName("Model");
    b->setUID(3);
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, FailsForANodeOfAnotherKind) {
    const Reference<PlainNode> other(new PlainNode);
    other->setName("Model");
    EXPECT_FALSE(a->isEqual(other.getPointer()));
}

TEST_F(ModelEquality, FailsByGeometry) {
    b->geometry->setUID(4);
    EXPECT_FALSE(equal());
    b->geometry = nullptr;
    EXPECT_FALSE(equal());
    a->geometry = nullptr;
    EXPECT_TRUE(equal());
}

TEST_F(ModelEquality, FailsByAnyFieldOfAKeyFrame) {
    const auto differs = [&](auto change) {
        KeyFrame& frame = b->keyframes[0];
        const KeyFrame before = frame;
        change(frame);
        const bool result = !equal();
        frame = before;
        return result;
    };
    EXPECT_TRUE(differs([](KeyFrame& frame) { frame.pos.y = 1; }));
    EXPECT_TRUE(differs([](KeyFrame& frame) { frame.time = 1; }));
    EXPECT_TRUE(differs([](KeyFrame& frame) { frame.axis.x = 1; }));
    EXPECT_TRUE(differs([](KeyFrame& frame) { frame.angle = 1; }));
    EXPECT_TRUE(differs([](KeyFrame& frame) { frame.S[8] = 2; }));
    EXPECT_TRUE(equal());
    b->keyframes.push_back(KeyFrame());
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, FailsByScale) {
    b->scale = 2;
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, FailsByAnEmissionScale) {
    EmissionScale& record = *b->emission_scales[0];
    record.measure = 1;
    EXPECT_FALSE(equal());
    record.measure = 0;
    record.value = 1;
    EXPECT_FALSE(equal());
    record.value = 0;
    record.material_uid = 1;
    EXPECT_FALSE(equal());
    b->emission_scales.clear();
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, BoundEmissionScalesCompareByTheMaterialsUID) {
    a->emission_scales[0]->material = materialNode(6);
    a->emission_scales[0]->material_uid = 1;
    EXPECT_FALSE(equal()) << "the other one isn't bound";
    b->emission_scales[0]->material = materialNode(6);
    EXPECT_TRUE(equal());
    b->emission_scales[0]->material->setUID(7);
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, FailsByAMaterial) {
    b->materials[0]->setUID(7);
    EXPECT_FALSE(equal());
    b->materials[0] = nullptr;
    EXPECT_FALSE(equal());
    a->materials[0] = nullptr;
    EXPECT_TRUE(equal());
    b->materials.clear();
    EXPECT_FALSE(equal());
}

TEST_F(ModelEquality, RotationVisibilityProfilesMaskAndStoredUIDsTakeNoPart) {
    b->rotation = new MatrixRotation(quarter_turn);
    b->invisible_to_camera = true;
    b->ies_profiles.push_back(new IESProfile);
    b->mask_name = "mask";
    b->material_uids.push_back(1);
    EXPECT_TRUE(equal());
}

} // namespace SceneNodeModelTests
