#include "velmarexceptions.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/SceneXMLWriter.h"
#include "scene/Spectra.h"
#include "scene/nodes/SceneNodeBackgroundSettings.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "tests/nodes/ModelSupport.h"
#include "tests/support/FakeParams.h"
#include "tests/support/FileBytes.h"
#include "tests/support/Golden.h"
#include "tests/support/TempDir.h"
#include "tests/support/Throws.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace WholeSceneTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

/// A scene that holds one of everything. Its references are stored as UIDs, as a reader of documents would leave them,
/// and those that can name what comes later do.
class WholeScene : public testing::Test {
  protected:
    WholeScene() {
        model->setName("Lamp");
        model->geometry_uid = 4;
        model->material_uids.push_back(3);
        model->keyframes[0].pos = {10, 0, 0};
        model->mask_name = "lamps";
        model->ies_profiles.push_back(new IESProfile);
        model->ies_profiles[0]->path = "lamp.ies";
        model->ies_profiles[0]->material_name = "glass";
        model->emission_scales.push_back(new EmissionScale);
        model->emission_scales[0]->material_uid = 3;
        root->addChildNode(model);

        sphere->material_uid = 3;
        sphere->keyframes.push_back(KeyFrame());
        sphere->keyframes[0].pos = {-5, 0, 0};
        root->addChildNode(sphere);

        auto& glass = static_cast<DiffuseMaterial&>(*material->material);
        glass.name = "Glass";
        glass.albedo = new ConstantWavelengthDependentParam(new RGBSpectrum({0.8, 0.9, 1}, 2.2));
        glass.mask_name = "clear";
        glass.layer = 1;
        glass.shared_shader_info = new SharedShaderInfo;
        glass.shared_shader_info->includes.push_back("noise.txt");
        material->scatter_uids.push_back(11);
        root->addChildNode(material);

        mesh->path = "old.vmmesh";
        root->addChildNode(mesh);

        camera->setPosition({0, -20, 0});
        camera->obstacle_map = "dust.png";
        root->addChildNode(camera);

        settings->width.set(640);
        settings->halt_time.set(1.5);
        settings->metropolis.set(false);
        root->addChildNode(settings);

        root->addChildNode(tonemapping);

        const Reference<SunSkyMaterial> sky(new SunSkyMaterial);
        sky->sky_layer = 2;
        background->background_material = sky.getPointer();
        root->addChildNode(background);

        curve->setName("response");
        root->addChildNode(curve);
        root->addChildNode(second_material);
        root->addChildNode(scatter);
    }

    /// One pass, driven as the renderer library drives it: through a state from slot 8, child by child.
    template <class Prepare, class Use>
    void run(TraversalKind kind, Prepare prepare, Use use) {
        const auto destroy = [this](TraversalState* state) { root->destroyTraversalState(state); };
        const std::unique_ptr<TraversalState, decltype(destroy)> state(
            root->createTraversalState(kind, "scene.xml", ""), destroy);
        prepare(*state);
        for (const Reference<SceneNode>& child : root->children())
            child->traverse(*state);
        use(*state);
    }

    void bind() {
        run(
            TraversalKind::BindReferences, [](auto&) {}, [](auto&) {});
    }

    std::vector<std::string> dependencies() {
        std::vector<std::string> paths;
        run(
            TraversalKind::GetDependencies, [](auto&) {},
            [&](const TraversalState& state) {
                for (const String& path : state.dependencies)
                    paths.push_back(toStdString(path));
            });
        return paths;
    }

    const Reference<SceneNodeRoot> root{new SceneNodeRoot};
    const Reference<SceneNodeModel> model = TestSupport::model();
    const Reference<SceneNodeSphere> sphere{new SceneNodeSphere};
    const Reference<SceneNodeMaterial> material{new SceneNodeMaterial};
    const Reference<SceneNodeMesh> mesh = meshNode({"glass"});
    const Reference<SceneNodeCamera> camera{new SceneNodeCamera};
    const Reference<SceneNodeRenderSettings> settings{new SceneNodeRenderSettings};
    const Reference<SceneNodeTonemapping> tonemapping{new SceneNodeTonemapping};
    const Reference<SceneNodeBackgroundSettings> background{new SceneNodeBackgroundSettings};
    const Reference<SceneNodeCurve1D> curve{new SceneNodeCurve1D(vectorOf({0.0f, 0.1f}), vectorOf({1.0f, 0.5f}))};
    const Reference<SceneNodeMaterial> second_material{new SceneNodeMaterial};
    const Reference<FakeScatter> scatter{new FakeScatter};
};

} // namespace

TEST_F(WholeScene, BoundSceneIsWrittenToTheByte) {
    bind();
    const TempDir dir;
    const std::string path = dir.file("scene.xml");
    writeSceneXML(*root, toVelmarString(path), true, nullptr);
    std::string expected = readFileBytes(VELMAR_TEST_DATA "/golden/whole_scene.xml");
    constexpr std::string_view token = "{scene_dir}";
    for (std::size_t at = 0; (at = expected.find(token, at)) != std::string::npos;)
        expected.replace(at, token.size(), dir.path());
    EXPECT_EQ(readFileBytes(path), withSystemLineEnds(expected));
    EXPECT_TRUE(isWellFormed(expected));
}

TEST_F(WholeScene, BindingReachesWhateverTheOrderOfNodes) {
    bind();
    EXPECT_EQ(model->geometry.getPointer(), mesh.getPointer());
    EXPECT_EQ(model->materials[0], material);
    EXPECT_EQ(model->ies_profiles[0]->material, material);
    EXPECT_EQ(model->emission_scales[0]->material, material);
    EXPECT_EQ(sphere->material, material);
    EXPECT_EQ(material->scatter_nodes[0], scatter.getPointer());
    EXPECT_EQ(scatter->owner_uid, 3u);
}

TEST_F(WholeScene, DependenciesAreReportedNodeByNodeWithRepeats) {
    EXPECT_EQ(dependencies(), (std::vector<std::string>{"lamp.ies", "noise.txt", "old.vmmesh", "dust.png"}));
    bind();
    EXPECT_EQ(dependencies(), (std::vector<std::string>{"old.vmmesh", "lamp.ies", "noise.txt", "noise.txt", "noise.txt",
                                                        "old.vmmesh", "dust.png"}));
}

TEST_F(WholeScene, EveryReportedPathIsReplacedOnce) {
    bind();
    const auto before = dependencies();
    run(
        TraversalKind::UpdateDependencies,
        [&](TraversalState& state) {
            for (const std::string& path : before)
                if (state.path_map.find(toVelmarString(path)) == nullptr)
                    state.path_map.insert(toVelmarString(path), toVelmarString("new\\" + path));
        },
        [](auto&) {});
    std::vector<std::string> expected = before;
    for (std::string& path : expected)
        path = "new\\" + path;
    EXPECT_EQ(dependencies(), expected);
}

TEST_F(WholeScene, UpdateStopsAtTheFirstPathThatHasNoNewOne) {
    const auto update = [&] {
        run(
            TraversalKind::UpdateDependencies,
            [](TraversalState& state) { state.path_map.insert("lamp.ies", "new.ies"); }, [](auto&) {});
    };
    EXPECT_EQ(messageOf<VelmarException>(update),
              "While updating dependencies: Missing mapping for old path 'noise.txt'.");
    EXPECT_EQ(model->ies_profiles[0]->path, "new.ies");
    EXPECT_EQ(mesh->path, "old.vmmesh");
}

TEST_F(WholeScene, BoundsEncloseModelSphereAndCamera) {
    bind();
    run(
        TraversalKind::GetBounds, [](auto&) {},
        [](const TraversalState& state) {
            EXPECT_EQ(state.bounds_min[0], -6.0f);
            EXPECT_EQ(state.bounds_min[1], -20.001f);
            EXPECT_EQ(state.bounds_min[2], -1.0f);
            EXPECT_EQ(state.bounds_max[0], 11.0f);
            EXPECT_EQ(state.bounds_max[1], 2.0f);
            EXPECT_EQ(state.bounds_max[2], 3.0f);
        });
}

TEST_F(WholeScene, OffsetReachesEveryUIDButThoseOfRecords) {
    run(
        TraversalKind::OffsetUIDs, [](TraversalState& state) { state.uid_offset = 100; }, [](auto&) {});
    UID uid = 101;
    for (const Reference<SceneNode>& child : root->children())
        EXPECT_EQ(child->getUID(), uid++);
    EXPECT_EQ(model->geometry_uid, 104u);
    EXPECT_EQ(model->material_uids[0], 103u);
    EXPECT_EQ(model->emission_scales[0]->material_uid, 3u);
    EXPECT_EQ(sphere->material_uid, 103u);
    EXPECT_EQ(material->scatter_uids[0], 111u);
    EXPECT_EQ(root->getUID(), root_uid);
}

TEST_F(WholeScene, GreatestLayerIsFoundInTheTree) {
    EXPECT_EQ(SceneNode::getMaxLayerIndexOfTree(*root), 2u);
}

TEST_F(WholeScene, MaskNamesAreThoseOfTheirKind) {
    const Vector<String> materials = SceneNode::getMaterialMaskNameList(*root);
    ASSERT_EQ(materials.size(), 1u);
    EXPECT_EQ(materials[0], "clear");
    const Vector<String> models = SceneNode::getModelMaskNameList(*root);
    ASSERT_EQ(models.size(), 1u);
    EXPECT_EQ(models[0], "lamps");
}

TEST_F(WholeScene, EveryNodeEqualsItselfAndNoOther) {
    bind();
    for (const Reference<SceneNode>& a : root->children())
        for (const Reference<SceneNode>& b : root->children())
            EXPECT_EQ(a->isEqual(b.getPointer()), a == b) << a->getUID() << " and " << b->getUID();
    EXPECT_TRUE(SceneNode::isEqualTree(*root, *root));
}

} // namespace WholeSceneTests
