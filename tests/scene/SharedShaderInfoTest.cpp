#include "scene/SharedShaderInfo.h"

#include "velmarexceptions.h"

#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::ShaderParameterStandIn;
using TestSupport::textOf;
using TestSupport::vectorOf;

namespace {

Texture textureAt(const char* path) {
    Texture texture;
    texture.path = path;
    return texture;
}

std::string shaderElement(const SharedShaderInfo& info) {
    return textOf([&](OStream& stream) { info.writeXML(stream, 1, {}); });
}

TEST(SharedShaderInfo, ContentStandsTwoLevelsDeeper) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->parameters.push_back(new ShaderParameterStandIn);
    info->includes.push_back("a & b.txt");
    info->textures.push_back(textureAt("t.png"));
    info->shader = "x < y";
    expectGolden(shaderElement(*info), "\t<shared_shader_info>\n"
                                       "\t\t\t<parameter/>\n"
                                       "\t\t\t<include>a &amp; b.txt</include>\n"
                                       "\t\t\t<texture>\n"
                                       "\t\t\t\t<path>t.png</path>\n"
                                       "\t\t\t</texture>\n"
                                       "\t\t\t<shader><![CDATA[x < y]]></shader>\n"
                                       "\t</shared_shader_info>\n");
}

TEST(SharedShaderInfo, EmptyProgramIsWrittenAllTheSame) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->includes.push_back("one");
    expectGolden(shaderElement(*info), "\t<shared_shader_info>\n"
                                       "\t\t\t<include>one</include>\n"
                                       "\t\t\t<shader><![CDATA[]]></shader>\n"
                                       "\t</shared_shader_info>\n");
}

TEST(SharedShaderInfo, EndOfASectionInsideTheProgramIsNotSplit) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->shader = "a[b[0]]>c";
    EXPECT_EQ(shaderElement(*info), "\t<shared_shader_info>\n"
                                    "\t\t\t<shader><![CDATA[a[b[0]]>c]]></shader>\n"
                                    "\t</shared_shader_info>\n");
}

TEST(SharedShaderInfo, ParametersIncludesOrAProgramMakeItCount) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    EXPECT_FALSE(info->isWritten());
    info->shader = "x";
    EXPECT_TRUE(info->isWritten());
    info->shader = "";
    info->includes.push_back("x");
    EXPECT_TRUE(info->isWritten());
    info->includes.clear();
    info->parameters.push_back(new ShaderParameterStandIn);
    EXPECT_TRUE(info->isWritten());
}

TEST(SharedShaderInfo, TexturesAloneDontCount) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->textures.push_back(textureAt("t.png"));
    EXPECT_FALSE(info->isWritten());
}

TEST(SharedShaderInfo, ReportsIncludesThenTextures) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->textures = vectorOf({textureAt("t1"), textureAt("t2")});
    info->includes = vectorOf<String>({"i1", "i2"});
    TraversalState state(TraversalKind::GetDependencies, "", "");
    info->traverse(state);
    ASSERT_EQ(state.dependencies.size(), 4u);
    EXPECT_EQ(state.dependencies[0], "i1");
    EXPECT_EQ(state.dependencies[1], "i2");
    EXPECT_EQ(state.dependencies[2], "t1");
    EXPECT_EQ(state.dependencies[3], "t2");
}

TEST(SharedShaderInfo, ReplacesIncludesAndTextures) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->includes.push_back("i");
    info->textures.push_back(textureAt("t"));
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    state.path_map.insert("i", "new i");
    state.path_map.insert("t", "new t");
    info->traverse(state);
    EXPECT_EQ(info->includes[0], "new i");
    EXPECT_EQ(info->textures[0].path, "new t");
}

TEST(SharedShaderInfo, MissingNewPathLeavesWhatComesAfter) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->includes = vectorOf<String>({"known", "unknown"});
    info->textures.push_back(textureAt("known"));
    TraversalState state(TraversalKind::UpdateDependencies, "", "");
    state.path_map.insert("known", "new");
    try {
        info->traverse(state);
        FAIL();
    } catch (const VelmarException& exception) {
        EXPECT_EQ(exception.getMessage(), "While updating dependencies: Missing mapping for old path 'unknown'.");
    }
    EXPECT_EQ(info->includes[0], "new");
    EXPECT_EQ(info->textures[0].path, "known");
}

TEST(SharedShaderInfo, OtherPassesDoNothing) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->includes.push_back("i");
    for (const auto kind : {TraversalKind::BindReferences, TraversalKind::LoadMeshes, TraversalKind::GetBounds,
                            TraversalKind::OffsetUIDs}) {
        TraversalState state(kind, "", "");
        info->traverse(state);
        EXPECT_TRUE(state.dependencies.empty());
        EXPECT_EQ(info->includes[0], "i");
    }
}

} // namespace
