#include "mesh/PlyInput.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;

namespace {

/// The header as RPly gets it; empty when it is refused.
std::string rewritten(const std::string& file) {
    const PlyHeader header = parsePlyHeader(file);
    return header.complete ? header.text : "";
}

const std::string vertex_element = "element vertex 3\nproperty float x\nproperty list uchar int y\n";

} // namespace

TEST(PlyHeader, KeepsWhatItDeclares) {
    const std::string text = "ply\nformat binary_big_endian 1.0\n" + vertex_element + "end_header\n";
    EXPECT_EQ(rewritten(text + "body"), text);
    const PlyHeader header = parsePlyHeader(text + "body");
    EXPECT_FALSE(header.isAscii());
    EXPECT_EQ(header.body_offset, text.size());
}

TEST(PlyHeader, LosesItsRemarks) {
    EXPECT_EQ(rewritten("ply\ncomment a\nformat ascii 1.0\nobj_info b c\nelement vertex 3\ncomment d\n"
                        "property float x\nproperty list uchar int y\ncomment e\nend_header\n"),
              "ply\nformat ascii 1.0\n" + vertex_element + "end_header\n");
}

TEST(PlyHeader, LosesElementsThatReadNothing) {
    EXPECT_EQ(rewritten("ply\nformat ascii 1.0\nelement a 100000000\nelement b 0\nproperty int x\nelement c -7\n"
                        "property int x\n" +
                        vertex_element + "element d 1\nend_header\n"),
              "ply\nformat ascii 1.0\n" + vertex_element + "end_header\n");
}

TEST(PlyHeader, KeepsThePlaceOfTheFirstVerticesAndFacesThatReadNothing) {
    EXPECT_EQ(rewritten("ply\nformat ascii 1.0\nelement face 9\nelement vertex 0\nproperty int x\n"
                        "element face 8\nelement vertex 7\n" +
                        vertex_element + "end_header\n"),
              "ply\nformat ascii 1.0\nelement face 0\nelement vertex 0\n" + vertex_element + "end_header\n");
}

TEST(PlyHeader, TakesBlanksOfEveryKindBetweenItsWords) {
    const std::string text = "ply\r\nformat\tascii   1.0\r\nelement vertex +3\r\nproperty float x "
                             "property list uchar int y end_header\r\n";
    EXPECT_EQ(rewritten(text), "ply\nformat ascii 1.0\n" + vertex_element + "end_header\n");
    EXPECT_EQ(parsePlyHeader(text + "1").body_offset, text.size());
}

TEST(PlyHeader, EndsInOneByteUnlessItsFirstLineEndsInTwo) {
    EXPECT_EQ(parsePlyHeader("ply\nend_header\r\n").body_offset, 15u);
    EXPECT_EQ(parsePlyHeader("ply\r\nend_header\r\n").body_offset, 17u);
    EXPECT_FALSE(parsePlyHeader("ply\r\nend_header\r").complete);
}

TEST(PlyHeader, RefusesNumbersThatItsReaderDoesNotTake) {
    for (const char* count : {"many", "+-3", "++3", "+", "-", "99999999999999999999"})
        EXPECT_EQ(rewritten("ply\nformat ascii 1.0\nelement vertex " + std::string(count) + "\nend_header\n"), "")
            << count;
    EXPECT_NE(rewritten("ply\nformat ascii 1.0\nelement vertex 3x\nend_header\n"), "");
}

TEST(PlyHeader, RefusesMoreDeclarationsThanItsReaderCopesWith) {
    const auto withProperties = [](int count) {
        std::string text = "ply\nformat ascii 1.0\nelement vertex 1\n";
        for (int i = 0; i < count; ++i)
            text += "property char c\n";
        return text + "end_header\n";
    };
    EXPECT_NE(rewritten(withProperties(9999)), "");
    EXPECT_EQ(rewritten(withProperties(10000)), "");
}
