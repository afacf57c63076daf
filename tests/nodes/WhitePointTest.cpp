#include "scene/nodes/WhitePoint.h"

#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"

#include <gtest/gtest.h>

using namespace Velmar;
using TestSupport::expectGolden;
using TestSupport::textOf;

TEST(WhitePoint, TheIndentationStandsAgainBehindTheNumbers) {
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
