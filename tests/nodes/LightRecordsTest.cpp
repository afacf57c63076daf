#include "scene/nodes/LightRecords.h"

#include "tests/nodes/ModelSupport.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>
#include <string>

namespace EmissionScaleTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

std::string scaleElement(const EmissionScale& scale) {
    return textOf([&](OStream& stream) { scale.writeXML(stream, 1); });
}

TEST(EmissionScale, WritesMeasureValueAndMaterial) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->measure = EmissionScale::luminous_emittance;
    scale->value = 1000;
    scale->material_uid = 4;
    expectGolden(scaleElement(*scale), indented(golden("model/emission_scale")));
}

TEST(EmissionScale, EachMeasureHasItsName) {
    const Reference<EmissionScale> scale(new EmissionScale);
    const char* const names[] = {"luminous_flux", "luminous_intensity", "luminance", "luminous_emittance"};
    for (std::uint32_t measure = 0; measure < 4; ++measure) {
        scale->measure = measure;
        const std::string line = std::string("\t\t<measure>") + names[measure] + "</measure>\n";
        EXPECT_NE(scaleElement(*scale).find(line), std::string::npos);
    }
}

TEST(EmissionScale, Measure4WritesNothing) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->measure = EmissionScale::none;
    EXPECT_EQ(scaleElement(*scale), "");
}

TEST(EmissionScale, UnknownMeasureHasAnEmptyName) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->measure = 5;
    EXPECT_NE(scaleElement(*scale).find("<measure></measure>"), std::string::npos);
}

TEST(EmissionScale, MissingMaterialIsWrittenAsTheInvalidUID) {
    EXPECT_NE(
        scaleElement(*Reference<EmissionScale>(new EmissionScale)).find("<material_uid>4294967295</material_uid>"),
        std::string::npos);
}

TEST(EmissionScale, BoundMaterialGoesBeforeTheUID) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->material = materialNode(8);
    scale->material_uid = 4;
    EXPECT_NE(scaleElement(*scale).find("<material_uid>8</material_uid>"), std::string::npos);
}

TEST(EmissionScale, CopyOfABoundRecordSharesTheMaterialAndForgetsNameAndUID) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->measure = EmissionScale::luminance;
    scale->value = 12;
    scale->material_name = "lamp";
    scale->material = materialNode(8);
    scale->material_uid = 4;
    const Reference<EmissionScale> copy = scale->copy();
    EXPECT_EQ(copy->measure, 2u);
    EXPECT_EQ(copy->value, 12);
    EXPECT_EQ(copy->material_name, "");
    EXPECT_EQ(copy->material.getPointer(), scale->material.getPointer());
    EXPECT_EQ(copy->material_uid, invalid_uid);
    EXPECT_EQ(scaleElement(*copy), scaleElement(*scale));
}

TEST(EmissionScale, CopyOfAnUnboundRecordKeepsTheUID) {
    const Reference<EmissionScale> scale(new EmissionScale);
    scale->material_uid = 4;
    const Reference<EmissionScale> copy = scale->copy();
    EXPECT_EQ(copy->material.getPointer(), nullptr);
    EXPECT_EQ(copy->material_uid, 4u);
}

} // namespace

} // namespace EmissionScaleTests

namespace IESProfileTests {

using namespace Velmar;
using namespace TestSupport;

namespace {

std::string profileElement(const IESProfile& profile, const XMLWriteOptions& options = {}) {
    return textOf([&](OStream& stream) { profile.writeXML(stream, 1, options); });
}

TEST(IESProfile, WritesMaterialAndPath) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->path = "lamp.ies";
    profile->material_uid = 3;
    XMLWriteOptions options;
    options.scene_dir = "D:\\work";
    expectGolden(profileElement(*profile, options), indented(golden("model/ies_profile")));
}

TEST(IESProfile, MissingMaterialIsWrittenAsTheInvalidUID) {
    EXPECT_NE(profileElement(*Reference<IESProfile>(new IESProfile)).find("<material_uid>4294967295</material_uid>"),
              std::string::npos);
}

TEST(IESProfile, CopyOfABoundRecordSharesTheMaterialAndForgetsNameAndUID) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->material_name = "lamp";
    profile->path = "lamp.ies";
    profile->material = materialNode(8);
    profile->material_uid = 4;
    const Reference<IESProfile> copy = profile->copy();
    EXPECT_EQ(copy->material_name, "");
    EXPECT_EQ(copy->path, "lamp.ies");
    EXPECT_EQ(copy->material.getPointer(), profile->material.getPointer());
    EXPECT_EQ(copy->material_uid, invalid_uid);
    EXPECT_EQ(profileElement(*copy), profileElement(*profile));
}

TEST(IESProfile, CopyOfAnUnboundRecordKeepsTheUID) {
    const Reference<IESProfile> profile(new IESProfile);
    profile->material_uid = 4;
    const Reference<IESProfile> copy = profile->copy();
    EXPECT_EQ(copy->material.getPointer(), nullptr);
    EXPECT_EQ(copy->material_uid, 4u);
}

} // namespace

} // namespace IESProfileTests
