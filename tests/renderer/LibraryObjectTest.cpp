#include "renderer/LibraryObject.h"

#include "tests/renderer/FakeLibrary.h"

#include <gtest/gtest.h>

using namespace FakeLibrary;

namespace {

std::int32_t addAll(Velmar::LibraryObject* object, std::int32_t a, double b, const std::int32_t* c, float d,
                    std::uint64_t e, double f, std::uint8_t g) {
    return at<std::int32_t>(object, 24) + a + static_cast<std::int32_t>(b) + *c + static_cast<std::int32_t>(d) +
           static_cast<std::int32_t>(e) + static_cast<std::int32_t>(f) + g;
}

} // namespace

TEST(CallSlot, CallsTheOperationAtThePositionWithTheObjectFirst) {
    Velmar::LibraryObject::Operation operations[slot_count]{};
    operations[7] = operation(addAll);
    Object object;
    object.operations = operations;
    object.word_24 = 1000000;
    const std::int32_t behind_pointer = 100;
    const auto result =
        Velmar::callSlot<std::int32_t>(object.asLibraryObject(), 7, std::int32_t{1}, 10.0, &behind_pointer, 1000.0f,
                                       std::uint64_t{10000}, 100000.0, std::uint8_t{5});
    EXPECT_EQ(result, 1111116);
}
