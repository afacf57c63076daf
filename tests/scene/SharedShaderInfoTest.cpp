#include "scene/SharedShaderInfo.h"

#include "velmarexceptions.h"

#include "tests/support/FakeParams.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

namespace SharedShaderInfoTests {

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::FakeShaderParameter;
using TestSupport::FakeTexCoord;
using TestSupport::golden;
using TestSupport::indented;
using TestSupport::textOf;
using TestSupport::vectorOf;

namespace {

std::string textureElement(const Texture& texture, const XMLWriteOptions& options = {}) {
    return textOf([&](OStream& stream) { writeTexture(texture, stream, 0, options); });
}

TEST(Texture, DefaultWritesItsEmptyPathAlone) {
    expectGolden(textureElement(Texture()), "<texture>\n"
                                            "\t<path></path>\n"
                                            "</texture>\n");
}

TEST(Texture, WritesWhatDiffersFromTheDefaultsInFixedOrder) {
    Texture texture;
    texture.path = "wood.png";
    texture.a = 0.5;
    texture.b = 2;
    texture.c = -1;
    texture.uv_set_index = -3;
    texture.exponent = 2.2;
    texture.has_exponent = true;
    texture.tex_coord_generation = new FakeTexCoord({2, 0, 0, 1, 0, 0});
    texture.smooth = true;
    expectGolden(textureElement(texture), "<texture>\n"
                                          "\t<path>wood.png</path>\n"
                                          "\t<a>0.5</a>\n"
                                          "\t<b>2</b>\n"
                                          "\t<c>-1</c>\n"
                                          "\t<uv_set_index>-3</uv_set_index>\n"
                                          "\t<exponent>2.2</exponent>\n"
                                          "\t<tex_coord_generation>\n"
                                          "\t\t<first>2</first>\n"
                                          "\t</tex_coord_generation>\n"
                                          "\t<smooth>true</smooth>\n"
                                          "</texture>\n");
}

TEST(Texture, RelativePathIsJoinedToTheScenesDirectory) {
    XMLWriteOptions options;
    options.scene_dir = "D:\\work";
    Texture texture;
    texture.path = "wood.png";
    expectGolden(textureElement(texture, options), "<texture>\n\t<path>D:\\work\\wood.png</path>\n</texture>\n");
}

TEST(Texture, ExponentWithoutItsFlagIsLeftOut) {
    Texture texture;
    texture.exponent = 2.2;
    EXPECT_EQ(textureElement(texture), textureElement(Texture()));
}

TEST(Texture, ExponentOfZeroIsWrittenWithItsFlag) {
    Texture texture;
    texture.exponent = 0;
    texture.has_exponent = true;
    expectGolden(textureElement(texture), "<texture>\n\t<path></path>\n\t<exponent>0</exponent>\n</texture>\n");
}

TEST(Texture, NeutralTextureCoordinatesAreLeftOut) {
    Texture texture;
    texture.tex_coord_generation = new FakeTexCoord({1, 0, 0, 1, 0, 0});
    EXPECT_EQ(textureElement(texture), textureElement(Texture()));
}

TEST(Texture, AnyValueMakesTextureCoordinatesCount) {
    for (std::size_t i = 0; i < 6; ++i) {
        std::array<double, 6> values = {1, 0, 0, 1, 0, 0};
        values[i] = 0.5;
        const Reference<FakeTexCoord> generation(new FakeTexCoord(values));
        EXPECT_FALSE(generation->isNeutral()) << i;
    }
}

TEST(Texture, OnlyTheAffineKindCanBeNeutral) {
    const Reference<FakeTexCoord> other_kind(new FakeTexCoord({1, 0, 0, 1, 0, 0}, 1));
    EXPECT_FALSE(other_kind->isNeutral());
}

} // namespace

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
    info->parameters.push_back(new FakeShaderParameter);
    info->includes.push_back("a & b.txt");
    info->textures.push_back(textureAt("t.png"));
    info->shader = "x < y";
    expectGolden(shaderElement(*info), indented(golden("shared_shader_info/full")));
}

TEST(SharedShaderInfo, EmptyProgramIsWrittenAllTheSame) {
    const Reference<SharedShaderInfo> info(new SharedShaderInfo);
    info->includes.push_back("one");
    expectGolden(shaderElement(*info), indented(golden("shared_shader_info/empty")));
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
    info->parameters.push_back(new FakeShaderParameter);
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

} // namespace SharedShaderInfoTests
