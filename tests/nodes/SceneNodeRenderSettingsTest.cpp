#include "scene/nodes/SceneNodeRenderSettings.h"

#include "scene/XMLPrimitives.h"
#include "scene/nodes/ImageSettings.h"
#include "scene/nodes/SceneNodeCurve1D.h"
#include "tests/support/Documents.h"
#include "tests/support/Golden.h"
#include "tests/support/Slots.h"

#include <gtest/gtest.h>
#include <limits>

namespace SceneNodeRenderSettingsTests {

using namespace Velmar;
using TestSupport::elementOf;
using TestSupport::expectGolden;
using TestSupport::golden;

namespace {

using Settings = SceneNodeRenderSettings;

Reference<Settings> settings() {
    Reference<Settings> node(new Settings);
    node->setUID(5);
    return node;
}

std::string documentOf(std::string_view content) {
    return "<renderer_settings>\n\t<uid>5</uid>\n\t<name>Render Settings</name>\n" + std::string(content) +
           "</renderer_settings>\n";
}

Settings& cloneOf(const Settings& node, Reference<SceneNode>& holder) {
    holder = node.clone();
    return static_cast<Settings&>(*holder);
}

/// A spectrum that writes its value.
class TestSpectrum : public Destroyable<TestSpectrum, Spectrum> {
  public:
    void writeXML(OStream& stream, std::uint32_t depth) const override {
        writeDoubleElement(stream, depth, "test", value);
    }
    std::uint32_t getType() const override { return 99; }
    Reference<Spectrum>* cloneInto(Reference<Spectrum>* result) const override {
        auto* const copy = new TestSpectrum;
        copy->value = value;
        return new (static_cast<void*>(result)) Reference<Spectrum>(copy);
    }
    void updateHash(XXH64_state_t*) const override {}

    double value = 1.0;
};

Reference<LayerSetting> layer(const char* name, const Reference<Spectrum>& scale) {
    Reference<LayerSetting> result(new LayerSetting);
    result->name = name;
    result->layer_scale = scale;
    result->enabled = true;
    return result;
}

} // namespace

TEST(SceneNodeRenderSettings, ANewNodeWritesItsIdentityOnly) {
    expectGolden(elementOf(*settings()), documentOf(""));
}

TEST(SceneNodeRenderSettings, ANewNodesOptionsAreUnsetAndZeroButForTheReservedOne) {
    const auto node = settings();
    EXPECT_EQ(node->bidirectional, Optional<bool>());
    EXPECT_EQ(node->width, Optional<std::int32_t>());
    EXPECT_EQ(node->halt_time, Optional<double>());
    EXPECT_EQ(node->reserved_option_0, Optional<bool>());
    EXPECT_EQ(node->reserved_option_1, (Optional<bool>{true, true}));
}

TEST(SceneNodeRenderSettings, DefaultsWriteEveryElementInTheOrderOfTheDocument) {
    const Reference<Settings> node = Settings::getDefaults();
    node->setUID(5);
    expectGolden(elementOf(*node), golden("render_settings/defaults"));
}

TEST(SceneNodeRenderSettings, DefaultsHoldAThirdInFullPrecision) {
    const Reference<Settings> node = Settings::getDefaults();
    EXPECT_EQ(node->white_point->x, 0.3333333333333333);
    EXPECT_EQ(node->white_point->y, 0.3333333333333333);
}

TEST(SceneNodeRenderSettings, DefaultsLeaveTheReservedOptionUnset) {
    EXPECT_EQ(Settings::getDefaults()->reserved_option_0, Optional<bool>());
}

TEST(SceneNodeRenderSettings, OnlyWhatIsSetIsWritten) {
    const auto node = settings();
    node->depth_channel.set(false);
    node->allow_high_quality_bvh.set(true);
    node->gpu.set(false);
    node->height.value = 600;
    expectGolden(elementOf(*node), documentOf("\t<gpu>false</gpu>\n"
                                              "\t<allow_high_quality_bvh>true</allow_high_quality_bvh>\n"
                                              "\t<depth_channel>false</depth_channel>\n"));
}

TEST(SceneNodeRenderSettings, TheFlagDecidesAndNotTheValue) {
    const auto node = settings();
    node->halt_time.set(-1.0);
    expectGolden(elementOf(*node), documentOf("\t<halt_time>-1</halt_time>\n"));
}

TEST(SceneNodeRenderSettings, NegativeIntegersAreWrittenAsTheyStand) {
    const auto node = settings();
    node->max_depth.set(-1);
    node->width.set(std::numeric_limits<std::int32_t>::min());
    expectGolden(elementOf(*node), documentOf("\t<max_depth>-1</max_depth>\n"
                                              "\t<width>-2147483648</width>\n"));
}

TEST(SceneNodeRenderSettings, TheMostNegativeDepthIsWritten) {
    const auto node = settings();
    node->max_depth.set(std::numeric_limits<std::int32_t>::min());
    expectGolden(elementOf(*node), documentOf("\t<max_depth>-2147483648</max_depth>\n"));
}

TEST(SceneNodeRenderSettings, VectorsStandOnOneLine) {
    const auto node = settings();
    node->receiver_quad_i.set({0.5, -0.0, 1e21});
    expectGolden(elementOf(*node), documentOf("\t<receiver_quad_i>0.5 0 1e21</receiver_quad_i>\n"));
}

TEST(SceneNodeRenderSettings, ARegionsElementsHaveAnotherOrderThanItsFields) {
    const auto node = settings();
    node->render_regions.push_back({.x1 = 1, .x2 = 2, .y1 = 3, .y2 = 4});
    expectGolden(elementOf(*node), documentOf("\t<render_region>\n"
                                              "\t\t<x1>1</x1>\n"
                                              "\t\t<y1>3</y1>\n"
                                              "\t\t<x2>2</x2>\n"
                                              "\t\t<y2>4</y2>\n"
                                              "\t</render_region>\n"));
}

TEST(SceneNodeRenderSettings, LayersStandBetweenWhitePointAndCurves) {
    const auto node = settings();
    node->white_point = new WhitePoint(0.25, 0.5);
    node->colour_curves = makeIdentityColourCurves();
    for (const auto& curve : {node->colour_curves->overall, node->colour_curves->red, node->colour_curves->green,
                              node->colour_curves->blue}) {
        curve->knots.clear();
        curve->values.clear();
    }
    node->layer_settings.push_back(layer("sun", new TestSpectrum));
    node->layer_settings.push_back(layer("", nullptr));
    const std::string empty_lists = "\t\t\t<knots></knots>\n\t\t\t<values></values>\n\t\t</curve1d>\n";
    expectGolden(elementOf(*node),
                 documentOf("\t<white_point>\n"
                            "\t\t0.25 0.5\t\t\n"
                            "\t</white_point>\n"
                            "\t<layer_setting>\n"
                            "\t\t<name>sun</name>\n"
                            "\t\t<enabled>true</enabled>\n"
                            "\t\t<layer_scale>\n"
                            "\t\t\t<test>1</test>\n"
                            "\t\t</layer_scale>\n"
                            "\t</layer_setting>\n"
                            "\t<layer_setting>\n"
                            "\t\t<name></name>\n"
                            "\t\t<enabled>true</enabled>\n"
                            "\t\t<layer_scale>\n"
                            "\t\t</layer_scale>\n"
                            "\t</layer_setting>\n"
                            "\t<colour_curves>\n"
                            "\t\t<curve1d>\n\t\t\t<name>overall</name>\n" +
                            empty_lists + "\t\t<curve1d>\n\t\t\t<name>red</name>\n" + empty_lists +
                            "\t\t<curve1d>\n\t\t\t<name>green</name>\n" + empty_lists +
                            "\t\t<curve1d>\n\t\t\t<name>blue</name>\n" + empty_lists + "\t</colour_curves>\n"));
}

TEST(SceneNodeRenderSettings, ACloneWritesTheSameDocument) {
    const Reference<Settings> node = Settings::getDefaults();
    node->setUID(5);
    node->setName("Final");
    node->render_regions.push_back({.x1 = 1, .x2 = 2, .y1 = 3, .y2 = 4});
    node->layer_settings.push_back(layer("sun", new TestSpectrum));
    Reference<SceneNode> holder;
    EXPECT_EQ(elementOf(cloneOf(*node, holder)), elementOf(*node));
}

TEST(SceneNodeRenderSettings, AClonesPartsAreItsOwn) {
    const Reference<Settings> node = Settings::getDefaults();
    node->layer_settings.push_back(layer("sun", new TestSpectrum));
    Reference<SceneNode> holder;
    const Settings& copy = cloneOf(*node, holder);
    EXPECT_NE(copy.splat_filter, node->splat_filter);
    EXPECT_NE(copy.downsize_filter, node->downsize_filter);
    EXPECT_NE(copy.white_point, node->white_point);
    EXPECT_NE(copy.colour_curves, node->colour_curves);
    EXPECT_NE(copy.colour_curves->green, node->colour_curves->green);
    ASSERT_EQ(copy.layer_settings.size(), 1u);
    EXPECT_NE(copy.layer_settings[0], node->layer_settings[0]);
    EXPECT_NE(copy.layer_settings[0]->layer_scale, node->layer_settings[0]->layer_scale);
}

TEST(SceneNodeRenderSettings, ACloneKeepsWhatIsAbsentAbsent) {
    const auto node = settings();
    node->layer_settings.push_back(layer("sun", nullptr));
    Reference<SceneNode> holder;
    const Settings& copy = cloneOf(*node, holder);
    EXPECT_FALSE(copy.splat_filter);
    EXPECT_FALSE(copy.downsize_filter);
    EXPECT_FALSE(copy.white_point);
    EXPECT_FALSE(copy.colour_curves);
    EXPECT_FALSE(copy.layer_settings[0]->layer_scale);
}

TEST(SceneNodeRenderSettings, ReservedOptionsAreNotCloned) {
    const auto node = settings();
    node->reserved_option_0.set(true);
    node->reserved_option_1 = {};
    Reference<SceneNode> holder;
    const Settings& copy = cloneOf(*node, holder);
    EXPECT_EQ(copy.reserved_option_0, Optional<bool>());
    EXPECT_EQ(copy.reserved_option_1, (Optional<bool>{true, true}));
}

TEST(SceneNodeRenderSettings, SettingsTakeNoPartInEquality) {
    const auto node = settings();
    const auto other = settings();
    other->width.set(800);
    EXPECT_TRUE(node->isEqual(other.getPointer()));
    other->setName("Other");
    EXPECT_FALSE(node->isEqual(other.getPointer()));
}

TEST(SceneNodeRenderSettings, OnlyOffsetUIDsConcernsIt) {
    const auto node = settings();
    for (std::uint32_t kind = 0; kind <= 5; ++kind) {
        TraversalState state(static_cast<TraversalKind>(kind), "", "");
        state.uid_offset = 10;
        node->traverse(state);
        EXPECT_EQ(node->getUID(), kind < 5 ? 5u : 15u);
        EXPECT_TRUE(state.dependencies.empty());
    }
}

TEST(SceneNodeRenderSettings, NamesNoLayerAndNoOtherNode) {
    const auto node = settings();
    EXPECT_EQ(node->getMaxLayerIndex(), 0u);
    EXPECT_TRUE(node->getDependencyUIDs().empty());
    EXPECT_FALSE(node->refersToNode(node.getPointer()));
}

TEST(LayerSetting, IsClonedThroughSlotOne) {
    const auto original = layer("sun", new TestSpectrum);
    Reference<LayerSetting> copy;
    EXPECT_EQ(TestSupport::callSlot<Reference<LayerSetting>*>(original.getPointer(), 1, &copy), &copy);
    EXPECT_EQ(copy->name, "sun");
    EXPECT_TRUE(copy->enabled);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_NE(copy->layer_scale, original->layer_scale);
}

} // namespace SceneNodeRenderSettingsTests
