#include "renderer/ImageBuffers.h"

#include "reference.h"
#include "velmarexceptions.h"

#include "scene/SceneNodeRoot.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeRenderSettings.h"
#include "tests/renderer/FakeLibrary.h"
#include "tests/support/Throws.h"
#include "utils/PlatformUtils.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ImageBuffersTests {

using namespace Velmar;
using FakeLibrary::at;
using testing::ElementsAre;
using TestSupport::messageOf;

namespace {

/// A node that names a light layer and masks.
class LayerNode : public Destroyable<LayerNode, PlainSceneNode> {
  public:
    LayerNode(std::uint32_t layer_, const char* material_mask_, const char* object_mask_)
        : Destroyable(NodeType::Metadata), layer(layer_), material_mask(material_mask_), object_mask(object_mask_) {}

    Reference<SceneNode>* cloneInto(Reference<SceneNode>* result) const override {
        return new (static_cast<void*>(result)) Reference<SceneNode>();
    }
    void writeXML(OStream&, std::uint32_t, const XMLWriteOptions&) const override {}
    std::uint32_t getMaxLayerIndex() const override {
        if (failure) failure();
        calls.push_back("layers");
        return layer;
    }
    void getMaterialMaskNames(MaskNameMap& map) const override {
        calls.push_back("material masks");
        map.insert(material_mask, static_cast<std::uint32_t>(map.size()));
    }
    void getModelMaskNames(MaskNameMap& map) const override {
        calls.push_back("object masks");
        map.insert(object_mask, static_cast<std::uint32_t>(map.size()));
    }

    std::function<void()> failure;
    mutable std::vector<std::string> calls;

  private:
    std::uint32_t layer;
    String material_mask;
    String object_mask;
};

/// Looks at the image store as the renderer library does: by offset.
class RenderBuffers : public testing::Test {
  protected:
    void SetUp() override {
        PlatformUtils::initClock();
        scene->addChildNode(Reference<SceneNode>(settings));
        settings->width.set(80);
        settings->height.set(60);
        settings->super_sample_factor.set(2);
    }

    const MasterBuffer* make() {
        buffer = new RenderBuffer(scene);
        return buffer->getMasterBuffer();
    }

    std::vector<std::string> channelNames() {
        std::vector<std::string> names;
        const MasterBuffer* const store = make();
        for (const ChannelDescriptor& channel : store->channels.all_channels)
            names.push_back(toStdString(channel.name));
        return names;
    }

    /// What comes of it when the construction runs into `failure`.
    std::string messageAfter(std::function<void()> failure) {
        auto* const node = new LayerNode(0, "m", "o");
        node->failure = std::move(failure);
        scene->addChildNode(Reference<SceneNode>(node));
        return messageOf<VelmarException>([&] { make(); });
    }

    SceneNodeRenderSettings* settings = new SceneNodeRenderSettings;
    Reference<SceneNodeRoot> scene{new SceneNodeRoot};
    Reference<RenderBuffer> buffer;
};

} // namespace

TEST_F(RenderBuffers, SceneWithoutSettingsIsRefused) {
    const Reference<SceneNodeRoot> empty(new SceneNodeRoot);
    EXPECT_EQ(messageOf<VelmarException>([&] { const Reference<RenderBuffer> made(new RenderBuffer(empty)); }),
              "no render settings node found.");
    EXPECT_EQ(empty->getRefCount(), 1);
}

TEST_F(RenderBuffers, ExhaustedMemoryIsToldAsSuch) {
    EXPECT_EQ(messageAfter([] { throw BadAlloc(); }),
              "Error while allocating image buffer: memory allocation failure.");
}

TEST_F(RenderBuffers, ExceptionBecomesAVelmarExceptionThatTellsWhere) {
    EXPECT_EQ(messageAfter([] { throw Exception("no room"); }), "Error while allocating image buffer: no room");
}

TEST_F(RenderBuffers, UsualMarginIsFourPixelsOfTheFinishedImage) {
    settings->width.set(800);
    settings->height.set(600);
    const MasterBuffer* const store = make();
    EXPECT_EQ(at<std::uint32_t>(store, 1520), 4u);
    EXPECT_EQ(at<std::uint32_t>(store, 1512), 1616u);
    EXPECT_EQ(at<std::uint32_t>(store, 1516), 1216u);
    EXPECT_EQ(at<std::uint32_t>(store, 1524), 2u);
}

TEST_F(RenderBuffers, ReceiverQuadHasNoMarginAndASpectralChannel) {
    settings->receiver_quad.set(true);
    settings->receiver_num_wavelength_buckets.set(16);
    const MasterBuffer* const store = make();
    EXPECT_EQ(at<std::uint32_t>(store, 1520), 0u);
    EXPECT_EQ(at<std::uint32_t>(store, 1512), 160u);
    EXPECT_EQ(store->channels.spectral.components, 16);
}

TEST_F(RenderBuffers, FarFieldReceiverHasNoMarginAndASpectralChannel) {
    settings->far_field_receiver.set(true);
    EXPECT_EQ(at<std::uint32_t>(make(), 1520), 0u);
    EXPECT_TRUE(buffer->getMasterBuffer()->channels.spectral.isPresent());
}

TEST_F(RenderBuffers, FirstReservedOptionTakesTheMarginOnlyWhenItIsSet) {
    settings->reserved_option_0.value = true;
    EXPECT_EQ(at<std::uint32_t>(make(), 1520), 4u);
    settings->reserved_option_0.has_value = true;
    EXPECT_EQ(at<std::uint32_t>(make(), 1520), 0u);
}

TEST_F(RenderBuffers, ValuesCountWhetherOrNotTheyAreSet) {
    settings->width.has_value = settings->height.has_value = settings->super_sample_factor.has_value = false;
    settings->normals_channel.value = true;
    EXPECT_THAT(channelNames(), ElementsAre("", "normals"));
    EXPECT_EQ(at<std::uint32_t>(buffer->getMasterBuffer(), 1504), 80u);
}

TEST_F(RenderBuffers, FreshSettingsGiveAnEmptyStore) {
    settings->width.value = settings->height.value = settings->super_sample_factor.value = 0;
    EXPECT_EQ(make()->channels.main_buffer.size(), 0u);
}

TEST_F(RenderBuffers, LayersAreThoseOfTheWholeTree) {
    scene->addChildNode(Reference<SceneNode>(new LayerNode(2, "m", "o")));
    EXPECT_EQ(make()->channels.layers.size(), 3u);
}

TEST_F(RenderBuffers, LayersAreNamedByTheirSettings) {
    scene->addChildNode(Reference<SceneNode>(new LayerNode(2, "m", "o")));
    settings->layer_settings.resize(5);
    settings->layer_settings[0] = new LayerSetting;
    settings->layer_settings[0]->name = "sun";
    settings->layer_settings[2] = new LayerSetting;
    settings->layer_settings[2]->name = "lamps";
    EXPECT_THAT(channelNames(), ElementsAre("sun", "", "lamps"));
}

TEST_F(RenderBuffers, RegionsAreCopiedInAnotherOrderOfWords) {
    settings->render_regions.push_back({1, 2, 3, 4});
    const MasterBuffer* const store = make();
    ASSERT_EQ(store->regions.size(), 1u);
    EXPECT_EQ(store->regions[0], (RenderChannelRequest::RenderRegion{1, 3, 2, 4}));
}

TEST_F(RenderBuffers, EachChannelOptionAsksForItsChannel) {
    settings->render_foreground_alpha.set(true);
    settings->normals_channel.set(true);
    settings->normals_pre_bump_channel.set(true);
    settings->position_channel.set(true);
    settings->depth_channel.set(true);
    settings->material_id_channel.set(true);
    settings->object_id_channel.set(true);
    settings->direct_lighting_channel.set(true);
    settings->indirect_lighting_channel.set(true);
    settings->specular_reflection_lighting_channel.set(true);
    settings->refraction_lighting_channel.set(true);
    settings->transmission_lighting_channel.set(true);
    settings->emission_lighting_channel.set(true);
    settings->participating_media_lighting_channel.set(true);
    settings->sss_lighting_channel.set(true);
    EXPECT_THAT(channelNames(),
                ElementsAre("", "alpha", "normals", "normals_pre_bump", "depth", "position", "material_id", "object_id",
                            "direct_lighting", "indirect_lighting", "specular_reflection_lighting",
                            "refraction_lighting", "transmission_lighting", "emission_lighting",
                            "participating_media_lighting", "sss_lighting"));
}

using ChannelOption = Optional<bool> SceneNodeRenderSettings::*;

class SingleChannel : public RenderBuffers,
                      public testing::WithParamInterface<std::pair<ChannelOption, const char*>> {};

TEST_P(SingleChannel, ComesFromItsOwnOptionAlone) {
    (settings->*GetParam().first).set(true);
    EXPECT_THAT(channelNames(), ElementsAre("", GetParam().second));
}

using Settings = SceneNodeRenderSettings;
INSTANTIATE_TEST_SUITE_P(
    RenderBuffers, SingleChannel,
    testing::Values(std::pair{&Settings::render_foreground_alpha, "alpha"},
                    std::pair{&Settings::foreground_channel, "alpha"}, std::pair{&Settings::normals_channel, "normals"},
                    std::pair{&Settings::normals_pre_bump_channel, "normals_pre_bump"},
                    std::pair{&Settings::position_channel, "position"}, std::pair{&Settings::depth_channel, "depth"},
                    std::pair{&Settings::material_id_channel, "material_id"},
                    std::pair{&Settings::object_id_channel, "object_id"},
                    std::pair{&Settings::direct_lighting_channel, "direct_lighting"},
                    std::pair{&Settings::indirect_lighting_channel, "indirect_lighting"},
                    std::pair{&Settings::specular_reflection_lighting_channel, "specular_reflection_lighting"},
                    std::pair{&Settings::refraction_lighting_channel, "refraction_lighting"},
                    std::pair{&Settings::transmission_lighting_channel, "transmission_lighting"},
                    std::pair{&Settings::emission_lighting_channel, "emission_lighting"},
                    std::pair{&Settings::participating_media_lighting_channel, "participating_media_lighting"},
                    std::pair{&Settings::sss_lighting_channel, "sss_lighting"}),
    [](const auto& case_info) { return std::to_string(case_info.index); });

TEST_F(RenderBuffers, MasksAreChannelsOnlyWhenAskedFor) {
    scene->addChildNode(Reference<SceneNode>(new LayerNode(0, "m2", "o1")));
    scene->addChildNode(Reference<SceneNode>(new LayerNode(0, "m1", "o2")));
    EXPECT_THAT(channelNames(), ElementsAre(""));
    settings->material_masks.set(true);
    EXPECT_THAT(channelNames(), ElementsAre("", "m1", "m2"));
    settings->material_masks.set(false);
    settings->object_masks.set(true);
    EXPECT_THAT(channelNames(), ElementsAre("", "o1", "o2"));
}

TEST_F(RenderBuffers, NodesAreAskedForLayersAndThenMasksWhateverTheOptions) {
    auto* const node = new LayerNode(0, "m", "o");
    scene->addChildNode(Reference<SceneNode>(node));
    make();
    EXPECT_THAT(node->calls, ElementsAre("layers", "material masks", "object masks"));
    node->calls.clear();
    settings->material_masks.set(true);
    settings->object_masks.set(true);
    make();
    EXPECT_THAT(node->calls, ElementsAre("layers", "material masks", "object masks"));
}

TEST_F(RenderBuffers, SecondReservedOptionMakesAGpuRenderProgressive) {
    settings->gpu.set(true);
    EXPECT_EQ(at<std::uint32_t>(make(), 1528), 8u);
    settings->reserved_option_1.value = false;
    EXPECT_EQ(at<std::uint32_t>(make(), 1528), 1u);
}

TEST_F(RenderBuffers, NoCountOfTheSceneIsLeft) {
    make();
    EXPECT_EQ(scene->getRefCount(), 1);
}

// That arrays are freed, and once, is what the sanitizers' builds of these tests see.

namespace {

void put(void* object, std::size_t offset, const void* pointer) {
    std::memcpy(static_cast<char*>(object) + offset, &pointer, sizeof pointer);
}

} // namespace

TEST(FloatBuffer, HasALockAndAnEmptyDescription) {
    const Reference<FloatBuffer> buffer(new FloatBuffer);
    EXPECT_NE(at<const void*>(buffer.getPointer(), 16), nullptr);
    for (const std::size_t offset : {24, 32, 40, 48, 56})
        EXPECT_EQ(at<std::uint64_t>(buffer.getPointer(), offset), 0u) << offset;
}

TEST(FloatBuffer, FreesTheArrayThatTheLibraryLeftInIt) {
    const Reference<FloatBuffer> buffer(new FloatBuffer);
    put(buffer.getPointer(), 40, sdkMalloc(100));
    EXPECT_EQ(buffer->getRefCount(), 1);
}

TEST(UInt8Buffer, HasAnEmptyDescriptionOfThreeComponentsAndALock) {
    const Reference<UInt8Buffer> buffer(new UInt8Buffer);
    const void* const description = at<const void*>(buffer.getPointer(), 16);
    for (const std::size_t offset : {0, 8, 16, 24, 32})
        EXPECT_EQ(at<std::uint64_t>(description, offset), 0u) << offset;
    EXPECT_EQ(at<std::uint64_t>(description, 40), 3u);
    EXPECT_NE(at<const void*>(buffer.getPointer(), 24), nullptr);
}

TEST(UInt8Buffer, FreesTheArrayThatTheLibraryLeftInIt) {
    const Reference<UInt8Buffer> buffer(new UInt8Buffer);
    put(at<void*>(buffer.getPointer(), 16), 0, sdkAlignedMalloc(100, 16));
    EXPECT_EQ(buffer->getRefCount(), 1);
}

} // namespace ImageBuffersTests
