#include "scene/XMLPrimitives.h"

#include "tests/support/MemoryOStream.h"
#include "tests/support/PlainNode.h"

#include <array>
#include <gtest/gtest.h>

namespace XMLPrimitivesTests {

using namespace Velmar;
using TestSupport::textOf;

namespace {

std::string stringElement(std::string_view value) {
    return textOf([&](OStream& stream) { writeStringElement(stream, 0, "name", value); });
}

std::string pathElement(std::string_view path, const XMLWriteOptions& options) {
    return textOf([&](OStream& stream) { writePathElement(stream, 0, "path", path, options); });
}

XMLWriteOptions optionsFor(const char* scene_dir, bool resolve = true) {
    XMLWriteOptions options;
    options.scene_dir = scene_dir;
    options.resolve_relative_paths = resolve;
    return options;
}

} // namespace

TEST(XMLTags, StandOnLinesOfTheirOwnBehindTabs) {
    EXPECT_EQ(textOf([](OStream& s) { writeOpenTag(s, 2, "material"); }), "\t\t<material>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeCloseTag(s, 2, "material"); }), "\t\t</material>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeEmptyTag(s, 2, "circular"); }), "\t\t<circular/>\n");
}

TEST(XMLTags, DepthZeroWritesNoTab) {
    EXPECT_EQ(textOf([](OStream& s) { writeOpenTag(s, 0, "scene"); }), "<scene>\n");
}

TEST(XMLTags, AnyDepthIsIndented) {
    EXPECT_EQ(textOf([](OStream& s) { writeOpenTag(s, 5000, "a"); }), std::string(5000, '\t') + "<a>\n");
}

TEST(XMLElements, HoldTheValueBetweenTheTags) {
    EXPECT_EQ(textOf([](OStream& s) { writeBoolElement(s, 2, "enable_sky", true); }),
              "\t\t<enable_sky>true</enable_sky>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeInt32Element(s, 2, "layer", 2); }), "\t\t<layer>2</layer>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeInt32Element(s, 0, "n", -2147483647 - 1); }), "<n>-2147483648</n>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeUInt32Element(s, 2, "uid", 7); }), "\t\t<uid>7</uid>\n");
    EXPECT_EQ(textOf([](OStream& s) { writeDoubleElement(s, 2, "gamma", 2.2); }), "\t\t<gamma>2.2</gamma>\n");
    EXPECT_EQ(textOf([](OStream& s) {
                  writeVec3Element(s, 2, "sundir", {0.5, 0.0, 0.866});
              }),
              "\t\t<sundir>0.5 0 0.866</sundir>\n");
}

TEST(XMLElements, AMatrixStandsOnThreeLinesWithASpaceBehindEachNumber) {
    const std::array<double, 9> identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_EQ(textOf([&](OStream& s) { writeMatrix3Element(s, 1, "S", identity); }),
              "\t<S>\n\t\t1 0 0 0 1 0 0 0 1 \n\t</S>\n");
}

TEST(XMLElements, CostTheStreamOneCallEach) {
    TestSupport::MemoryOStream stream;
    writeVec3Element(stream, 3, "pos", {1.0 / 3.0, 2.0 / 3.0, 1e-300});
    EXPECT_EQ(stream.calls, 1);
}

TEST(StringElement, PlainValuesAreEscaped) {
    EXPECT_EQ(stringElement("Ground plane"), "<name>Ground plane</name>\n");
    EXPECT_EQ(stringElement("a<b>c\"d&e"), "<name>a&lt;b&gt;c&quot;d&amp;e</name>\n");
    EXPECT_EQ(stringElement("x]]>y"), "<name>x]]&gt;y</name>\n");
    EXPECT_EQ(stringElement(""), "<name></name>\n");
}

TEST(StringElement, SingleWhiteSpaceInsideStaysPlain) {
    EXPECT_EQ(stringElement("a b"), "<name>a b</name>\n");
    EXPECT_EQ(stringElement("a\tb"), "<name>a\tb</name>\n");
}

TEST(StringElement, WhiteSpaceThatReadersWouldFoldIsProtected) {
    EXPECT_EQ(stringElement(" a"), "<name><![CDATA[ a]]></name>\n");
    EXPECT_EQ(stringElement("a\n"), "<name><![CDATA[a\n]]></name>\n");
    EXPECT_EQ(stringElement("a  b"), "<name><![CDATA[a  b]]></name>\n");
    EXPECT_EQ(stringElement("a\r\nb"), "<name><![CDATA[a\r\nb]]></name>\n");
    EXPECT_EQ(stringElement(" "), "<name><![CDATA[ ]]></name>\n");
}

TEST(StringElement, AProtectedValueIsntEscapedOrSplit) {
    EXPECT_EQ(stringElement(" <&>"), "<name><![CDATA[ <&>]]></name>\n");
    EXPECT_EQ(stringElement(" x]]>y"), "<name><![CDATA[ x]]>y]]></name>\n");
}

TEST(StringElement, LongValuesAreWrittenWhole) {
    const std::string value(100000, 'x');
    EXPECT_EQ(stringElement(value + "<" + value), "<name>" + value + "&lt;" + value + "</name>\n");
    EXPECT_EQ(stringElement(value + "  "), "<name><![CDATA[" + value + "  ]]></name>\n");
}

TEST(EscapeXMLEntities, ReplacesExactlyFourCharacters) {
    EXPECT_EQ(escapeXMLEntities("<>\"&'\x01\xC3\xA4"), "&lt;&gt;&quot;&amp;'\x01\xC3\xA4");
}

TEST(PathElement, ARelativePathIsJoinedToTheScenesDirectory) {
    EXPECT_EQ(pathElement("data\\a.png", optionsFor("D:\\work")), "<path>D:\\work\\data\\a.png</path>\n");
    EXPECT_EQ(pathElement("data/a.png", optionsFor("D:/work")), "<path>D:/work\\data/a.png</path>\n");
}

TEST(PathElement, AnAbsolutePathStaysAsItIs) {
    for (const char* path : {"C:\\a.png", "c:a.png", "\\a.png", "/a.png"})
        EXPECT_EQ(pathElement(path, optionsFor("D:\\work")), std::string("<path>") + path + "</path>\n");
}

TEST(PathElement, WithoutASceneDirectoryOrWithoutResolvingAPathStaysAsItIs) {
    EXPECT_EQ(pathElement("a.png", optionsFor("")), "<path>a.png</path>\n");
    EXPECT_EQ(pathElement("a.png", optionsFor("D:\\work", false)), "<path>a.png</path>\n");
}

TEST(PathElement, AnEmptyPathStaysEmpty) {
    EXPECT_EQ(pathElement("", optionsFor("D:\\work")), "<path></path>\n");
}

TEST(PathElement, WhiteSpaceIsProtectedAsInAnyString) {
    EXPECT_EQ(pathElement("a  b.png", optionsFor("D:\\work")), "<path><![CDATA[D:\\work\\a  b.png]]></path>\n");
}

TEST(NodeIdentity, IsUidAndName) {
    const Reference<TestSupport::PlainNode> node(new TestSupport::PlainNode);
    node->setUID(7);
    node->setName("a&b");
    EXPECT_EQ(textOf([&](OStream& s) { writeNodeIdentity(s, 1, *node); }), "\t<uid>7</uid>\n\t<name>a&amp;b</name>\n");
}

} // namespace XMLPrimitivesTests
