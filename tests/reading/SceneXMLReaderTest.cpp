#include "scene/reading/SceneXMLReader.h"

#include "velmarexceptions.h"

#include "scene/SceneXMLWriter.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/Markup.h"
#include "tests/support/FileBytes.h"
#include "tests/support/MemoryOStream.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

using namespace Velmar;
using namespace TestSupport;

namespace {

Reference<SceneNodeRoot> parse(std::string_view text) {
    SceneReadRequest request;
    request.path = "scene.xml";
    return parseSceneXML(text, request);
}

/// The document of a scene, with line feeds and with paths as they are.
std::string documentOf(const SceneNodeRoot& root) {
    XMLWriteOptions options;
    options.resolve_relative_paths = false;
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" +
           textOf([&](OStream& stream) { root.writeXML(stream, 0, options); });
}

std::string errorOf(std::string_view text) {
    try {
        parse(text);
    } catch (const SceneDocumentError& error) {
        return error.getMessage();
    }
    return "no error";
}

std::string scene(std::string_view content) {
    return "<scene>\n" + std::string(content) + "\n</scene>\n";
}

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

std::vector<std::string> goldenDocuments() {
    std::vector<std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA "/golden"))
        if (entry.path().extension() == ".xml") texts.push_back(readFileBytes(entry.path().string()));
    return texts;
}

std::string sphereOf(int material_uid, int uid = 9) {
    return "<sphere><uid>" + std::to_string(uid) + "</uid><name>s</name><radius>1</radius><material_uid>" +
           std::to_string(material_uid) + "</material_uid></sphere>";
}

const std::string tonemapping =
    "<tonemapping><uid>1</uid><name>t</name><linear><scale>1</scale></linear></tonemapping>";

} // namespace

TEST(SceneXMLReader, GoldenDocumentsAreWrittenAgainToTheByte) {
    const std::vector<std::string> documents = goldenDocuments();
    EXPECT_GE(documents.size(), 2u);
    for (const std::string& text : documents)
        EXPECT_EQ(documentOf(*parse(text)), text);
}

TEST(SceneXMLReader, ADocumentWithTheLineEndsOfWindowsIsTheSameScene) {
    for (const std::string& text : goldenDocuments())
        EXPECT_EQ(documentOf(*parse(replaceAll(text, "\n", "\r\n"))), text);
}

TEST(SceneXMLReader, AFileIsReadAndWrittenAgainToTheByte) {
    const TempDir dir;
    for (const std::string& text : goldenDocuments()) {
        writeFileBytes(dir.file("a.xml"), withSystemLineEnds(text));
        SceneWriteRequest request;
        request.path = toVelmarString(dir.file("b.xml"));
        request.resolve_relative_paths = false;
        writeSceneFile(*readSceneXML(toVelmarString(dir.file("a.xml"))), request);
        EXPECT_EQ(readFileBytes(dir.file("b.xml")), withSystemLineEnds(text));
    }
    EXPECT_EQ(dir.names(), (std::vector<std::string>{"a.xml", "b.xml"})) << "no mesh file";
}

TEST(SceneXMLReader, AMissingFileIsAnError) {
    EXPECT_THROW(readSceneXML("no/such.xml"), Exception);
}

TEST(SceneXMLReader, ReferencesAreBound) {
    const auto root = parse(goldenDocuments().front().find("Lamp") != std::string::npos
                                ? readFileBytes(VELMAR_TEST_DATA "/golden/whole_scene.xml")
                                : "");
    auto* const model = static_cast<SceneNodeModel*>(root->getNodeByUID(1));
    SceneNode* const material = root->getNodeByUID(3);
    EXPECT_EQ(model->geometry.getPointer(), root->getNodeByUID(4));
    EXPECT_EQ(model->materials[0].getPointer(), material);
    EXPECT_EQ(model->ies_profiles[0]->material.getPointer(), material);
    EXPECT_EQ(model->emission_scales[0]->material.getPointer(), material);
    EXPECT_EQ(root->getNextUID(), 12u);
}

TEST(SceneXMLReader, ElementsMayBeInAnyOrder) {
    const auto root = parse(scene("<camera><up>1 2 3</up><focus_distance> 7 </focus_distance><name>c</name>"
                                  "<!-- a comment --><uid>5</uid></camera>"));
    const auto& camera = static_cast<const SceneNodeCamera&>(*root->getNodeByUID(5));
    EXPECT_EQ(camera.focus_distance, 7.0);
    EXPECT_EQ(camera.up, (Vec3d{1, 2, 3}));
    EXPECT_EQ(camera.sensor_width, 0.036) << "what isn't there keeps its default";
    EXPECT_FALSE(camera.autofocus) << "the element is the value";
}

TEST(SceneXMLReader, AbsentSettingsOfAMeshAreThoseThatReadersAssume) {
    const auto root = parse(scene("<mesh><uid>1</uid><name>m</name><external><path>a.obj</path></external></mesh>"));
    const auto& mesh = static_cast<const SceneNodeMesh&>(*root->getNodeByUID(1));
    EXPECT_TRUE(mesh.normal_smoothing);
    EXPECT_FALSE(mesh.view_dependent_subdivision);
    EXPECT_EQ(mesh.subdivide_pixel_threshold, 0.0);
    EXPECT_EQ(mesh.path, "a.obj");
    EXPECT_FALSE(mesh.mesh);
}

TEST(SceneXMLReader, TextsAreReadAsTheyWereMeant) {
    const auto nameOf = [](const std::string& text) {
        const auto root = parse(scene("<camera><uid>1</uid><name>" + text + "</name></camera>"));
        return toStdString(root->getNodeByUID(1)->getName());
    };
    EXPECT_EQ(nameOf("a &lt;&gt;&amp;&quot;&#65; b"), "a <>&\"A b");
    EXPECT_EQ(nameOf("\n\t a\tb\n"), "a\tb");
    EXPECT_EQ(nameOf("<![CDATA[ a ]]>"), " a ");
    EXPECT_EQ(nameOf("<![CDATA[a]]> &amp; <![CDATA[ b]]>"), "a &  b");
    EXPECT_EQ(nameOf("<![CDATA[ a]]>&amp;]]>"), " a]]>&amp;") << "as the writer puts a text that ends the section";
    EXPECT_EQ(nameOf("a\rb\r\nc"), "a\rb\r\nc") << "a document with line feeds alone";
}

TEST(SceneXMLReader, UnknownElementsAreReportedAndHarmless) {
    UnknownElements elements;
    SceneReadRequest request;
    request.unknown_elements = &elements;
    const auto root =
        parseSceneXML("<scene>\r\n<camera><uid>1</uid><name>\xC3\xA4</name><colour><uid>7</uid></colour>\r\n"
                      "  <up>0 0 2</up><aperture_shape><circular/><blades/></aperture_shape>\r\n"
                      "</camera></scene>",
                      request);
    const std::vector<UnknownElement>& unknown = elements.listed;
    EXPECT_EQ(elements.count, 2u);
    ASSERT_EQ(unknown.size(), 2u);
    EXPECT_EQ(unknown[0].name, "blades");
    EXPECT_EQ(unknown[0].parent, "aperture_shape");
    EXPECT_EQ(unknown[0].line, 3u);
    EXPECT_EQ(unknown[0].column, 44u);
    EXPECT_EQ(unknown[1].name, "colour");
    EXPECT_EQ(unknown[1].parent, "camera");
    EXPECT_EQ(unknown[1].line, 2u);
    EXPECT_EQ(unknown[1].column, 35u);
    EXPECT_EQ(static_cast<const SceneNodeCamera&>(*root->getNodeByUID(1)).up.z, 2.0);
}

TEST(SceneXMLReader, OfManyUnknownElementsTheFirstAreListed) {
    constexpr std::size_t count = UnknownElements::max_listed + 5;
    std::string elements;
    for (std::size_t i = 0; i < count; ++i)
        elements += "\r\n <\xC3\xA4/>   <odd_one/>";
    UnknownElements unknown;
    SceneReadRequest request;
    request.unknown_elements = &unknown;
    parseSceneXML("<scene>\r\n<camera><uid>1</uid><name>c</name>" + elements + "</camera></scene>", request);
    EXPECT_EQ(unknown.count, 2 * count);
    ASSERT_EQ(unknown.listed.size(), UnknownElements::max_listed);
    for (std::size_t i = 0; i < unknown.listed.size(); ++i) {
        const UnknownElement& element = unknown.listed[i];
        EXPECT_EQ(element.name, i % 2 == 0 ? "\xC3\xA4" : "odd_one");
        EXPECT_EQ(element.line, 3 + i / 2);
        EXPECT_EQ(element.column, i % 2 == 0 ? 2u : 9u);
    }
}

namespace {

class Log final : public ReadingListener {
  public:
    explicit Log(std::string_view document_) : document(document_) {}

    void onNode(const SceneNode& node, std::size_t offset) override {
        text += "\nnode " + std::to_string(node.getUID()) + " at " + std::string(document.substr(offset, 5));
    }
    void onUnknown(std::size_t offset) override { text += "\nunknown at " + std::string(document.substr(offset, 4)); }

    std::string text;

  private:
    std::string_view document;
};

} // namespace

TEST(SceneXMLReader, AListenerFollowsNodesAndUnknownElements) {
    const std::string document = "<scene>\r\n<camera>\r\n<up>1 2 3</up><uid>5</uid><name>c</name><odd/></camera>\r\n"
                                 "<curve1d><name>x</name>\r\n<knots>7 8</knots></curve1d></scene>";
    Log log(document);
    SceneReadRequest request;
    request.listener = &log;
    parseSceneXML(document, request);
    EXPECT_EQ(log.text, "\nunknown at <odd"
                        "\nnode 5 at <came"
                        "\nnode 4294967295 at <curv");
}

TEST(SceneXMLReader, NodesOfOneUIDAllStay) {
    const auto root = parse(scene(tonemapping + tonemapping));
    EXPECT_EQ(root->children().size(), 2u);
    EXPECT_EQ(root->getNodeByUID(1), root->children()[1].getPointer());
}

TEST(SceneXMLReader, OfManyNodesWhoseUIDsCollideTheLastOfOneUIDIsBound) {
    std::string nodes;
    const auto addMaterial = [&](int uid, const std::string& name) {
        nodes += "<material><uid>" + std::to_string(uid) + "</uid><name>" + name + "</name><diffuse/></material>";
    };
    for (int i = 1; i <= 200; ++i)
        addMaterial(i * 65536, "first");
    addMaterial(65536, "second");
    addMaterial(3 * 65536, "third");
    const auto root = parse(scene(nodes + sphereOf(65536) + sphereOf(2 * 65536) + sphereOf(3 * 65536) + sphereOf(7)));
    const auto material_of = [&](std::size_t i) {
        const auto& sphere = static_cast<const SceneNodeSphere&>(*root->children()[202 + i]);
        return sphere.material ? toStdString(sphere.material->getName()) : "none";
    };
    EXPECT_EQ(material_of(0), "second");
    EXPECT_EQ(material_of(1), "first");
    EXPECT_EQ(material_of(2), "third");
    EXPECT_EQ(material_of(3), "none");
}

TEST(SceneXMLReader, OnlyGeometryIsBoundAsTheGeometryOfAModel) {
    const auto root =
        parse(scene("<model2><uid>1</uid><name>m</name><geometry_uid>2</geometry_uid><pos>0 0 0</pos></model2>"
                    "<material><uid>2</uid><name>a</name><diffuse/></material>"));
    const auto& model = static_cast<const SceneNodeModel&>(*root->children()[0]);
    EXPECT_FALSE(model.geometry);
    EXPECT_EQ(model.geometry_uid, 2u);
}

TEST(SceneXMLReader, ANodeWithoutUIDGetsOneAboveAllThatWereGivenBefore) {
    const std::string curve = "<curve1d><name>c</name><knots>0 1</knots><values>0 1</values></curve1d>";
    const auto root = parse(scene(sphereOf(7, 5) + curve + sphereOf(7, 2) + curve));
    EXPECT_EQ(root->children()[1]->getUID(), 6u);
    EXPECT_EQ(root->children()[3]->getUID(), 7u);
}

TEST(SceneXMLReader, ErrorsNameLineAndColumn) {
    EXPECT_EQ(errorOf(""), "scene.xml:1:1: error: not a scene document: no element");
    EXPECT_EQ(errorOf("<html></html>"), "scene.xml:1:1: error: not a scene document: another root element");
    EXPECT_EQ(errorOf("<scene>"), "scene.xml:1:1: error: the element 'scene' has no end");
    EXPECT_EQ(errorOf("<scene>\n text</scene>"), "scene.xml:2:2: error: a text outside of the elements");
    EXPECT_EQ(errorOf("<scene/>\n<scene/>"), "scene.xml:2:1: error: an element after the end of the scene");
    EXPECT_EQ(errorOf("<scene>\n</scenes>"), "scene.xml:2:1: error: this tag closes nothing");
    EXPECT_EQ(errorOf("<scene>\n<camera>\n"), "scene.xml:2:1: error: the element 'camera' has no end");
    EXPECT_EQ(errorOf("<scene>\n<camera>\n</scene>"), "scene.xml:3:3: error: start-end tags mismatch");
    EXPECT_EQ(errorOf("<scene>\n<a></b></scene>"), "scene.xml:2:6: error: start-end tags mismatch");
    EXPECT_EQ(errorOf("<scene><!-- "), "scene.xml:1:8: error: a comment has no end");
    EXPECT_EQ(errorOf(std::string("<scene>\n<a>\0</a></scene>", 24)), "scene.xml:2:4: error: a zero byte");
    const auto error = [](const std::string& content) {
        return errorOf("<scene>\r\n<camera><uid>1</uid>\r\n\t<name>\xC3\xA4</name>" + content + "</camera></scene>");
    };
    EXPECT_EQ(error(""), "no error");
    const std::string place = "scene.xml:3:16: error: ";
    EXPECT_EQ(error("<up>1 2</up>"), place + "'1 2' isn't a list of 3 numbers");
    EXPECT_EQ(error("<up>1 2 3 4</up>"), place + "'4' after the last number");
    EXPECT_EQ(error("<up>1-2-3</up>"), place + "'1-2-3' isn't a list of 3 numbers");
    EXPECT_EQ(error("<sensor_width>1,5</sensor_width>"), place + "'1,5' is no number, or out of range");
    EXPECT_EQ(error("<sensor_width>wide</sensor_width>"), place + "'wide' is no number, or out of range");
    EXPECT_EQ(error("<sensor_width>1e999</sensor_width>"), place + "'1e999' is no number, or out of range");
    EXPECT_EQ(error("<sensor_width><a/></sensor_width>"), "scene.xml:3:30: error: an element inside of a value");
    EXPECT_EQ(error("<camera_type>flat</camera_type>"),
              place + "'flat' is none of thin-lens-perspective orthographic spherical");
    EXPECT_EQ(error("<keyframe><time>0</time></keyframe>"), place + "'keyframe' has no element 'pos'");
    EXPECT_EQ(errorOf(scene("<mesh><uid>1</uid><name>m</name><external><path></path></external></mesh>")),
              "scene.xml:2:1: error: a mesh without the path of its file");
    EXPECT_EQ(errorOf(scene("<camera><name>c</name></camera>")), "scene.xml:2:1: error: 'camera' has no element 'uid'");
    EXPECT_EQ(errorOf(scene("<camera><uid>-1</uid></camera>")),
              "scene.xml:2:9: error: '-1' is no whole number, or beyond 32 bits");
    EXPECT_EQ(errorOf(scene("<camera><uid>4294967295</uid></camera>")),
              "scene.xml:2:1: error: the uid of a node can't be 4294967295, which means none");
}

TEST(SceneXMLReader, EntitiesOfADocumentTypeAreRefused) {
    EXPECT_EQ(errorOf("<!DOCTYPE scene [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>\n<scene></scene>"),
              "scene.xml:1:1: error: a scene document has no document type");
}

TEST(SceneXMLReader, NestingHasALimit) {
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += "<a>";
    EXPECT_EQ(errorOf("<scene>" + deep),
              "scene.xml:1:" + std::to_string(8 + 3 * Markup::max_depth) + ": error: elements are nested too deep");
}

TEST(SceneXMLReader, ManyAttributesAndLongNumbersAreHarmless) {
    std::string attributes;
    for (int i = 0; i < 100'000; ++i)
        attributes += " a='1>\"'";
    const std::string digits(1'000'000, '1');
    const auto root = parse(scene("<camera" + attributes + "><uid>1</uid><name>c</name><sensor_width>0." + digits +
                                  "</sensor_width></camera>"));
    EXPECT_DOUBLE_EQ(static_cast<const SceneNodeCamera&>(*root->getNodeByUID(1)).sensor_width, 1.0 / 9.0);
    EXPECT_NE(errorOf(scene("<camera><uid>" + digits + "</uid></camera>")).find("beyond 32 bits"), std::string::npos);
}

TEST(SceneXMLReader, ANodeOfMoreElementsThanValuesCanBeIsAnError) {
    const auto fewBytesEach = [](std::string_view unit) {
        std::string node = "<camera><uid>1</uid><name>c</name>";
        while (node.size() < 1'000'000)
            node += unit;
        return errorOf(scene(node + "</camera>"));
    };
    const std::string fault = "scene.xml:2:1: error: a node with too many elements: more than one for each 10 bytes";
    EXPECT_EQ(fewBytesEach("<a/>"), fault);
    EXPECT_EQ(fewBytesEach("<a>1</a> 2 <!-- 3 -->"), "no error");
    EXPECT_EQ(fewBytesEach("<a>1</a> 2 "), fault);
    EXPECT_EQ(fewBytesEach("<a>1</a><![CDATA[]]>"), "no error");
    EXPECT_EQ(fewBytesEach("<a x=''/>"), fault);
    EXPECT_EQ(fewBytesEach("<a b=''/>      "), "no error");
    EXPECT_EQ(fewBytesEach("<uid>1</uid>"), "no error");
}

/// Reads, or refuses with a place in the text.
void expectReadOrRefused(const std::string& text) {
    try {
        parse(text);
    } catch (const SceneDocumentError& error) {
        EXPECT_GE(error.line, 1u);
        EXPECT_LE(error.line, 1u + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
        EXPECT_GE(error.column, 1u);
        EXPECT_FALSE(error.fault.empty());
    }
}

TEST(SceneXMLReader, EveryPrefixOfADocumentIsReadOrRefused) {
    for (const std::string& text : goldenDocuments())
        // A part that ends in white space is like the one before.
        for (std::size_t size = 0; size < text.size(); ++size)
            if (size == 0 || !Markup::isSpace(text[size - 1])) expectReadOrRefused(text.substr(0, size));
}

TEST(SceneXMLReader, AChangeOfAnyByteIsReadOrRefused) {
    using namespace std::string_view_literals;
    constexpr std::string_view bytes = "<>/&!?\"- 9x\n\r\0\xFF"sv;
    for (const std::string& text : goldenDocuments())
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string changed = text;
            changed[at] = bytes[at % bytes.size()];
            expectReadOrRefused(changed);
        }
}

// Takes minutes: for changes of the reader, with --gtest_also_run_disabled_tests.
TEST(SceneXMLReader, DISABLED_EveryChangeOfAnyByteIsReadOrRefused) {
    for (const std::string& text : goldenDocuments())
        for (std::size_t at = 0; at < text.size(); ++at)
            for (int byte = 0; byte < 256; ++byte) {
                std::string changed = text;
                changed[at] = static_cast<char>(byte);
                expectReadOrRefused(changed);
            }
}
