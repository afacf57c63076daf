#include "scene/DiffuseMaterial.h"

#include "scene/ConstantWavelengthDependentParam.h"
#include "scene/RGBSpectrum.h"
#include "scene/UniformSpectrum.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

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
    material->albedo = new WavelengthParamStandIn("a", visits);
    material->bump = new SurfaceParamStandIn("b", visits);
    material->displacement = new SurfaceParamStandIn("d", visits);
    material->base_emission = new WavelengthParamStandIn("be", visits);
    material->emission = new WavelengthParamStandIn("e", visits);
    material->normal_map = new SurfaceParamStandIn("n", visits);
    return material;
}

TEST(DiffuseMaterial, DefaultIsAnEmptyElement) {
    expectGolden(elementOf(*Reference<Material>(new DiffuseMaterial)), "\t<diffuse>\n\t</diffuse>\n");
}

TEST(DiffuseMaterial, WritesAColour) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = colour(0.8, 0.5, 0.1);
    expectGolden(elementOf(*material), "\t<diffuse>\n"
                                       "\t\t<albedo>\n"
                                       "\t\t\t<constant>\n"
                                       "\t\t\t\t<rgb>\n"
                                       "\t\t\t\t\t<rgb>0.8 0.5 0.1</rgb>\n"
                                       "\t\t\t\t\t<gamma>2.2</gamma>\n"
                                       "\t\t\t\t</rgb>\n"
                                       "\t\t\t</constant>\n"
                                       "\t\t</albedo>\n"
                                       "\t</diffuse>\n");
}

TEST(DiffuseMaterial, WritesItsFieldsInFixedOrder) {
    const auto material = fullMaterial();
    material->random_triangle_colours = true;
    material->layer = 2;
    expectGolden(elementOf(*material), "\t<diffuse>\n"
                                       "\t\t<albedo>\n\t\t\t<a/>\n\t\t</albedo>\n"
                                       "\t\t<bump>\n\t\t\t<b/>\n\t\t</bump>\n"
                                       "\t\t<displacement>\n\t\t\t<d/>\n\t\t</displacement>\n"
                                       "\t\t<base_emission>\n\t\t\t<be/>\n\t\t</base_emission>\n"
                                       "\t\t<emission>\n\t\t\t<e/>\n\t\t</emission>\n"
                                       "\t\t<normal_map>\n\t\t\t<n/>\n\t\t</normal_map>\n"
                                       "\t\t<random_triangle_colours>true</random_triangle_colours>\n"
                                       "\t\t<layer>2</layer>\n"
                                       "\t</diffuse>\n");
}

TEST(DiffuseMaterial, LayerBeyondTheSignedRangeIsWrittenNegative) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->layer = 0xFFFFFFFF;
    expectGolden(elementOf(*material), "\t<diffuse>\n\t\t<layer>-1</layer>\n\t</diffuse>\n");
}

TEST(DiffuseMaterial, TexturesPrecedeTheirParametersInTheModeWithTextures) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    const Reference<TexturedParamStandIn> albedo(new TexturedParamStandIn);
    albedo->texture.path = "albedo.png";
    material->albedo = albedo.getPointer();
    const Reference<TexturedSurfaceParamStandIn> normal_map(new TexturedSurfaceParamStandIn(1));
    normal_map->texture.path = "normals.png";
    material->normal_map = normal_map.getPointer();
    XMLWriteOptions options;
    options.write_mode = 3;
    expectGolden(elementOf(*material, options), "\t<diffuse>\n"
                                                "\t\t<texture>\n"
                                                "\t\t\t<path>albedo.png</path>\n"
                                                "\t\t</texture>\n"
                                                "\t\t<albedo>\n"
                                                "\t\t\t<textured/>\n"
                                                "\t\t</albedo>\n"
                                                "\t\t<texture>\n"
                                                "\t\t\t<path>normals.png</path>\n"
                                                "\t\t</texture>\n"
                                                "\t\t<normal_map>\n"
                                                "\t\t\t<textured/>\n"
                                                "\t\t</normal_map>\n"
                                                "\t</diffuse>\n");
}

TEST(DiffuseMaterial, OtherModesAndTypesHaveNoTextures) {
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = new TexturedParamStandIn;
    EXPECT_EQ(elementOf(*material).find("<texture>"), std::string::npos);

    material->albedo = nullptr;
    material->bump = new TexturedSurfaceParamStandIn(1);
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
    material->displacement = new SurfaceParamStandIn("d");
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
