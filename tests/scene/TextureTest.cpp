#include "scene/Texture.h"

#include "tests/support/Golden.h"
#include "tests/support/MaterialStandIns.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::TexCoordStandIn;
using TestSupport::textOf;

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
    texture.tex_coord_generation = new TexCoordStandIn({2, 0, 0, 1, 0, 0});
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
    texture.tex_coord_generation = new TexCoordStandIn({1, 0, 0, 1, 0, 0});
    EXPECT_EQ(textureElement(texture), textureElement(Texture()));
}

TEST(Texture, AnyValueMakesTextureCoordinatesCount) {
    for (std::size_t i = 0; i < 6; ++i) {
        std::array<double, 6> values = {1, 0, 0, 1, 0, 0};
        values[i] = 0.5;
        const Reference<TexCoordStandIn> generation(new TexCoordStandIn(values));
        EXPECT_FALSE(generation->isNeutral()) << i;
    }
}

TEST(Texture, OnlyTheAffineKindCanBeNeutral) {
    const Reference<TexCoordStandIn> other_kind(new TexCoordStandIn({1, 0, 0, 1, 0, 0}, 1));
    EXPECT_FALSE(other_kind->isNeutral());
}

} // namespace
