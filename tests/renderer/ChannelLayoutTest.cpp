#include "renderer/ChannelLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace ChannelLayoutTests {

using namespace Velmar;
using testing::ElementsAre;

namespace {

/// A channel's name, type code, offset and components.
using Line = std::tuple<std::string, std::uint32_t, std::int32_t, std::int32_t>;

Line line(const ChannelDescriptor& channel) {
    return {toStdString(channel.name), static_cast<std::uint32_t>(channel.type), channel.offset, channel.components};
}

std::vector<Line> lines(const Vector<ChannelDescriptor>& channels) {
    std::vector<Line> result;
    for (const ChannelDescriptor& channel : channels)
        result.push_back(line(channel));
    return result;
}

Vector<String> names(std::initializer_list<const char*> texts) {
    Vector<String> result;
    for (const char* text : texts)
        result.push_back(text);
    return result;
}

class ChannelLayout : public testing::Test {
  protected:
    void layOut(bool gpu) { layOutChannels(block, layer_names, gpu, request); }

    Vector<String> layer_names = names({""});
    RenderChannelRequest request;
    ChannelBlock block{Reference<quorl::Allocator>()};
};

} // namespace

TEST(ChannelDescriptor, FreshOneIsNamelessAndAbsent) {
    const ChannelDescriptor channel{};
    EXPECT_EQ(line(channel), Line("", 0, -1, 0));
    EXPECT_FALSE(channel.isPresent());
}

TEST_F(ChannelLayout, OneLayerAloneTakesThreeFloats) {
    layOut(false);
    EXPECT_EQ(block.floats_per_pixel, 3u);
    EXPECT_THAT(lines(block.layers), ElementsAre(Line("", 0, 0, 3)));
    EXPECT_THAT(lines(block.all_channels), ElementsAre(Line("", 0, 0, 3)));
}

TEST_F(ChannelLayout, GpuLayersTakeFourFloats) {
    layer_names = names({"sun", "sky"});
    layOut(true);
    EXPECT_EQ(block.floats_per_pixel, 8u);
    EXPECT_THAT(lines(block.layers), ElementsAre(Line("sun", 0, 0, 4), Line("sky", 0, 4, 4)));
}

TEST_F(ChannelLayout, AlphaFollowsTheLayers) {
    request.alpha = true;
    layOut(false);
    EXPECT_EQ(block.floats_per_pixel, 4u);
    EXPECT_EQ(line(block.alpha), Line("alpha", 1, 3, 1));
}

TEST_F(ChannelLayout, ForegroundAloneAllocatesAlpha) {
    request.foreground = true;
    layOut(false);
    EXPECT_EQ(line(block.alpha), Line("alpha", 1, 3, 1));
}

TEST_F(ChannelLayout, GpuAlphaIsTheFourthComponentOfTheFirstLayer) {
    request.alpha = true;
    layOut(true);
    EXPECT_EQ(line(block.alpha), Line("alpha", 1, 3, 1));
    EXPECT_EQ(block.floats_per_pixel, 4u);
}

TEST_F(ChannelLayout, GpuAlphaLeavesTheNextChannelItsPlace) {
    request.alpha = true;
    request.depth = true;
    layOut(true);
    EXPECT_EQ(line(block.depth), Line("depth", 2, 4, 1));
    EXPECT_EQ(block.floats_per_pixel, 5u);
}

TEST_F(ChannelLayout, SpectralTakesTheRequestedComponents) {
    request.spectral = true;
    request.num_spectral_components = 16;
    layOut(false);
    EXPECT_EQ(line(block.spectral), Line("spectral", 6, 3, 16));
    EXPECT_EQ(block.floats_per_pixel, 19u);
}

TEST_F(ChannelLayout, ChannelThatWasNotRequestedIsAbsentAndUnlisted) {
    request.normals = true;
    layOut(false);
    EXPECT_EQ(line(block.position), Line("", 0, -1, 0));
    EXPECT_EQ(block.all_channels.size(), 2u);
}

TEST_F(ChannelLayout, EverythingTogetherHasOneOrderOfOffsetsAndAnotherInTheList) {
    layer_names = names({"a", "b"});
    request.alpha = request.spectral = request.normals = request.normals_pre_bump = request.position = true;
    request.material_id = request.object_id = request.depth = true;
    request.num_spectral_components = 5;
    request.lighting_passes.fill(true);
    request.material_masks = names({"m1", "m2"});
    request.object_masks = names({"o1"});
    layOut(false);
    EXPECT_THAT(lines(block.all_channels),
                ElementsAre(Line("a", 0, 0, 3), Line("b", 0, 3, 3), Line("alpha", 1, 6, 1), Line("normals", 2, 36, 3),
                            Line("normals_pre_bump", 2, 39, 3), Line("depth", 2, 51, 1), Line("position", 2, 42, 3),
                            Line("material_id", 2, 45, 3), Line("object_id", 2, 48, 3), Line("m1", 3, 52, 1),
                            Line("m2", 3, 53, 1), Line("o1", 4, 54, 1), Line("direct_lighting", 5, 7, 3),
                            Line("indirect_lighting", 5, 10, 3), Line("specular_reflection_lighting", 5, 13, 3),
                            Line("refraction_lighting", 5, 16, 3), Line("transmission_lighting", 5, 19, 3),
                            Line("emission_lighting", 5, 22, 3), Line("participating_media_lighting", 5, 25, 3),
                            Line("sss_lighting", 5, 28, 3), Line("spectral", 6, 31, 5)));
    EXPECT_EQ(block.floats_per_pixel, 55u);
}

TEST_F(ChannelLayout, GpuLightingPassesTakeFourFloats) {
    request.lighting_passes[1] = true;
    layOut(true);
    EXPECT_EQ(line(block.lighting_passes[0]), Line("", 0, -1, 0));
    EXPECT_EQ(line(block.lighting_passes[1]), Line("indirect_lighting", 5, 4, 4));
}

} // namespace ChannelLayoutTests
