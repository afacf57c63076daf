#include "scene/nodes/SceneNodeBackgroundSettings.h"

#include "scene/Material.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using namespace TestSupport;

namespace {

using Background = Reference<SceneNodeBackgroundSettings>;

TEST(SceneNodeBackgroundSettings, WithoutAMaterialWritesItsIdentityAlone) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    expectGolden(elementOf(*node), "<background_settings>\n"
                                   "\t<uid>2</uid>\n"
                                   "\t<name>Background Settings</name>\n"
                                   "</background_settings>\n");
    EXPECT_EQ(node->getMaxLayerIndex(), 0u);
}

TEST(SceneNodeBackgroundSettings, MaterialHasANameButNoUID) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    node->background_material = new SunSkyMaterial;
    node->background_material->name = "Sky";
    expectGolden(elementOf(*node, 1), "\t<background_settings>\n"
                                      "\t\t<uid>2</uid>\n"
                                      "\t\t<name>Background Settings</name>\n"
                                      "\t\t<background_material>\n"
                                      "\t\t\t<material>\n"
                                      "\t\t\t\t<name>Sky</name>\n"
                                      "\t\t\t\t<sunsky>\n"
                                      "\t\t\t\t\t<sundir>0 0 1</sundir>\n"
                                      "\t\t\t\t\t<turbidity>2</turbidity>\n"
                                      "\t\t\t\t\t<extra_atmospheric>false</extra_atmospheric>\n"
                                      "\t\t\t\t\t<enable_sky>true</enable_sky>\n"
                                      "\t\t\t\t\t<sun_layer>0</sun_layer>\n"
                                      "\t\t\t\t\t<sky_layer>0</sky_layer>\n"
                                      "\t\t\t\t\t<model>original</model>\n"
                                      "\t\t\t\t</sunsky>\n"
                                      "\t\t\t</material>\n"
                                      "\t\t</background_material>\n"
                                      "\t</background_settings>\n");
}

TEST(SceneNodeBackgroundSettings, EmissionScaleComesBeforeTheMaterial) {
    const Background node(new SceneNodeBackgroundSettings);
    node->setUID(2);
    node->emission_scale = new EmissionScale;
    node->emission_scale->value = 3;
    node->background_material = new DiffuseMaterial;
    expectGolden(elementOf(*node), "<background_settings>\n"
                                   "\t<uid>2</uid>\n"
                                   "\t<name>Background Settings</name>\n"
                                   "\t<emission_scale>\n"
                                   "\t\t<measure>luminous_flux</measure>\n"
                                   "\t\t<value>3</value>\n"
                                   "\t\t<material_uid>4294967295</material_uid>\n"
                                   "\t</emission_scale>\n"
                                   "\t<background_material>\n"
                                   "\t\t<material>\n"
                                   "\t\t\t<name></name>\n"
                                   "\t\t\t<diffuse>\n"
                                   "\t\t\t</diffuse>\n"
                                   "\t\t</material>\n"
                                   "\t</background_material>\n"
                                   "</background_settings>\n");
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
    expectGolden(elementOf(*node->clone()), "<background_settings>\n"
                                            "\t<uid>5</uid>\n"
                                            "\t<name>Dusk</name>\n"
                                            "</background_settings>\n");
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
        node->background_material->bump = new SurfaceParamStandIn("b", &visits);
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
