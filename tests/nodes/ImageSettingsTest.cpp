#include "scene/nodes/ImageSettings.h"

#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"
#include "tests/support/Slots.h"

#include <gtest/gtest.h>

namespace ImageFiltersTests {

using namespace Velmar;
using TestSupport::callSlot;
using TestSupport::expectGolden;
using TestSupport::golden;
using TestSupport::MemoryOStream;
using TestSupport::textOf;

TEST(SplatFilterFastBox, WritesThreeLines) {
    const Reference<SplatFilter> filter(new SplatFilterFastBox);
    expectGolden(textOf([&](OStream& stream) { filter->writeXML(stream, 1); }), "\t<splat_filter>\n"
                                                                                "\t\t<fastbox/>\n"
                                                                                "\t</splat_filter>\n");
}

TEST(SplatFilterFastBox, ACloneIsAnotherOfTheSameKind) {
    const Reference<SplatFilter> filter(new SplatFilterFastBox);
    const Reference<SplatFilter> copy = filter->clone();
    EXPECT_NE(copy.getPointer(), filter.getPointer());
    EXPECT_EQ(copy->getType(), 0);
    EXPECT_EQ(copy->getRefCount(), 1);
}

TEST(DownsizeFilterMNCubic, WritesBlurBeforeRing) {
    const Reference<DownsizeFilterMNCubic> filter(new DownsizeFilterMNCubic);
    expectGolden(textOf([&](OStream& stream) { filter->writeXML(stream, 0); }), golden("image_filters/full"));
}

TEST(DownsizeFilterMNCubic, ACloneHasTheSameThreeValues) {
    const Reference<DownsizeFilterMNCubic> filter(new DownsizeFilterMNCubic);
    filter->ring = 0.25;
    filter->blur = 0.5;
    filter->radius = 3.0;
    const Reference<DownsizeFilter> copy = filter->clone();
    ASSERT_EQ(copy->getType(), 1);
    const auto& cubic = static_cast<const DownsizeFilterMNCubic&>(*copy);
    EXPECT_EQ(cubic.ring, 0.25);
    EXPECT_EQ(cubic.blur, 0.5);
    EXPECT_EQ(cubic.radius, 3.0);
}

TEST(ImageFilters, AreReachedThroughTheirSlots) {
    const Reference<SplatFilter> splat(new SplatFilterFastBox);
    EXPECT_EQ(callSlot<std::int32_t>(splat.getPointer(), 1), 0);
    MemoryOStream stream;
    callSlot<void>(splat.getPointer(), 2, static_cast<OStream*>(&stream), std::uint32_t{0});
    EXPECT_EQ(stream.text, "<splat_filter>\n\t<fastbox/>\n</splat_filter>\n");
    Reference<SplatFilter> splat_copy;
    EXPECT_EQ(callSlot<Reference<SplatFilter>*>(splat.getPointer(), 3, &splat_copy), &splat_copy);
    EXPECT_EQ(splat_copy->getRefCount(), 1);

    const Reference<DownsizeFilter> downsize(new DownsizeFilterMNCubic);
    EXPECT_EQ(callSlot<std::int32_t>(downsize.getPointer(), 1), 1);
    Reference<DownsizeFilter> downsize_copy;
    EXPECT_EQ(callSlot<Reference<DownsizeFilter>*>(downsize.getPointer(), 3, &downsize_copy), &downsize_copy);
    EXPECT_EQ(downsize_copy->getType(), 1);
}

} // namespace ImageFiltersTests

namespace WhitePointTests {

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::textOf;

TEST(WhitePoint, TheIndentationFollowsTheNumbersToo) {
    const Reference<WhitePoint> point(new WhitePoint(0.3, 0.4));
    expectGolden(textOf([&](OStream& stream) { point->writeXML(stream, 2); }), "\t\t<white_point>\n"
                                                                               "\t\t\t0.3 0.4\t\t\t\n"
                                                                               "\t\t</white_point>\n");
}

TEST(WhitePoint, NumbersHaveTheStreamsOwnForm) {
    const Reference<WhitePoint> point(new WhitePoint(1.0 / 3.0, 1e21));
    expectGolden(textOf([&](OStream& stream) { point->writeXML(stream, 0); }), "<white_point>\n"
                                                                               "\t0.333333 1e+21\t\n"
                                                                               "</white_point>\n");
}

} // namespace WhitePointTests
