#include "reference.h"
#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshLoading.h"
#include "mesh/MeshReaders.h"
#include "mesh/VmmeshFile.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/ReaderPaths.h"
#include "tests/support/SpecialFloats.h"
#include "tests/support/TextFile.h"
#include "tests/support/Throws.h"
#include "tests/support/VmmeshBytes.h"

#include <cmath>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>
#include <string>
#include <vector>

namespace BrokenFilesTests {

using namespace Velmar;
using namespace TestSupport;

/// The ways in which readers of these formats have been broken, one a test, through the door that all readers share.
namespace {

const std::string obj_positions = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
const std::string obj_corners = obj_positions + "vt 0 0\nvn 0 0 1\n";

std::string plyHeader(std::string_view format, std::string_view vertices, std::string_view faces,
                      std::string_view list_types = "uchar int") {
    return "ply\nformat " + std::string(format) + " 1.0\nelement vertex " + std::string(vertices) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + std::string(faces) +
           "\nproperty list " + std::string(list_types) + " vertex_indices\nend_header\n";
}

const std::string ply_positions = "0 0 0\n1 0 0\n0 1 0\n";

/// Three positions and `length` in front of three corners.
std::string plyBinaryBody(std::string_view length) {
    VmmeshBytes body;
    body.f32(0).f32(0).f32(0).f32(1).f32(0).f32(0).f32(0).f32(1).f32(0);
    return body.append(length).u32(0).u32(1).u32(2).bytes;
}

std::string stlText(std::string_view first_vertex) {
    return "solid s\nfacet normal 0 0 1\nouter loop\n" + std::string(first_vertex) +
           "\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid s\n";
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

/// The fast path for PLY files doesn't differ from RPly.
void expectOnePlyResult(std::string_view name, std::string_view text) {
    if (!name.ends_with(".ply")) return;
    const PlainPly plain = comparePlyPaths(text, 1.0f);
    EXPECT_TRUE(plain == PlainPly::refused || plain == PlainPly::same_as_rply);
}

/// Loads a text as a file of this name.
void load(std::string_view name, std::string_view text, Mesh& mesh) {
    expectOnePlyResult(name, text);
    const TextFile file(name, text);
    loadMesh(file.path(), mesh, 1.0f);
}

/// The message of the failure, without the path that some messages hold.
std::string failureOf(std::string_view name, std::string_view text) {
    expectOnePlyResult(name, text);
    const TextFile file(name, text);
    Mesh mesh;
    const std::string message = messageOf<Velmar::Exception>([&] { loadMesh(file.path(), mesh, 1.0f); });
    return replaced(message, file.path(), "<path>");
}

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();
} // namespace

TEST(BrokenFiles, ObjIndicesThatOverflowWhileTheyAreParsed) {
    // They would be 1 if they wrapped.
    for (const char* index : {"4294967297", "18446744073709551617", "-4294967295", "2147483648"}) {
        const std::string i = index;
        EXPECT_EQ(failureOf("a.obj", obj_corners + "f " + i + " 2 3\n"),
                  "syntax error: no integer following 'f' (line 6)");
        EXPECT_EQ(failureOf("a.obj", obj_corners + "f 1/" + i + " 2/1 3/1\n"),
                  "syntax error: no integer following 'f' (line 6)");
        EXPECT_EQ(failureOf("a.obj", obj_corners + "f 1//" + i + " 2//1 3//1\n"),
                  "syntax error: no integer following '/' (line 6)");
    }
}

TEST(BrokenFiles, CountsThatTheBodyOfABinaryPlyDoesNotKeep) {
    const std::string body = plyBinaryBody("\3");
    Mesh mesh;
    load("a.ply", plyHeader("binary_little_endian", "3", "1") + body, mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    for (const char* count : {"5", "2147483647"}) {
        EXPECT_EQ(failureOf("a.ply", plyHeader("binary_little_endian", count, "1") + body), "read of body failed.");
        EXPECT_EQ(failureOf("a.ply", plyHeader("binary_little_endian", "3", count) + body), "read of body failed.");
    }
}

TEST(BrokenFiles, PlyCountsThatOverflowWhileTheyAreParsed) {
    for (const char* count :
         {"9223372036854775808", "18446744073709551619", "-9223372036854775809", "+99999999999999999999"}) {
        EXPECT_EQ(failureOf("a.ply", plyHeader("ascii", count, "0") + ply_positions), "could not read header.");
        EXPECT_EQ(failureOf("a.ply", plyHeader("ascii", "3", count) + ply_positions), "could not read header.");
    }
    Mesh mesh;
    load("a.ply", plyHeader("ascii", "+3", "0") + ply_positions, mesh);
    EXPECT_EQ(mesh.verts.size(), 3u);
}

TEST(BrokenFiles, VmmeshBlocksWhoseSizeInBytesWraps) {
    // Plain: vertices, normals, UVs, triangles and quads come after so many words of zeros.
    const std::vector<std::pair<int, std::uint32_t>> blocks = {{0, 12}, {1, 12}, {3, 8}, {4, 28}, {5, 36}};
    for (const auto& [words_before, record] : blocks) {
        const auto wraps = static_cast<std::uint32_t>((std::uint64_t{1} << 32) / record + 1);
        const std::string rest = VmmeshBytes().zeros(words_before).u32(wraps).zeros(20).bytes;
        EXPECT_THAT(failureOf("a.vmmesh", VmmeshBytes().header(4).zeros(3).append(rest).bytes),
                    testing::AnyOf("Error while reading mesh '<path>: Read failed.",
                                   "Error while reading mesh '<path>: Bad allocation while reading from file."));
        const std::string frame = compressed(rest);
        EXPECT_THAT(failureOf("a.vmmesh", VmmeshBytes().header(4, 1).zeros(3).u64(frame.size()).append(frame).bytes),
                    testing::AnyOf("Read past end of buffer.",
                                   "Error while reading mesh '<path>: Read past end of file.",
                                   "Error while reading mesh '<path>: Bad allocation while reading from file."));
    }
}

TEST(BrokenFiles, PlyListsOfNegativeLength) {
    for (const char* types : {"char int", "short int", "int int", "float int", "double int"}) {
        Mesh mesh;
        load("a.ply", plyHeader("ascii", "3", "1", types) + ply_positions + "-3 0 1 2\n", mesh);
        EXPECT_TRUE(mesh.triangles.empty()) << types;
    }
    Mesh mesh;
    load("a.ply", plyHeader("binary_little_endian", "3", "1", "char int") + plyBinaryBody("\xFD"), mesh);
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(BrokenFiles, PlyElementsOfNegativeNumber) {
    Mesh mesh;
    load("a.ply", plyHeader("ascii", "-3", "-2147483648"), mesh);
    EXPECT_TRUE(mesh.verts.empty());
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(BrokenFiles, PlyListsThatClaimMoreThanTheFileHolds) {
    for (const std::string& length : {std::string("\xFF\xFF\xFF\x7F"), std::string("\0\0\0\x40", 4)})
        EXPECT_EQ(failureOf("a.ply", plyHeader("binary_little_endian", "3", "1", "uint int") + plyBinaryBody(length)),
                  "read of body failed.");
    EXPECT_EQ(failureOf("a.ply", plyHeader("ascii", "3", "1", "uint int") + ply_positions + "2000000000 0 1 2\n"),
              "read of body failed.");
    // RPly holds a length in a long, where it may turn negative: then the list is empty.
    EXPECT_THAT(failureOf("a.ply", plyHeader("binary_little_endian", "3", "1", "uint int") +
                                       plyBinaryBody(std::string(4, '\xFF'))),
                testing::AnyOf("read of body failed.", "(nothing thrown)"));
}

TEST(BrokenFiles, PlyCornersThatAreNoIndices) {
    const std::string before = plyHeader("ascii", "3", "1", "uchar double") + ply_positions;
    for (const char* corner : {"-1", "4294967295", "3"})
        EXPECT_THAT(failureOf("a.ply", before + "3 " + corner + " 1 2\n"),
                    testing::StartsWith("Error while reading mesh '<path>: Triangle vertex index is out of bounds."))
            << corner;
    // Beyond all integers is taken as 0.
    Mesh mesh;
    load("a.ply", before + "3 1e300 1 2\n", mesh);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

TEST(BrokenFiles, TextsThatEndInANumberAKeywordOrALineAtThePagesEnd) {
    // The next byte belongs to nobody.
    constexpr std::size_t page = 4096;
    const std::vector<std::pair<std::string, std::string>> ends = {
        {"a.obj", obj_positions + "f 1 2 3"},
        {"a.obj", obj_corners + "f 1/1/1 2/1/1 3/1/1"},
        {"a.obj", "v 0 0 1.25"},
        {"a.obj", "v 0 0 1e"},
        {"a.obj", "vt 0 -"},
        {"a.obj", "usemtl a"},
        {"a.obj", "mtllib"},
        {"a.obj", obj_positions + "f 1 2 3 \\"},
        {"a.obj", "vn"},
        {"a.obj", "\r"},
    };
    for (const auto& [name, end] : ends) {
        const std::string comment(page - end.size() - 1, '#');
        Mesh mesh;
        try {
            load(name, comment + "\n" + end, mesh);
        } catch (const Velmar::Exception&) {
        }
        EXPECT_LE(mesh.verts.size(), 3u) << end;
    }
    const std::string stl = stlText("vertex 0 0 0");
    for (std::size_t length = 8; length < stl.size(); ++length) {
        const std::string name(page - length, 'n');
        Mesh mesh;
        try {
            load("a.stl", "solid s" + name + stl.substr(7, length - 7), mesh);
        } catch (const Velmar::Exception&) {
        }
        EXPECT_LE(mesh.verts.size(), 3u) << length;
    }
    for (const char* end : {"newmtl", "newmtl a", "map_Kd a.png", "Kd 1 1 0.5", "Ns", "d ."}) {
        const std::string start = "newmtl m\n#";
        const TextFile file("a.mtl", start + std::string(page - start.size() - std::strlen(end) - 1, '#') + "\n" + end);
        MTLLibrary library;
        try {
            loadMTL(file.path(), library);
        } catch (const Velmar::Exception&) {
        }
        EXPECT_LE(library.materials.size(), 2u) << end;
    }
}

TEST(BrokenFiles, MaterialLibrariesCutAnywhere) {
    const std::string text = "newmtl a\nKd 1 0.5 1e-1\nKs 1 1 1\nNs 10.5\nmap_Kd a.png\nnewmtl b\nd .5";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const TextFile file("a.mtl", text.substr(0, length));
        MTLLibrary library;
        const std::string message = messageOf<Velmar::Exception>([&] { loadMTL(file.path(), library); });
        EXPECT_THAT(message, testing::AnyOf("(nothing thrown)", testing::StartsWith("Parse error while reading ")));
        EXPECT_LE(library.materials.size(), 2u);
    }
}

TEST(BrokenFiles, BinaryStlThatBeginsWithSolid) {
    std::string bytes = "solid" + std::string(75, ' ');
    bytes += VmmeshBytes().u32(1).zeros(12).append(std::string_view("\0\0", 2)).bytes;
    EXPECT_EQ(failureOf("a.stl", bytes), "Invalid file, expected 'facet' or 'endsolid'");
    std::string with_line_end = bytes;
    with_line_end[40] = '\n';
    EXPECT_EQ(failureOf("a.stl", with_line_end), "Invalid file, expected 'facet' or 'endsolid'");
}

TEST(BrokenFiles, LineEndsOfTwoBytesBeforeTheDataOfABinaryPly) {
    const std::string header = plyHeader("binary_little_endian", "3", "1");
    Mesh expected;
    load("a.ply", header + plyBinaryBody("\3"), expected);
    ASSERT_EQ(expected.triangles.size(), 1u);
    Mesh mesh;
    load("a.ply", replaced(header, "\n", "\r\n") + plyBinaryBody("\3"), mesh);
    expectSameContent(mesh, expected);
}

TEST(BrokenFiles, LineEndOfTwoBytesBehindTheHeaderAloneIsNoEndOfTheData) {
    // The file doesn't tell that its data begins a byte later, and so it ends a byte early or is something else.
    const std::string header = replaced(plyHeader("binary_little_endian", "3", "1"), "end_header\n", "end_header\r\n");
    Mesh mesh;
    const std::string message =
        messageOf<Velmar::Exception>([&] { load("a.ply", header + plyBinaryBody("\3"), mesh); });
    EXPECT_THAT(message, testing::AnyOf("(nothing thrown)", "read of body failed."));
    EXPECT_LE(mesh.triangles.size(), 1u);
}

TEST(BrokenFiles, NamesAndLinesOfAMegabyte) {
    const std::string name(1 << 20, 'n');
    Mesh obj;
    load("a.obj",
         "# " + name + "\nmtllib " + name + "\n" + obj_positions + "usemtl " + name + "\ng " + name + "\nf 1 2 3\n# " +
             name + "\n" + name + "\n",
         obj);
    EXPECT_EQ(obj.triangles.size(), 1u);
    EXPECT_EQ(obj.used_materials[0].size(), name.size());

    Mesh stl;
    load("a.stl", replaced(stlText("vertex 0 0 0"), "solid s", "solid " + name), stl);
    EXPECT_EQ(stl.triangles.size(), 1u);
    EXPECT_EQ(failureOf("a.stl", "solid\n" + name), "Invalid file, expected 'endsolid'");

    const TextFile library_file("a.mtl", "newmtl " + name + "\nmap_Kd " + name + "\n" + name + "\n");
    MTLLibrary library;
    loadMTL(library_file.path(), library);
    EXPECT_EQ(library.materials.at(0).name, name);
    EXPECT_EQ(library.materials[0].map_Kd, name);
}

TEST(BrokenFiles, PlyWordsLongerThanItsReaderHolds) {
    const std::string header = plyHeader("ascii", "0", "0");
    for (const std::size_t length : {255u, 256u, 257u, 1u << 20}) {
        const std::string name(length, 'n');
        const bool fits = length < 256;
        for (const std::string& text :
             {replaced(header, "element face", "element " + name), replaced(header, "float x", "float " + name)})
            EXPECT_EQ(failureOf("a.ply", text), fits ? "(nothing thrown)" : "could not read header.") << length;
        EXPECT_EQ(failureOf("a.ply", plyHeader("ascii", "1", "0") + "1 2 " + name + "\n"), "read of body failed.");
    }
}

TEST(BrokenFiles, PlyRemarksLongerThanALineOfItsReader) {
    const std::string header = plyHeader("ascii", "0", "0");
    for (const char* keyword : {"comment", "obj_info"}) {
        for (const std::size_t length : {1004u, 1005u, 1022u, 1023u, 1024u, 2000u, 8000u, 8192u, 20000u, 1u << 20}) {
            const std::string remark = std::string(keyword) + " " + std::string(length, 'n') + "\n";
            const std::string expected = length <= 1023 ? "(nothing thrown)" : "could not read header.";
            EXPECT_EQ(failureOf("a.ply", replaced(header, "element vertex", remark + "element vertex")), expected);
            EXPECT_EQ(failureOf("a.ply", replaced(header, "property float x", remark + "property float x")), expected);
        }
    }
}

TEST(BrokenFiles, NanAndInfAreNoNumbersInObjAndMtl) {
    for (const char* word : {"nan", "NaN", "inf", "-inf", "infinity", "1.#QNAN", "nan(ind)"}) {
        const std::string w = word;
        // A number in front of the first letter that isn't its own ends there.
        const std::string at = w[0] == '1' ? "(nothing thrown)" : "Parse error while reading position on line 1";
        EXPECT_EQ(failureOf("a.obj", "v 0 0 " + w + "\n"), at) << word;
        EXPECT_EQ(failureOf("a.obj", "v " + w + " 0 0\n"), "Parse error while reading position on line 1") << word;
        const TextFile file("a.mtl", "newmtl m\nKd " + w + " 0 0\n");
        MTLLibrary library;
        EXPECT_THAT(messageOf<Velmar::Exception>([&] { loadMTL(file.path(), library); }),
                    testing::StartsWith("Parse error while reading colou"))
            << word;
    }
}

TEST(BrokenFiles, NanAndInfInAnStlTextAreWordsThatDontBelongThere) {
    for (const char* word : {"nan", "inf", "-inf"}) {
        EXPECT_EQ(failureOf("a.stl", stlText("vertex " + std::string(word) + " 0 0")),
                  "Invalid file, expected 'vertex'");
        Mesh mesh;
        load("a.stl", replaced(stlText("vertex 0 0 0"), "normal 0 0 1", "normal 0 0 0"), mesh);
        EXPECT_EQ(mesh.triangles.size(), 1u);
    }
}

TEST(BrokenFiles, NanAndInfInBinaryFilesAndInPlyAreTakenAsTheyAre) {
    const auto expectKept = [](const Mesh& mesh) {
        ASSERT_GE(mesh.verts.size(), 3u);
        EXPECT_TRUE(std::isnan(mesh.verts[0].x));
        EXPECT_EQ(mesh.verts[1].x, infinity);
        EXPECT_EQ(mesh.verts[2].x, -infinity);
        // What isn't a number has no place in a box.
        EXPECT_EQ(mesh.aabb_min.x, -infinity);
        EXPECT_EQ(mesh.aabb_max.x, infinity);
        EXPECT_EQ(mesh.aabb_max.y, 1.0f);
    };
    // RPly knows no infinity in texts.
    Mesh text;
    load("a.ply", plyHeader("ascii", "3", "1") + "nan 0 0\n1 0 0\n0 1 0\n3 0 1 2\n", text);
    EXPECT_TRUE(std::isnan(text.verts[0].x));
    EXPECT_EQ(text.aabb_min.x, 0.0f);
    EXPECT_TRUE(text.triangles.empty()) << "it has no area";
    EXPECT_EQ(failureOf("a.ply", plyHeader("ascii", "1", "0") + "0 inf 0\n"), "read of body failed.");

    VmmeshBytes positions;
    positions.f32(nan_value).zeros(2).f32(infinity).f32(1).f32(0).f32(-infinity).zeros(2);
    Mesh binary;
    load("a.ply", plyHeader("binary_little_endian", "3", "0") + positions.bytes, binary);
    expectKept(binary);

    Mesh stl;
    load("a.stl",
         std::string(80, ' ') +
             VmmeshBytes().u32(1).zeros(3).append(positions.bytes).append(std::string_view("\0\0", 2)).bytes,
         stl);
    expectKept(stl);

    Mesh vmmesh;
    load("a.vmmesh", VmmeshBytes().header(4).zeros(3).u32(3).append(positions.bytes).zeros(5).bytes, vmmesh);
    expectKept(vmmesh);
}

TEST(BrokenFiles, AMeshWhoseLoadFailedIsFreedOnceAndMayBeLoadedAgain) {
    const std::vector<std::pair<std::string, std::string>> broken = {
        {"a.obj", obj_corners + "usemtl m\nf 1/1/1 2/1/1 3/1/1\nf 1 2 9\n"},
        {"a.obj", obj_corners + "f 1/1/1 2/1/1 3/7/1\n"},
        {"a.ply", plyHeader("ascii", "3", "2") + ply_positions + "3 0 1 2\n3 0 1 9\n"},
        {"a.ply", plyHeader("ascii", "3", "2") + ply_positions + "3 0 1 2\n"},
        {"a.stl", replaced(stlText("vertex 0 0 0"), "endfacet", "end")},
        {"a.vmmesh", VmmeshBytes()
                         .header(4)
                         .zeros(1)
                         .u32(1)
                         .text("a name of more than sixteen bytes")
                         .zeros(1)
                         .u32(2)
                         .zeros(6)
                         .u32(9)
                         .bytes},
    };
    for (const auto& [name, text] : broken) {
        const Reference<Mesh> mesh(new Mesh);
        EXPECT_THROW(load(name, text, *mesh), Velmar::Exception) << name;
        EXPECT_THROW(load(name, text, *mesh), Velmar::Exception) << name;
        const TempDir dir;
        Mesh sample;
        fillSample(sample);
        writeToFile(toVelmarString(dir.file("good.vmmesh")), sample, true);
        loadMesh(dir.file("good.vmmesh"), *mesh, 1.0f);
        expectSameContent(*mesh, sample);
    }
}

} // namespace BrokenFilesTests
