#include "scene/Material.h"

#include "scene/DiffuseMaterial.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

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
    expectGolden(elementOf(*material), "\t<diffuse>\n"
                                       "\t</diffuse>\n"
                                       "\t<backface_emit>true</backface_emit>\n"
                                       "\t<shadow_catcher>true</shadow_catcher>\n"
                                       "\t<delta_emission>true</delta_emission>\n"
                                       "\t<emission_sampling_factor>2</emission_sampling_factor>\n"
                                       "\t<mask_name>Glass &amp; steel</mask_name>\n");
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
    material->albedo = new WavelengthParamStandIn("a");
    material->shared_shader_info = new SharedShaderInfo;
    material->shared_shader_info->includes.push_back("noise.txt");
    expectGolden(elementOf(*material), "\t<diffuse>\n"
                                       "\t<shared_shader_info>\n"
                                       "\t\t\t<include>noise.txt</include>\n"
                                       "\t\t\t<shader><![CDATA[]]></shader>\n"
                                       "\t</shared_shader_info>\n"
                                       "\t\t<albedo>\n"
                                       "\t\t\t<a/>\n"
                                       "\t\t</albedo>\n"
                                       "\t</diffuse>\n");
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
    const Reference<MaterialStandIn> material(new MaterialStandIn);
    const Reference<ScatterStandIn> owner(new ScatterStandIn);
    TraversalState state(TraversalKind::GetBounds, "", "");
    material->traverseMaterial(state, owner.getPointer());
    EXPECT_EQ(material->last_owner, owner.getPointer());
}

TEST(Material, NamesNoLayerUnlessItsClassDoes) {
    const Reference<MaterialStandIn> material(new MaterialStandIn);
    material->layer = 3;
    EXPECT_EQ(material->getMaxLayerIndex(), 0u);
}

} // namespace
