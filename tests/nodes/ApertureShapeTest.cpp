#include "scene/nodes/SceneNodeCamera.h"
#include "tests/support/Golden.h"
#include "tests/support/MemoryOStream.h"
#include "tests/support/Slots.h"

#include <gtest/gtest.h>

namespace ApertureShapeTests {

using namespace Velmar;
using TestSupport::callSlot;
using TestSupport::expectGolden;
using TestSupport::textOf;

TEST(ApertureCircular, WritesAnEmptyElementInItsOwn) {
    const Reference<ApertureShape> shape(new ApertureCircular);
    expectGolden(textOf([&](OStream& stream) { shape->writeXML(stream, 1, {}); }), "\t<aperture_shape>\n"
                                                                                   "\t\t<circular/>\n"
                                                                                   "\t</aperture_shape>\n");
}

TEST(ApertureCircular, IsReachedThroughItsSlots) {
    const Reference<ApertureShape> shape(new ApertureCircular);
    void* const object = shape.getPointer();
    EXPECT_EQ(callSlot<std::int32_t>(object, 1), 0);

    Reference<ApertureShape> copy;
    EXPECT_EQ(callSlot<Reference<ApertureShape>*>(object, 3, &copy), &copy);
    EXPECT_EQ(copy->getType(), 0);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_NE(copy, shape);

    callSlot<void>(object, 4);
    EXPECT_EQ(shape->getRefCount(), 1);
}

} // namespace ApertureShapeTests
