#include "scene/reading/ElementVisitor.h"

#include "scene/reading/SceneXMLReader.h"
#include "tests/support/FileBytes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace Velmar;
using namespace TestSupport;

namespace {

/// The ways to all values of a node, without the indices of repeated elements.
class Ways {
  public:
    void enter(std::string_view element, std::size_t) { steps.emplace_back(element); }
    void leave() { steps.pop_back(); }
    void flag(std::string_view element, bool value) { add(element, value ? "true" : "false"); }
    void numbers(std::string_view element, std::span<const double> values) { addNumbers(element, values); }
    void numbers(std::string_view element, std::span<const float> values) { addNumbers(element, values); }
    void text(std::string_view element, std::string_view value, std::size_t) { add(element, value); }
    void markup(std::string_view element, std::string_view, std::size_t) { kept.insert(wayTo(element)); }
    void file(std::string_view element, std::string_view path) { add(element, path); }
    void reference(std::string_view element, const SceneNode*, UID uid, std::size_t) {
        add(element, std::to_string(uid));
    }

    /// Whether the value is known by itself, or is inside of what is kept as text.
    bool contains(const std::string& way) const {
        if (ways.contains(way)) return true;
        return std::ranges::any_of(kept, [&](const std::string& start) {
            return start.empty() || way == start || way.starts_with(start + '/');
        });
    }

    /// With their texts, numbers separated by spaces.
    std::multiset<std::string> texts;

  private:
    std::string wayTo(std::string_view element) const {
        std::string way;
        for (const std::string& step : steps)
            way += (way.empty() ? "" : "/") + step;
        if (!element.empty()) way.append(way.empty() ? "" : "/").append(element);
        return way;
    }
    void add(std::string_view element, std::string_view value) {
        ways.insert(wayTo(element));
        // A class is named by an element of its own.
        if (element.empty()) ways.insert(wayTo(value));
        texts.insert(wayTo(element) + "=" + std::string(value));
    }
    template <class Number>
    void addNumbers(std::string_view element, std::span<const Number> numbers) {
        std::string text;
        for (const Number number : numbers)
            text.append(text.empty() ? "" : " ").append(NumberText(number).view());
        add(element, text);
    }

    std::vector<std::string> steps;
    std::set<std::string> ways;
    std::set<std::string> kept;
};

void addLeaves(const pugi::xml_node& element, const std::string& way, std::vector<std::string>& leaves) {
    bool is_leaf = true;
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() != pugi::node_element) continue;
        is_leaf = false;
        addLeaves(child, way.empty() ? child.name() : way + '/' + child.name(), leaves);
    }
    if (is_leaf && !way.empty()) leaves.push_back(way);
}

Reference<SceneNodeRoot> parse(std::string_view text) {
    SceneReadRequest request;
    request.path = "scene.xml";
    return parseSceneXML(text, request);
}

Ways waysOf(const SceneNode& node) {
    Ways ways;
    visitNode(ways, node);
    return ways;
}

} // namespace

TEST(ElementVisitor, PassesOnEveryValueOfTheGoldenDocuments) {
    for (const char* const name : {"every_element.xml", "whole_scene.xml"}) {
        const std::string text = readFileBytes(std::string(VELMAR_TEST_DATA "/golden/") + name);
        const auto root = parse(text);
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(text.c_str()));
        std::size_t index = 0;
        for (const pugi::xml_node& element : document.child("scene").children()) {
            const SceneNode& node = *root->children()[index++];
            EXPECT_EQ(getElement(node), element.name());
            const Ways ways = waysOf(node);
            std::vector<std::string> leaves;
            addLeaves(element, {}, leaves);
            for (const std::string& leaf : leaves) {
                const bool is_empty_group = leaf == "materials" || leaf.ends_with("layer_scale") ||
                                            leaf.ends_with("constant") || leaf.ends_with("diffuse");
                EXPECT_TRUE(leaf == "uid" || is_empty_group || ways.contains(leaf))
                    << name << ": " << element.name() << '/' << leaf;
            }
        }
    }
}

TEST(ElementVisitor, PassesOnValuesAsTheyWereRead) {
    const auto root = parse("<scene><sphere><uid>1</uid><name>b</name><keyframe><time>0</time><pos>1 2 3</pos>"
                            "<rotation_quaternion><axis>0 0 2</axis><angle>1</angle></rotation_quaternion></keyframe>"
                            "<radius>0.5</radius><material_uid>7</material_uid></sphere></scene>");
    EXPECT_EQ(waysOf(*root->children()[0]).texts,
              (std::multiset<std::string>{"name=b", "keyframe/time=0", "keyframe/pos=1 2 3",
                                          "keyframe/rotation_quaternion/axis=0 0 2",
                                          "keyframe/rotation_quaternion/angle=1", "radius=0.5", "material_uid=7"}));
}

TEST(ElementVisitor, PassesOnDefaultsThatADocumentLeavesOut) {
    const auto root =
        parse("<scene><mesh><uid>1</uid><name>m</name><external><path>a.obj</path></external></mesh></scene>");
    const auto texts = waysOf(*root->children()[0]).texts;
    EXPECT_TRUE(texts.contains("scale=1"));
    EXPECT_TRUE(texts.contains("normal_smoothing=true"));
    EXPECT_TRUE(texts.contains("external/path=a.obj"));
    EXPECT_EQ(texts.count("uid=1"), 0u) << "a UID names the node";
}

TEST(ElementVisitor, OptionsThatAreNotSetHaveNoValue) {
    const auto root =
        parse("<scene><renderer_settings><uid>1</uid><name>s</name><gpu>true</gpu></renderer_settings></scene>");
    EXPECT_EQ(waysOf(*root->children()[0]).texts, (std::multiset<std::string>{"name=s", "gpu=true"}));
}
