#include "scene/reading/SceneXMLReader.h"
#include "tests/steps/AllocatedBytes.h"
#include "tests/steps/Steps.h"

#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

using namespace Velmar;

/// Reading a document takes time in proportion to its size, and less memory than 20 times its size, whatever is in it.
namespace {

/// As many as make about `size` bytes of what `make` gives for 1, 2, 3 ...
std::string many(std::size_t size, const std::function<std::string(std::size_t)>& make) {
    std::string text;
    for (std::size_t i = 1; text.size() < size; ++i)
        text += make(i);
    return text;
}

std::string many(std::size_t size, std::string_view unit) {
    return many(size, [&](std::size_t) { return std::string(unit); });
}

std::string element(std::string_view name, std::string_view content) {
    return "<" + std::string(name) + ">" + std::string(content) + "</" + std::string(name) + ">";
}

std::string number(std::size_t value) {
    return element("uid", std::to_string(value));
}

std::string node(std::string_view name, std::string_view content, std::size_t uid = 1) {
    return element(name, number(uid) + "<name/>" + std::string(content));
}

std::string scene(std::string_view content) {
    return element("scene", content);
}

std::string nodes(std::size_t size, std::string_view name, std::string_view content = {}) {
    return scene(many(size, [&](std::size_t i) { return node(name, content, i); }));
}

std::string oneNode(std::size_t size, std::string_view name, std::string_view unit, std::string_view first = {}) {
    return scene(node(name, std::string(first) + many(size, unit)));
}

/// A material with a shader program of many parts.
std::string shader(std::size_t size, std::string_view unit, std::string_view first = {}) {
    return scene(
        node("material", element("diffuse", element("shared_shader_info", std::string(first) + many(size, unit)))));
}

/// UIDs that share a bucket of every table of fewer buckets than there are such UIDs.
std::size_t colliding(std::size_t i) {
    constexpr std::size_t max_buckets = 1U << 12U;
    return i * max_buckets % 0xFFFFFFFF;
}

struct WorstDocument {
    const char* description;
    std::function<std::string(std::size_t)> make;
};

void PrintTo(const WorstDocument& document, std::ostream* stream) {
    *stream << document.description;
}

constexpr std::string_view frame = "<keyframe><time>0</time><pos>0 0 0</pos></keyframe>";
constexpr std::string_view texture = "<texture><path>a</path></texture>";

const std::vector<WorstDocument> worst_documents = {
    {"Cameras", [](std::size_t size) { return nodes(size, "camera"); }},
    {"Models", [](std::size_t size) { return nodes(size, "model2"); }},
    {"Settings", [](std::size_t size) { return nodes(size, "renderer_settings"); }},
    {"Sunskies",
     [](std::size_t size) {
         return scene(many(size, [](std::size_t i) { return element("material", number(i) + "<sunsky/><name/>"); }));
     }},
    {"ForeignMaterials",
     [](std::size_t size) {
         return scene(many(size, [](std::size_t i) { return element("material", number(i) + "<a/><name/>"); }));
     }},
    {"ForeignNodes", [](std::size_t size) { return nodes(size, "a"); }},
    {"Curves", [](std::size_t size) { return scene(many(size, "<curve1d><name/></curve1d>")); }},
    {"NodesOfOneUID", [](std::size_t size) { return scene(many(size, node("camera", {}))); }},
    {"NodesWhoseUIDsCollide",
     [](std::size_t size) { return scene(many(size, [](std::size_t i) { return node("a", {}, colliding(i)); })); }},
    {"ReferencesToNodesWhoseUIDsCollide",
     [](std::size_t size) {
         const auto mesh = [](std::size_t i) {
             return node("mesh", "<external><path>a</path></external>", colliding(i));
         };
         const auto model = [](std::size_t i) {
             return node("model2", element("geometry_uid", std::to_string(colliding(i))), 1000 * i + 1);
         };
         return scene(many(size / 2, mesh) + many(size / 2, model));
     }},
    {"ScatterNodesThatAreNotThere",
     [](std::size_t size) {
         return scene(node("material", "<diffuse/>" + element("scatter_uids", many(size, [](std::size_t i) {
                                                                  return number(colliding(i));
                                                              }))));
     }},
    {"MaterialsThatAreNotThere",
     [](std::size_t size) {
         return scene(
             node("model2", element("materials", many(size, [](std::size_t i) { return number(colliding(i)); }))));
     }},
    {"MaterialsBehindAnUnknownElement",
     [](std::size_t size) { return scene(node("model2", element("materials", "<a/>" + many(size, "<uid>1</uid>")))); }},
    {"KeyFrames", [](std::size_t size) { return oneNode(size, "camera", frame); }},
    {"KeyFramesBehindAnUnknownElement", [](std::size_t size) { return oneNode(size, "camera", frame, "<a/>"); }},
    {"KeyFramesWithoutValues", [](std::size_t size) { return oneNode(size, "camera", "<keyframe/>"); }},
    {"KeyFramesWithUnknownElements",
     [](std::size_t size) {
         return "<scene>\r\n" +
                node("camera", many(size, "<keyframe><rotation_quaternion><b/></rotation_quaternion>\r\n<a/>"
                                          "<time>0</time><pos>0 0 0</pos></keyframe>")) +
                "</scene>";
     }},
    {"UnknownElements", [](std::size_t size) { return oneNode(size, "camera", "<abcdefg/>"); }},
    {"UnknownElementsInManyLines", [](std::size_t size) { return oneNode(size, "camera", "\n\n\n\n\n\n<a/>"); }},
    {"UnknownElementsInManyLinesOfWindows",
     [](std::size_t size) { return "<scene>\r\n" + node("camera", many(size, "\r\n\r\n\r\n<a/>")) + "</scene>"; }},
    {"NodesOfShortUnknownElements", [](std::size_t size) { return nodes(size, "camera", many(1000, "<a/>")); }},
    {"ShortElements", [](std::size_t size) { return oneNode(size, "camera", "<a/>"); }},
    {"ShortElementsAndTexts", [](std::size_t size) { return oneNode(size, "camera", "1<a/>"); }},
    {"ShortElementsOfAForeignNode", [](std::size_t size) { return oneNode(size, "a", "<a/>"); }},
    {"PathsOfAForeignNode", [](std::size_t size) { return oneNode(size, "a", "<path>a</path>"); }},
    {"Attributes",
     [](std::size_t size) { return scene("<camera" + many(size, " a=''") + ">" + number(1) + "<name/></camera>"); }},
    {"ElementsNestedDeep", [](std::size_t size) { return scene(many(size, "<a>") + many(size * 4 / 3, "</a>")); }},
    {"ElementsNestedAsDeepAsIsAllowed",
     [](std::size_t size) { return oneNode(size, "camera", many(291, "<a>") + many(388, "</a>")); }},
    {"GroupsThatAreTwice", [](std::size_t size) { return oneNode(size, "model2", "<materials/>"); }},
    {"ScatterGroups", [](std::size_t size) { return oneNode(size, "material", "<scatter_uids/>", "<diffuse/><b/>"); }},
    {"EmissionScales",
     [](std::size_t size) { return oneNode(size, "model2", "<emission_scale><value>1</value></emission_scale>"); }},
    {"Profiles", [](std::size_t size) { return oneNode(size, "model2", "<ies_profile><path/></ies_profile>"); }},
    {"RenderRegions", [](std::size_t size) { return oneNode(size, "renderer_settings", "<render_region/>"); }},
    {"LayerSettings",
     [](std::size_t size) { return oneNode(size, "renderer_settings", "<layer_setting><name/></layer_setting>"); }},
    {"Textures", [](std::size_t size) { return shader(size, texture); }},
    {"IncludesBehindTextures",
     [](std::size_t size) { return shader(size / 2, "<include/>", many(size / 2, texture)); }},
    {"ShaderParameters", [](std::size_t size) { return shader(size, "<abcdefg/>"); }},
    {"NodesOfShortShaderParameters",
     [](std::size_t size) {
         const std::string info = element("shared_shader_info", many(100'000, "<a/>"));
         return nodes(size, "material", element("diffuse", info));
     }},
    {"KnotsOfACurve",
     [](std::size_t size) { return scene(element("curve1d", "<name/>" + element("knots", many(size, "1 ")))); }},
    {"ALongNumber",
     [](std::size_t size) {
         return scene(element("curve1d", "<name/>" + element("knots", "0." + std::string(size, '1'))));
     }},
    {"ALongName",
     [](std::size_t size) { return scene(element("camera", number(1) + element("name", many(size, "&lt;")))); }},
    {"ANameOfSections",
     [](std::size_t size) {
         return scene(element("camera", number(1) + element("name", many(size, "<![CDATA[a]]>"))));
     }},
    {"Comments", [](std::size_t size) { return scene(many(size, "<!---->")); }},
    {"TagsWithoutEnd", [](std::size_t size) { return scene(many(size, "<a")); }},
    {"QuotesWithoutEnd", [](std::size_t size) { return scene(many(size, "<a b='")); }},
    {"ADocumentType",
     [](std::size_t size) { return "<!DOCTYPE a [<!ENTITY b \"" + std::string(size, 'c') + "\">]><scene/>"; }},
};

class WorstDocuments : public testing::TestWithParam<WorstDocument> {
  protected:
    static void read(const std::string& text) {
        UnknownElements unknown;
        SceneReadRequest request;
        request.unknown_elements = &unknown;
        try {
            parseSceneXML(text, request);
        } catch (const SceneDocumentError&) {
        }
    }

    static std::uint64_t stepsFor(std::size_t size) {
        const std::string text = GetParam().make(size);
        Steps::take();
        read(text);
        return Steps::take();
    }
};

} // namespace

TEST_P(WorstDocuments, TakeStepsInProportionToTheirSize) {
    // Larger than the parts in which documents are parsed.
    constexpr std::size_t size = 300'000;
    constexpr std::size_t factor = 8;
    const std::uint64_t few = stepsFor(size);
    const std::uint64_t many_steps = stepsFor(factor * size);
    EXPECT_GT(few, 0u);
    // Sorting takes some more.
    EXPECT_LT(many_steps, factor * few * 3 / 2 + 100'000);
    EXPECT_LT(many_steps, 400 * factor * size);
}

TEST_P(WorstDocuments, TakeLessMemoryThanTwentyTimesTheirSize) {
    constexpr std::size_t size = 4'000'000;
    const std::string text = GetParam().make(size);
    Steps::takePeakBytes();
    read(text);
    // Besides, a file is mapped.
    EXPECT_LT(Steps::takePeakBytes(), 19 * text.size());
}

INSTANTIATE_TEST_SUITE_P(Documents, WorstDocuments, testing::ValuesIn(worst_documents),
                         [](const auto& document) { return std::string(document.param.description); });
