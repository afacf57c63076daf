#include "scene/SunSkyMaterial.h"

#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using namespace TestSupport;

namespace {

TEST(SunSkyMaterial, WritesEveryFieldEvenAtItsDefault) {
    expectGolden(elementOf(*Reference<Material>(new SunSkyMaterial)),
                 "\t<sunsky>\n"
                 "\t\t<sundir>0 0 1</sundir>\n"
                 "\t\t<turbidity>2</turbidity>\n"
                 "\t\t<extra_atmospheric>false</extra_atmospheric>\n"
                 "\t\t<enable_sky>true</enable_sky>\n"
                 "\t\t<sun_layer>0</sun_layer>\n"
                 "\t\t<sky_layer>0</sky_layer>\n"
                 "\t\t<model>original</model>\n"
                 "\t</sunsky>\n");
}

TEST(SunSkyMaterial, DirectionOfTheSunIsWrittenAsItStands) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->sundir = {3, -4, 0.5};
    EXPECT_NE(elementOf(*material).find("<sundir>3 -4 0.5</sundir>"), std::string::npos);
}

TEST(SunSkyMaterial, CommonParametersAndLayerAreNotWritten) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->layer = 5;
    material->bump = new SurfaceParamStandIn("b");
    EXPECT_EQ(elementOf(*material), elementOf(*Reference<Material>(new SunSkyMaterial)));
}

TEST(SunSkyMaterial, MaxLayerIndexIsTheLargerOfSunAndSky) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->layer = 9;
    material->sun_layer = 3;
    material->sky_layer = 1;
    EXPECT_EQ(material->getMaxLayerIndex(), 3u);
    material->sky_layer = 4;
    EXPECT_EQ(material->getMaxLayerIndex(), 4u);
}

TEST(SunSkyMaterial, HasKind10AndNoDisplacement) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->displacement = new SurfaceParamStandIn("d");
    EXPECT_EQ(material->getMaterialKind(), 10u);
    EXPECT_FALSE(material->hasDisplacement());
}

TEST(SunSkyMaterial, AddsNothingToAHash) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->bump = new SurfaceParamStandIn("b");
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    material->updateHash(state);
    EXPECT_EQ(XXH64_digest(state), XXH64(nullptr, 0, 1));
    XXH64_freeState(state);
}

TEST(SunSkyMaterial, PassesVisitItsCommonParametersAllTheSame) {
    std::string visits;
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->bump = new SurfaceParamStandIn("b", &visits);
    TraversalState state(TraversalKind::GetBounds, "", "");
    material->traverseMaterial(state, nullptr);
    EXPECT_EQ(visits, "b ");
}

} // namespace
