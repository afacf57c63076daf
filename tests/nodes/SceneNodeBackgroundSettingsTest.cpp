#include "scene/nodes/SceneNodeBackgroundSettings.h"

#include "scene/Material.h"
#include "tests/support/Documents.h"
#include "tests/support/FakeParams.h"
#include "tests/support/Golden.h"

#include <gtest/gtest.h>
#include <string>

namespace SceneNodeBackgroundSettingsTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

using Background = Reference<SceneNodeBackgroundSettings>;

TEST(SceneNodeBackgroundSettings, WithoutAMaterialWritesItsIdentityAlone) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    expectGolden(elementOf(*node), golden("background/empty"));
    EXPECT_EQ(node->getMaxLayerIndex(), 0u);
}

TEST(SceneNodeBackgroundSettings, MaterialHasANameButNoUID) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    node->background_material = new SunSkyMaterial;
    node->background_material->name = "Sky";
    expectGolden(elementOf(*node, 1),
                 indented(replaced(golden("background/sun_sky"), {{"<uid>1<", "<uid>2<"},
                                                                  {"<name><", "<name>Sky<"},
                                                                  {"1 1 1", "0 0 1"},
                                                                  {"captured-simulation", "original"}})));
}

TEST(SceneNodeBackgroundSettings, EmissionScaleComesBeforeTheMaterial) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    node->emission_scale = new EmissionScale;
    node->emission_scale->value = 3;
    node->background_material = new DiffuseMaterial;
    expectGolden(elementOf(*node), golden("background/with_emission_scale"));
}

TEST(SceneNodeBackgroundSettings, MaxLayerIndexIsThatOfTheMaterial) {
    const Background node(new SceneNodeBackgroundSettings);
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->sun_layer = 2;
    node->background_material = material.getPointer();
    EXPECT_EQ(node->getMaxLayerIndex(), 2u);
}

TEST(SceneNodeBackgroundSettings, CloneHasNeitherMaterialNorEmissionScale) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(5);
    node->setName("Dusk");
    node->emission_scale = new EmissionScale;
    node->background_material = new SunSkyMaterial;
    expectGolden(elementOf(*node->clone()),
                 replaced(golden("background/empty"), {{"<uid>2<", "<uid>5<"}, {"Background Settings", "Dusk"}}));
}

TEST(SceneNodeBackgroundSettings, OffsetReachesItsUID) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(5);
    TraversalState state(TraversalKind::OffsetUIDs, "", "");
    state.uid_offset = 10;
    node->traverse(state);
    EXPECT_EQ(node->getUID(), 15u);
}

TEST(SceneNodeBackgroundSettings, EveryPassReachesTheMaterialAndLeavesTheDepth) {
    for (const auto kind :
         {TraversalKind::BindReferences, TraversalKind::GetDependencies, TraversalKind::UpdateDependencies,
          TraversalKind::LoadMeshes, TraversalKind::GetBounds, TraversalKind::OffsetUIDs}) {
        const Background node(new SceneNodeBackgroundSettings);
        std::string visits;
        node->background_material = new DiffuseMaterial;
        node->background_material->bump = new FakeSurfaceParam("b", &visits);
        TraversalState state(kind, "", "");
        state.depth = 100;
        node->traverse(state);
        EXPECT_EQ(visits, "b ");
        EXPECT_EQ(state.depth, 100);
    }
}

TEST(SceneNodeBackgroundSettings, OnlyUIDAndNameCountForEquality) {
    const Background a(new SceneNodeBackgroundSettings);
    const Background b(new SceneNodeBackgroundSettings);
    b->background_material = new SunSkyMaterial;
    EXPECT_TRUE(a->isEqual(b.getPointer()));
}

} // namespace

} // namespace SceneNodeBackgroundSettingsTests
