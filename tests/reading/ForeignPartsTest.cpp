#include "scene/reading/ForeignParts.h"

#include "velmarexceptions.h"

#include "scene/SceneNodeMaterial.h"
#include "scene/SharedShaderInfo.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/SceneXMLReader.h"
#include "tests/support/MemoryOStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

using namespace Velmar;
using namespace TestSupport;

/// Passes over what a document has of classes of a renderer library, which is kept as text.
namespace {

Reference<SceneNodeRoot> parse(std::string_view nodes) {
    SceneReadRequest request;
    request.path = "scene.xml";
    return parseSceneXML("<scene>" + std::string(nodes) + "</scene>", request);
}

std::string written(const SceneNode& node) {
    XMLWriteOptions options;
    options.resolve_relative_paths = false;
    std::string text = textOf([&](OStream& stream) { node.writeXML(stream, 0, options); });
    std::erase_if(text, [](char character) { return character == '\n' || character == '\t'; });
    return text;
}

std::string written(const Reference<SceneNodeRoot>& root) {
    std::string text;
    for (const Reference<SceneNode>& child : root->children())
        text += written(*child);
    return text;
}

void runPass(SceneNodeRoot& root, TraversalState& state) {
    for (const Reference<SceneNode>& child : root.children()) {
        child->traverse(state);
        traverseForeignParts(*child, state);
    }
}

std::vector<std::string> dependenciesOf(const Reference<SceneNodeRoot>& root) {
    TraversalState state(TraversalKind::GetDependencies, {}, {});
    runPass(*root, state);
    std::vector<std::string> paths;
    for (const String& path : state.dependencies)
        paths.push_back(toStdString(path));
    return paths;
}

void replacePaths(const Reference<SceneNodeRoot>& root, const std::map<std::string, std::string>& new_paths) {
    TraversalState state(TraversalKind::UpdateDependencies, {}, {});
    for (const auto& [path, new_path] : new_paths)
        state.path_map.insert(String(path), String(new_path));
    runPass(*root, state);
}

void offsetUIDs(const Reference<SceneNodeRoot>& root, std::uint32_t offset) {
    TraversalState state(TraversalKind::OffsetUIDs, {}, {});
    state.uid_offset = offset;
    runPass(*root, state);
}

using Paths = std::vector<std::string>;

const std::string head = "<uid>1</uid><name/>";

std::string scatter(std::string_view content) {
    return "<scatter>" + head + std::string(content) + "</scatter>";
}

std::string material(std::string_view content) {
    return "<material><uid>1</uid><name/>" + std::string(content) + "</material>";
}

} // namespace

TEST(ForeignNodes, ReportThePathsAmongTheirElements) {
    const auto root = parse(scatter("<path>a.png</path><deep><er><path> b &amp; c.png </path></er></deep>"
                                    "<path><![CDATA[ d<.png ]]></path><path/><path></path><paths>e</paths>"
                                    "<!-- <path>f</path> --><path kind='1'>g</path><path><x/></path>"));
    EXPECT_EQ(dependenciesOf(root), (Paths{"a.png", "b & c.png", " d<.png ", "g"}));
}

TEST(ForeignNodes, KeepAllElseWhenPathsAreReplaced) {
    const auto root = parse(scatter("<x y='&lt;'>1</x><path>a</path><!--a--><path><![CDATA[b]]></path><z/>"));
    replacePaths(root, {{"a", "1 & 2"}, {"b", "<3>"}});
    EXPECT_EQ(written(root), "<scatter><uid>1</uid><name></name><x y='&lt;'>1</x><path>1 &amp; 2</path><!--a-->"
                             "<path>&lt;3&gt;</path><z/></scatter>");
    EXPECT_EQ(dependenciesOf(root), (Paths{"1 & 2", "<3>"}));
}

TEST(ForeignNodes, AreTheSameTextWhenPathsStayTheSame) {
    const std::string content = "<path> a </path><path><![CDATA[b]]></path>";
    const auto root = parse(scatter(content));
    const std::string before = written(root);
    replacePaths(root, {{"a", "a"}, {"b", "b"}});
    EXPECT_EQ(written(root), before);
    EXPECT_NE(before.find(content), std::string::npos);
}

TEST(ForeignNodes, NeedANewPathForEach) {
    EXPECT_THROW(replacePaths(parse(scatter("<path>a</path><path>b</path>")), {{"a", "c"}}), VelmarException);
}

TEST(ForeignNodes, MoveTheirUIDsAndThoseThatTheyName) {
    const auto root =
        parse(scatter("<uid>5</uid><material_uid> 6 </material_uid><in><geometry_uid>7</geometry_uid></in>"
                      "<uid>4294967295</uid><uid>word</uid><uids>8</uids><my_uid_list>9</my_uid_list>"
                      "<count>10</count><uid/>"));
    offsetUIDs(root, 100);
    EXPECT_EQ(root->children()[0]->getUID(), 101u);
    EXPECT_EQ(written(root), "<scatter><uid>101</uid><name></name><uid>105</uid><material_uid>106</material_uid>"
                             "<in><geometry_uid>107</geometry_uid></in><uid>4294967295</uid><uid>word</uid>"
                             "<uids>8</uids><my_uid_list>9</my_uid_list><count>10</count><uid/></scatter>");
}

TEST(ForeignNodes, ACloneWritesTheSameElement) {
    const std::string text = "<scatter><uid>7</uid><name>grass</name><density>3</density></scatter>";
    const auto root = parse(text);
    const Reference<SceneNode> copy = root->children()[0]->clone();
    EXPECT_EQ(written(*copy), text);
    EXPECT_EQ(copy->getType(), NodeType::Scatter);
}

TEST(ForeignNodes, AreNamedByMaterialsAfterAMove) {
    const auto root = parse(material("<diffuse/><scatter_uids><uid>2</uid></scatter_uids>") +
                            "<scatter><uid>2</uid><name/><material_uid>1</material_uid></scatter>");
    offsetUIDs(root, 10);
    const std::string text = written(root);
    EXPECT_NE(text.find("<scatter_uids><uid>12</uid></scatter_uids>"), std::string::npos) << text;
    EXPECT_NE(text.find("<scatter><uid>12</uid><name></name><material_uid>11</material_uid></scatter>"),
              std::string::npos)
        << text;
}

TEST(ForeignMaterials, TakePartInEachPass) {
    const auto root = parse(material("<glass><path>a.png</path><inner_uid>3</inner_uid></glass>"));
    EXPECT_EQ(dependenciesOf(root), Paths{"a.png"});
    replacePaths(root, {{"a.png", "b.png"}});
    offsetUIDs(root, 4);
    EXPECT_NE(written(root).find("<glass><path>b.png</path><inner_uid>7</inner_uid></glass>"), std::string::npos)
        << written(root);
}

TEST(ForeignMaterials, OfABackgroundTakePartToo) {
    const auto root = parse("<background_settings>" + head +
                            "<background_material><material><name/><env_map><path>sky.exr</path></env_map></material>"
                            "</background_material></background_settings>");
    EXPECT_EQ(dependenciesOf(root), Paths{"sky.exr"});
    replacePaths(root, {{"sky.exr", "sea.exr"}});
    EXPECT_NE(written(root).find("<env_map><path>sea.exr</path></env_map>"), std::string::npos) << written(root);
}

TEST(ForeignParameters, OfMaterialsTakePartInEachPass) {
    const auto root = parse(material("<diffuse><albedo><texture><path>a</path></texture></albedo>"
                                     "<bump><map><path>b</path><map_uid>2</map_uid></map></bump>"
                                     "<emission><shader><path>c</path></shader></emission></diffuse>"));
    EXPECT_THAT(dependenciesOf(root), testing::UnorderedElementsAre("a", "b", "c"));
    replacePaths(root, {{"a", "x"}, {"b", "y"}, {"c", "z"}});
    offsetUIDs(root, 5);
    const std::string text = written(root);
    EXPECT_NE(text.find("<albedo><texture><path>x</path></texture></albedo>"), std::string::npos) << text;
    EXPECT_NE(text.find("<bump><map><path>y</path><map_uid>7</map_uid></map></bump>"), std::string::npos) << text;
    EXPECT_NE(text.find("<emission><shader><path>z</path></shader></emission>"), std::string::npos) << text;
}

TEST(ForeignParameters, OfShaderProgramsTakePartInEachPass) {
    const auto root = parse(material("<diffuse><shared_shader_info><map><path>a</path><map_uid>2</map_uid></map>"
                                     "<texture><path>b</path></texture></shared_shader_info></diffuse>"));
    EXPECT_EQ(dependenciesOf(root), (Paths{"b", "a"}));
    replacePaths(root, {{"a", "x"}, {"b", "y"}});
    offsetUIDs(root, 5);
    const std::string text = written(root);
    EXPECT_NE(text.find("<map><path>x</path><map_uid>7</map_uid></map>"), std::string::npos) << text;
    EXPECT_NE(text.find("<texture><path>y</path>"), std::string::npos) << text;
}

TEST(ForeignParameters, OfShaderProgramsAreKeptHoweverManyThereAre) {
    std::string parameters;
    for (int i = 0; i < 300; ++i)
        parameters += "<p>" + std::to_string(i) + "</p>";
    const std::string text =
        material("<diffuse><shared_shader_info>" + parameters + "<include>a</include></shared_shader_info></diffuse>");
    const auto root = parse(text);
    EXPECT_NE(written(root).find("<shared_shader_info>" + parameters + "<include>a</include>"), std::string::npos);
    EXPECT_EQ(written(parse(written(root))), written(root));
}

TEST(ForeignApertures, TakePartInEachPass) {
    const auto root =
        parse("<camera>" + head + "<aperture_shape><image><path>bokeh.png</path></image></aperture_shape></camera>");
    EXPECT_EQ(dependenciesOf(root), Paths{"bokeh.png"});
    replacePaths(root, {{"bokeh.png", "star.png"}});
    EXPECT_NE(written(root).find("<aperture_shape><image><path>star.png</path></image></aperture_shape>"),
              std::string::npos)
        << written(root);
}

TEST(Passes, MoveTheReferencesOfModelsAndSpheresWithTheirNodes) {
    const auto root =
        parse("<model2><uid>3</uid><name/><geometry_uid>2</geometry_uid><materials><uid>1</uid></materials>"
              "<emission_scale><measure>luminance</measure><value>1</value><material_uid>1</material_uid>"
              "</emission_scale></model2>"
              "<sphere><uid>4</uid><name/><material_uid>1</material_uid></sphere>" +
              material("<glass/>") + "<displaced_quad><uid>2</uid><name/></displaced_quad>");
    offsetUIDs(root, 10);
    const std::string text = written(root);
    for (const char* const expected :
         {"<model2><uid>13</uid>", "<geometry_uid>12</geometry_uid>", "<materials><uid>11</uid></materials>",
          "<value>1</value><material_uid>11</material_uid>", "<sphere><uid>14</uid>", "<displaced_quad><uid>12</uid>"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
}
