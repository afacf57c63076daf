#include "scene/Material.h"

#include "scene/MaterialParams.h"
#include "scene/Spectra.h"
#include "tests/support/Documents.h"
#include "tests/support/FakeParams.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace MaterialTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

TEST(Material, TypeElementStandsOneLevelBelowTheEnclosingElement) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    expectGolden(textOf([&](OStream& stream) { material->writeXML(stream, 2, {}); }),
                 "\t\t\t<diffuse>\n\t\t\t</diffuse>\n");
}

TEST(Material, CommonSettingsFollowTheTypeElement) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->backface_emit = true;
    material->shadow_catcher = true;
    material->delta_emission = true;
    material->emission_sampling_factor = 2;
    material->mask_name = "Glass & steel";
    expectGolden(elementOf(*material), indented(golden("diffuse/with_common_settings")));
}

TEST(Material, EmissionSamplingFactorOf1IsNotWritten) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->emission_sampling_factor = 1.0;
    EXPECT_EQ(elementOf(*material), "\t<diffuse>\n\t</diffuse>\n");
    material->emission_sampling_factor = 1.0000001;
    EXPECT_EQ(elementOf(*material),
              "\t<diffuse>\n\t</diffuse>\n\t<emission_sampling_factor>1.0000001</emission_sampling_factor>\n");
}

TEST(Material, ShaderInfoComesFirstWithItsContentTwoLevelsDeeper) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = new FakeWavelengthParam("a");
    material->shared_shader_info = new SharedShaderInfo;
    material->shared_shader_info->includes.push_back("noise.txt");
    expectGolden(elementOf(*material), indented(golden("diffuse/with_shader_info")));
}

TEST(Material, ShaderInfoWithTexturesAloneIsLeftOut) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->shared_shader_info = new SharedShaderInfo;
    material->shared_shader_info->textures.push_back(Texture());
    EXPECT_EQ(elementOf(*material), "\t<diffuse>\n\t</diffuse>\n");
}

TEST(Material, PassReachesTheShaderInfoBeforeTheParameters) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->shared_shader_info = new SharedShaderInfo;
    material->shared_shader_info->includes.push_back("noise.txt");
    TraversalState state(TraversalKind::GetDependencies, "", "");
    material->traverseMaterial(state, nullptr);
    ASSERT_EQ(state.dependencies.size(), 1u);
    EXPECT_EQ(state.dependencies[0], "noise.txt");
}

TEST(Material, WithoutPathsPassesAnUpdateWithAnEmptyTable) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->shared_shader_info = new SharedShaderInfo;
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    EXPECT_NO_THROW(material->traverseMaterial(state, nullptr));
}

TEST(Material, FieldsOfADerivedClassHearOfTheOwner) {
    const Reference<FakeMaterial> material(new FakeMaterial);
    const Reference<FakeScatter> owner(new FakeScatter);
    TraversalState state(TraversalKind::GetBounds, "", "");
    material->traverseMaterial(state, owner.getPointer());
    EXPECT_EQ(material->last_owner, owner.getPointer());
}

TEST(Material, NamesNoLayerUnlessItsClassDoes) {
    const Reference<FakeMaterial> material(new FakeMaterial);
    material->layer = 3;
    EXPECT_EQ(material->getMaxLayerIndex(), 0u);
}

} // namespace

} // namespace MaterialTests

namespace DiffuseMaterialTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<WavelengthDependentParam> number(double value) {
    return new ConstantWavelengthDependentParam(new UniformSpectrum(value));
}

Reference<WavelengthDependentParam> colour(double r, double g, double b) {
    return new ConstantWavelengthDependentParam(new RGBSpectrum({r, g, b}, 2.2));
}

std::uint64_t hashOf(const Material& material) {
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    material.updateHash(state);
    const std::uint64_t hash = XXH64_digest(state);
    XXH64_freeState(state);
    return hash;
}

/// A material with every parameter of a family that names itself.
Reference<DiffuseMaterial> fullMaterial(std::string* visits = nullptr) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = new FakeWavelengthParam("a", visits);
    material->bump = new FakeSurfaceParam("b", visits);
    material->displacement = new FakeSurfaceParam("d", visits);
    material->base_emission = new FakeWavelengthParam("be", visits);
    material->emission = new FakeWavelengthParam("e", visits);
    material->normal_map = new FakeSurfaceParam("n", visits);
    return material;
}

TEST(DiffuseMaterial, DefaultIsAnEmptyElement) {
    expectGolden(elementOf(*Reference<Material>(new DiffuseMaterial)), "\t<diffuse>\n\t</diffuse>\n");
}

TEST(DiffuseMaterial, WritesAColour) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = colour(0.8, 0.5, 0.1);
    expectGolden(elementOf(*material), indented(replaced(innerElement(golden("material/coloured"), "diffuse"),
                                                         {{"0.9 0.1 0", "0.8 0.5 0.1"}})));
}

TEST(DiffuseMaterial, WritesItsFieldsInFixedOrder) {
    const auto material = fullMaterial();
    material->random_triangle_colours = true;
    material->layer = 2;
    expectGolden(elementOf(*material), indented(golden("diffuse/full")));
}

TEST(DiffuseMaterial, LayerBeyondTheSignedRangeIsWrittenNegative) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->layer = 0xFFFFFFFF;
    expectGolden(elementOf(*material), "\t<diffuse>\n\t\t<layer>-1</layer>\n\t</diffuse>\n");
}

TEST(DiffuseMaterial, TexturesPrecedeTheirParametersInTheModeWithTextures) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    const Reference<FakeTexturedParam> albedo(new FakeTexturedParam);
    albedo->texture.path = "albedo.png";
    material->albedo = albedo.getPointer();
    const Reference<FakeTexturedSurfaceParam> normal_map(new FakeTexturedSurfaceParam(1));
    normal_map->texture.path = "normals.png";
    material->normal_map = normal_map.getPointer();
    XMLWriteOptions options;
    options.write_mode = 3;
    expectGolden(elementOf(*material, options), indented(golden("diffuse/textured")));
}

TEST(DiffuseMaterial, OtherModesAndTypesHaveNoTextures) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = new FakeTexturedParam;
    EXPECT_EQ(elementOf(*material).find("<texture>"), std::string::npos);

    material->albedo = nullptr;
    material->bump = new FakeTexturedSurfaceParam(1);
    XMLWriteOptions options;
    options.write_mode = 3;
    EXPECT_EQ(elementOf(*material, options).find("<texture>"), std::string::npos);
}

TEST(DiffuseMaterial, MaxLayerIndexIsItsLayer) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    EXPECT_EQ(material->getMaxLayerIndex(), 0u);
    material->layer = 4;
    EXPECT_EQ(material->getMaxLayerIndex(), 4u);
}

TEST(DiffuseMaterial, HasKind1) {
    EXPECT_EQ(Reference<Material>(new DiffuseMaterial)->getMaterialKind(), 1u);
}

TEST(DiffuseMaterial, HasDisplacementWhenItIsSet) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    EXPECT_FALSE(material->hasDisplacement());
    material->displacement = new FakeSurfaceParam("d");
    EXPECT_TRUE(material->hasDisplacement());
}

TEST(DiffuseMaterial, HashesItsParametersInOrder) {
    constexpr std::string_view expected = "abdbeen";
    EXPECT_EQ(hashOf(*fullMaterial()), XXH64(expected.data(), expected.size(), 1));
}

TEST(DiffuseMaterial, ConstantsDontTellMaterialsApartByHash) {
    const Reference<DiffuseMaterial> white(new DiffuseMaterial);
    white->albedo = number(1);
    EXPECT_EQ(hashOf(*white), hashOf(*Reference<Material>(new DiffuseMaterial)));
}

TEST(DiffuseMaterial, PassesVisitCommonParametersAndThenTheAlbedo) {
    std::string visits;
    const auto material = fullMaterial(&visits);
    TraversalState state(TraversalKind::GetDependencies, "", "");
    material->traverseMaterial(state, nullptr);
    EXPECT_EQ(visits, "b d be e n a ");
}

TEST(DiffuseMaterial, RefersToNoNode) {
    const Reference<Material> material(new DiffuseMaterial);
    EXPECT_FALSE(material->refersToNode(nullptr));
    EXPECT_TRUE(material->getDependencyUIDs().empty());
}

} // namespace

} // namespace DiffuseMaterialTests

namespace SunSkyMaterialTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

TEST(SunSkyMaterial, WritesEveryFieldEvenAtItsDefault) {
    expectGolden(elementOf(*Reference<Material>(new SunSkyMaterial)),
                 indented(replaced(innerElement(golden("background/sun_sky"), "sunsky"),
                                   {{"1 1 1", "0 0 1"}, {"captured-simulation", "original"}})));
}

TEST(SunSkyMaterial, DirectionOfTheSunIsWrittenAsItStands) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->sundir = {3, -4, 0.5};
    EXPECT_NE(elementOf(*material).find("<sundir>3 -4 0.5</sundir>"), std::string::npos);
}

TEST(SunSkyMaterial, CommonParametersAndLayerAreNotWritten) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->layer = 5;
    material->bump = new FakeSurfaceParam("b");
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
    material->displacement = new FakeSurfaceParam("d");
    EXPECT_EQ(material->getMaterialKind(), 10u);
    EXPECT_FALSE(material->hasDisplacement());
}

TEST(SunSkyMaterial, AddsNothingToAHash) {
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->bump = new FakeSurfaceParam("b");
    XXH64_state_t* const state = XXH64_createState();
    XXH64_reset(state, 1);
    material->updateHash(state);
    EXPECT_EQ(XXH64_digest(state), XXH64(nullptr, 0, 1));
    XXH64_freeState(state);
}

TEST(SunSkyMaterial, PassesVisitItsCommonParametersAllTheSame) {
    std::string visits;
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->bump = new FakeSurfaceParam("b", &visits);
    TraversalState state(TraversalKind::GetBounds, "", "");
    material->traverseMaterial(state, nullptr);
    EXPECT_EQ(visits, "b ");
}

} // namespace

} // namespace SunSkyMaterialTests
