#include "velmarexceptions.h"

#include "mesh/MeshReaders.h"
#include "tests/support/TextFile.h"

#include <array>
#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace MtlLoaderTests {

using namespace Velmar;
using TestSupport::TextFile;

namespace {

MTLLibrary loadLibrary(std::string_view text) {
    const TextFile file("materials.mtl", text);
    MTLLibrary library;
    loadMTL(file.path(), library);
    return library;
}

std::array<float, 3> asArray(const Vec3f& v) {
    return {v.x, v.y, v.z};
}

using Colour = std::array<float, 3>;

TEST(MtlLoader, GivesANewMaterialTheDefaults) {
    const MTLLibrary library = loadLibrary("newmtl steel");
    ASSERT_EQ(library.materials.size(), 1u);
    const MTLMaterial& material = library.materials[0];
    EXPECT_EQ(material.name, "steel");
    EXPECT_EQ(asArray(material.Kd), (Colour{0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(material.Ks.x), 0x3EAAAA3Bu);
    EXPECT_EQ(asArray(material.Ks), (Colour{0.33333f, 0.33333f, 0.33333f}));
    EXPECT_EQ(asArray(material.Tf), (Colour{1, 1, 1}));
    EXPECT_EQ(material.Ns, 500.0f);
    EXPECT_EQ(material.Ni, 1.5f);
    EXPECT_EQ(material.d, 1.0f);
    EXPECT_EQ(material.map_Kd, "");
    EXPECT_EQ(asArray(material.unset_black), (Colour{0, 0, 0}));
    EXPECT_EQ(asArray(material.unset_white), (Colour{1, 1, 1}));
}

TEST(MtlLoader, ReadsAllKeywordsIntoTheLastMaterial) {
    const MTLLibrary library =
        loadLibrary("# c\nnewmtl first\nKd 1 2 3\r\nKs 4 5 6\rTf 7 8 9\n\tNs 10\nNi 1.25 x\nd 0.5\n"
                    "map_Kd textures\\wood.png and more\nnewmtl second\nKd .1 .2 .3\n");
    ASSERT_EQ(library.materials.size(), 2u);
    const MTLMaterial& first = library.materials[0];
    EXPECT_EQ(asArray(first.Kd), (Colour{1, 2, 3}));
    EXPECT_EQ(asArray(first.Ks), (Colour{4, 5, 6}));
    EXPECT_EQ(asArray(first.Tf), (Colour{7, 8, 9}));
    EXPECT_EQ(first.Ns, 10.0f);
    EXPECT_EQ(first.Ni, 1.25f);
    EXPECT_EQ(first.d, 0.5f);
    EXPECT_EQ(first.map_Kd, "textures\\wood.png");
    EXPECT_EQ(library.materials[1].name, "second");
    EXPECT_EQ(asArray(library.materials[1].Kd), (Colour{0.1f, 0.2f, 0.3f}));
}

TEST(MtlLoader, ReplacesTheWholeLibrary) {
    const TextFile file("new.mtl", "newmtl n");
    MTLLibrary library;
    library.path = "old.mtl";
    library.materials.resize(3);
    loadMTL(file.path(), library);
    EXPECT_EQ(library.path, file.path());
    ASSERT_EQ(library.materials.size(), 1u);
    EXPECT_EQ(library.materials[0].name, "n");
}

TEST(MtlLoader, IgnoresOtherKeywordsAndLines) {
    const MTLLibrary library = loadLibrary("Ka 1 1 1\nillum 2\n_x\n123\nkd 1\n-\n#newmtl a\n\nmap_Bump b\nKd2 1\n");
    EXPECT_TRUE(library.materials.empty());
}

TEST(MtlLoader, TakesANameUpToTheNextBlankOrNone) {
    const MTLLibrary library = loadLibrary("newmtl a b\nnewmtl\nnewmtl   c");
    ASSERT_EQ(library.materials.size(), 3u);
    EXPECT_EQ(library.materials[0].name, "a");
    EXPECT_EQ(library.materials[1].name, "");
    EXPECT_EQ(library.materials[2].name, "c");
}

TEST(MtlLoader, ReadsAnEmptyFile) {
    EXPECT_TRUE(loadLibrary("").materials.empty());
}

TEST(MtlLoader, ContinuesLinesAfterABackslash) {
    const MTLLibrary library = loadLibrary("newmtl a\nKd 1 \\\n 2 \\\r\n 3\n");
    EXPECT_EQ(asArray(library.materials.at(0).Kd), (Colour{1, 2, 3}));
}

} // namespace

} // namespace MtlLoaderTests
