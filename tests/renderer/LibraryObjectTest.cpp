#include "renderer/LibraryObject.h"

#include "tests/renderer/FakeLibrary.h"

#include <gtest/gtest.h>

namespace LibraryObjectTests {

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
    operations[11] = operation(addAll);
    Object object;
    object.operations = operations;
    object.word_24 = 1000000;
    const std::int32_t pointed_at = 100;
    const auto result =
        Velmar::callSlot<std::int32_t>(object.asLibraryObject(), Velmar::LibrarySlot::start, std::int32_t{1}, 10.0,
                                       &pointed_at, 1000.0f, std::uint64_t{10000}, 100000.0, std::uint8_t{5});
    EXPECT_EQ(result, 1111116);
}

} // namespace LibraryObjectTests

namespace InterfaceRefTests {

using namespace FakeLibrary;
using Velmar::InterfaceRef;

namespace {

class InterfaceRefs : public testing::Test {
  protected:
    void SetUp() override {
        events.clear();
        object.destroy = destroyObject;
        other.destroy = [](Velmar::LibraryObject*) { events.push_back("other destroyed"); };
    }

    Object object;
    Object other;
};

using Events = std::vector<std::string>;

} // namespace

TEST_F(InterfaceRefs, CountsWhileItHolds) {
    {
        const InterfaceRef first(object.asLibraryObject());
        EXPECT_EQ(object.refcount, 1);
        const InterfaceRef second(first);
        EXPECT_EQ(object.refcount, 2);
        EXPECT_EQ(second.getPointer(), object.asLibraryObject());
    }
    EXPECT_EQ(object.refcount, 0);
}

TEST_F(InterfaceRefs, LastHolderDestroysTheObjectByItsOwnFunction) {
    {
        const InterfaceRef first(object.asLibraryObject());
        const InterfaceRef second(first);
    }
    EXPECT_EQ(events, Events{"object destroyed"});
}

TEST_F(InterfaceRefs, ObjectThatTheLibraryCountsOutlivesTheHolder) {
    object.refcount = 1;
    { const InterfaceRef holder(object.asLibraryObject()); }
    EXPECT_EQ(object.refcount, 1);
    EXPECT_TRUE(events.empty());
}

TEST_F(InterfaceRefs, EmptyHolderCountsNothing) {
    const InterfaceRef empty(nullptr);
    const InterfaceRef copy(empty);
    EXPECT_EQ(copy.getPointer(), nullptr);
}

TEST_F(InterfaceRefs, AssignmentToItselfKeepsTheOnlyReference) {
    InterfaceRef holder(object.asLibraryObject());
    const InterfaceRef& same = holder;
    holder = same;
    EXPECT_EQ(object.refcount, 1);
    EXPECT_TRUE(events.empty());
}

TEST_F(InterfaceRefs, AssignmentLetsTheOldObjectGoBeforeItCountsTheNewOne) {
    static std::int32_t count_of_new_object;
    static Object* new_object;
    new_object = &other;
    count_of_new_object = -1;
    object.destroy = [](Velmar::LibraryObject*) { count_of_new_object = new_object->refcount; };
    const InterfaceRef source(other.asLibraryObject());
    InterfaceRef holder(object.asLibraryObject());
    holder = source;
    EXPECT_EQ(count_of_new_object, 1);
    EXPECT_EQ(other.refcount, 2);
}

TEST_F(InterfaceRefs, AssignmentOfAnEmptyHolderReleases) {
    InterfaceRef holder(object.asLibraryObject());
    holder = InterfaceRef();
    EXPECT_EQ(holder.getPointer(), nullptr);
    EXPECT_EQ(events, Events{"object destroyed"});
}

TEST_F(InterfaceRefs, ClearReleasesOnce) {
    {
        InterfaceRef holder(object.asLibraryObject());
        holder.clear();
        EXPECT_EQ(events, Events{"object destroyed"});
    }
    EXPECT_EQ(events.size(), 1u);
}

} // namespace InterfaceRefTests
