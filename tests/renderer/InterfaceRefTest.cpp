#include "renderer/InterfaceRef.h"

#include "tests/renderer/FakeLibrary.h"

#include <gtest/gtest.h>

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
