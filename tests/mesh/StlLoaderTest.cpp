#include "velmarexceptions.h"

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "tests/support/MeshSupport.h"
#include "tests/support/TextFile.h"
#include "tests/support/Throws.h"
#include "tests/support/VmmeshBytes.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace StlLoaderTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

void loadStlBytes(std::string_view bytes, Mesh& mesh, float scale = 1.0f) {
    const TextFile file("model.stl", bytes);
    loadSTL(file.path(), mesh, scale);
}

std::string stlMessage(std::string_view bytes) {
    Mesh mesh;
    return messageOf<Velmar::Exception>([&] { loadStlBytes(bytes, mesh); });
}

VmmeshBytes binary(std::uint32_t claimed, std::uint32_t present) {
    VmmeshBytes file;
    file.append(std::string(80, 'h')).u32(claimed);
    for (std::uint32_t i = 0; i < present; ++i) {
        const auto x = static_cast<float>(i);
        file.f32(9).f32(9).f32(9);
        file.f32(x).f32(0).f32(0).f32(x + 1).f32(0).f32(0).f32(x).f32(1).f32(-2);
        file.append("ab");
    }
    return file;
}

const std::string facet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1.5 0 0\n  vertex 0 2 -1e1\n"
                          " endloop\nendfacet\n";

using Triangles = std::vector<MeshTriangle>;

TEST(StlLoader, ReadsBinaryTrianglesWithVerticesOfTheirOwn) {
    Mesh mesh;
    loadStlBytes(binary(2, 2).bytes, mesh, 2.0f);
    EXPECT_EQ(bytesOf(mesh.verts),
              bytesOf(std::vector<Vec3f>{{0, 0, 0}, {2, 0, 0}, {0, 2, -4}, {2, 0, 0}, {4, 0, 0}, {2, 2, -4}}));
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}, {{3, 4, 5}, {0, 0, 0}, 0}}));
    EXPECT_TRUE(mesh.used_materials.empty());
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
    EXPECT_EQ(mesh.aabb_min.z, -4.0f) << "built";
}

TEST(StlLoader, ReadsAnEmptyBinaryFile) {
    Mesh mesh;
    loadStlBytes(binary(0, 0).bytes, mesh);
    EXPECT_TRUE(mesh.verts.empty());
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(StlLoader, IgnoresBytesAfterTheLastTriangle) {
    Mesh mesh;
    loadStlBytes(binary(2, 3).append("more").bytes, mesh);
    EXPECT_EQ(mesh.triangles.size(), 2u);
}

TEST(StlLoader, RefusesFilesThatAreTooSmall) {
    EXPECT_EQ(stlMessage(""), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage("soli"), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage(binary(0, 0).bytes.substr(0, 83)), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage(binary(2, 1).bytes), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage(binary(1, 1).bytes.substr(0, 133)), "Invalid file.  (file size too small)");
}

TEST(StlLoader, ComputesTheNeededSizeInSixtyFourBits) {
    // 50 * count is 0 and 100 modulo 2^32.
    EXPECT_EQ(stlMessage(binary(0x80000000, 2).bytes), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage(binary(0x80000002, 2).bytes), "Invalid file.  (file size too small)");
    EXPECT_EQ(stlMessage(binary(0xFFFFFFFF, 2).bytes), "Invalid file.  (file size too small)");
}

TEST(StlLoader, ReadsText) {
    Mesh mesh;
    loadStlBytes("solid the name facet\n" + facet + facet + "endsolid the name\nanything", mesh, 2.0f);
    EXPECT_EQ(bytesOf(mesh.verts),
              bytesOf(std::vector<Vec3f>{{0, 0, 0}, {3, 0, 0}, {0, 4, -20}, {0, 0, 0}, {3, 0, 0}, {0, 4, -20}}));
    EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(Triangles{{{0, 1, 2}, {0, 0, 0}, 0}, {{3, 4, 5}, {0, 0, 0}, 0}}));
    EXPECT_TRUE(mesh.used_materials.empty());
    EXPECT_EQ(mesh.num_materials_referenced, 1u);
}

TEST(StlLoader, ReadsTextWithAnyLineEndsAndBlanks) {
    for (const std::string end : {"\n", "\r", "\r\n", "\n\n \t"}) {
        std::string text = "solid\n \tfacet  normal\t0 0 1" + end + "outer\tloop" + end;
        for (int i = 0; i < 3; ++i)
            text += "vertex 1 2 3  " + end;
        Mesh mesh;
        loadStlBytes(text + "endloop" + end + "endfacet" + end + "endsolid", mesh);
        EXPECT_EQ(bytesOf(mesh.verts), bytesOf(std::vector<Vec3f>(3, {1, 2, 3})));
    }
}

TEST(StlLoader, KeepsTheTriangleOfAFacetThatBreaksOff) {
    Mesh mesh;
    EXPECT_THROW(loadStlBytes("solid\nfacet normal 0 0 1 outer loop vertex 1 2 3 x", mesh), Velmar::Exception);
    EXPECT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(mesh.verts.size(), 1u);
}

TEST(StlLoader, TakesABinaryFileThatBeginsWithSolidForText) {
    std::string bytes = binary(1, 1).bytes;
    bytes.replace(0, 5, "solid");
    EXPECT_EQ(stlMessage(bytes), "Invalid file, expected 'facet' or 'endsolid'");
}

TEST(StlLoader, SurvivesEveryCutOfAText) {
    const std::string text = "solid s\n" + facet + "endsolid s";
    for (std::size_t length = 0; length < text.size(); ++length) {
        Mesh mesh;
        try {
            loadStlBytes(text.substr(0, length), mesh);
        } catch (const Velmar::Exception&) {
        }
        EXPECT_LE(mesh.verts.size(), 3u);
    }
}

TEST(StlLoader, ReadsATextInPartsOfWholeFacets) {
    const std::string text = "solid facet\n" + facet + "\t" + facet + "\r\n" + facet + "endsolid s";
    Mesh whole;
    loadStlBytes(text, whole);
    ASSERT_EQ(whole.triangles.size(), 3u);
    for (std::size_t part_size = 1; part_size <= text.size(); ++part_size) {
        Mesh mesh;
        readSTL(text, mesh, 1.0f, part_size);
        EXPECT_EQ(bytesOf(mesh.verts), bytesOf(whole.verts));
        EXPECT_EQ(bytesOf(mesh.triangles), bytesOf(whole.triangles));
    }
}

TEST(StlLoader, PassesTheMappingsFailureOn) {
    const TempDir dir;
    const std::string path = dir.file("missing.stl");
    Mesh mesh;
    const std::string message = messageOf<Velmar::Exception>([&] { loadSTL(path, mesh, 1.0f); });
    EXPECT_TRUE(message.starts_with("Failed to open file '" + path + "': ")) << message;
}

/// What a file gives: the vertices, or the message of what was thrown.
std::string stlOutcome(const std::string& text) {
    Mesh mesh;
    const std::string message = messageOf<Velmar::Exception>([&] { loadStlBytes(text, mesh, 0.75f); });
    return message + bytesOf(mesh.verts) + bytesOf(mesh.triangles);
}

/// Facets are read on the fast path when they are of the usual form. Two blanks before "normal" change nothing of what
/// they mean, but keep the fast path from reading them.
std::string withoutFastPath(std::string text) {
    for (std::size_t at = 0; (at = text.find("facet normal", at)) != std::string::npos; at += 12)
        text.insert(at + 5, " ");
    return text;
}

TEST(StlLoader, ReadsFacetsOfTheUsualFormAsAnyOthers) {
    std::mt19937_64 random(5);
    const auto oneOf = [&](std::initializer_list<const char*> words) {
        return std::string(words.begin()[random() % words.size()]);
    };
    const auto number = [&] {
        const double value = (static_cast<double>(random() % 2000001) - 1000000) / 1000;
        char text[64];
        std::snprintf(text, sizeof text, oneOf({"%e", "%e", "%.6f", "%g", "%.9e"}).c_str(), value);
        return random() % 300 == 0 ? oneOf({"nan", "", "1.5f", "1e5", "1e-30", "-"}) : std::string(text);
    };
    const auto blank = [&] { return random() % 200 == 0 ? oneOf({"  ", "\t", ""}) : " "; };
    for (int file = 0; file < 400; ++file) {
        const std::string end = oneOf({"\n", "\n", "\r\n", "\r", "\n   ", " "});
        const auto triple = [&] { return blank() + number() + blank() + number() + blank() + number() + end; };
        std::string text = "solid x\n";
        for (std::uint64_t facets = random() % 12; facets > 0; --facets) {
            text += "facet normal" + triple() + "outer loop" + end;
            for (int corner = 0; corner < 3; ++corner)
                text += (random() % 500 == 0 ? "vertx" : "vertex") + triple();
            text += "endloop" + end + "endfacet" + end;
        }
        if (random() % 4 != 0) text += "endsolid x\n";
        // The last facets of a file are too near to its end for the fast path.
        if (random() % 2 == 0) text += std::string(200, ' ');
        ASSERT_EQ(stlOutcome(text), stlOutcome(withoutFastPath(text))) << text;
    }
}

TEST(StlLoader, RefusesAWordThatOnlyBeginsWithFacet) {
    const std::string plain = " normal 0.5 0.5 0.5\nouter loop\nvertex 1.5 2.5 3.5\nvertex 2.5 3.5 4.5\n"
                              "vertex 1.5 3.5 2.5\nendloop\nendfacet\nfacet";
    const std::string text = "solid x\nfacet" + plain + plain + plain + plain + 's' + plain + std::string(1000, ' ');
    EXPECT_EQ(stlMessage(text), "Invalid file, expected 'endsolid'");
}

TEST(StlLoader, ReadsLargeTexts) {
    // The lists grow many times.
    constexpr int facets = 40000;
    std::string text = "solid x\n";
    for (int i = 0; i < facets; ++i) {
        const std::string number = std::to_string(i);
        text += "facet normal 0 0 1\nouter loop\nvertex " + number + " 0 0\nvertex 0 " + number + " 0\nvertex 0 0 " +
                number + "\nendloop\nendfacet\n";
    }
    Mesh mesh;
    loadStlBytes(text + "endsolid x\n", mesh);
    ASSERT_EQ(mesh.verts.size(), std::size_t{3} * facets);
    ASSERT_EQ(mesh.triangles.size(), std::size_t{facets});
    for (std::uint32_t i = 0; i < facets; ++i) {
        ASSERT_EQ(mesh.verts[std::size_t{3} * i].x, static_cast<float>(i));
        ASSERT_EQ(mesh.verts[std::size_t{3} * i + 2].z, static_cast<float>(i));
        ASSERT_EQ(mesh.triangles[i].vertex_indices[2], 3 * i + 2);
    }
}

} // namespace

} // namespace StlLoaderTests
