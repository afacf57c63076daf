#include "reference.h"

#include "velmarthreadsaferefcounted.h"

#include "tests/support/Slots.h"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace ReferenceTests {

using testing::AnyOf;
using testing::HasSubstr;
using TestSupport::callSlot;
using Velmar::Destroyable;
using Velmar::Reference;
using Velmar::ThreadSafeRefCounted;

namespace {

/// Counts how many of it are alive.
class Counted : public Destroyable<Counted, ThreadSafeRefCounted> {
  public:
    explicit Counted(int& counter) : alive(counter) { ++alive; }
    ~Counted() { --alive; }

    int& alive;
};

class Checked : public Destroyable<Checked, ThreadSafeRefCounted> {
  public:
    ~Checked() { assertUnreferenced(); }
};

class Plain : public ThreadSafeRefCounted {};

} // namespace

static_assert(sizeof(Reference<Counted>) == sizeof(void*));
static_assert(std::is_convertible_v<Reference<Counted>, Reference<ThreadSafeRefCounted>>);
static_assert(!std::is_convertible_v<Reference<ThreadSafeRefCounted>, Reference<Counted>>);

TEST(RefCount, AFreshObjectHasNone) {
    int alive = 0;
    auto* const object = new Counted(alive);
    EXPECT_EQ(0, object->getRefCount());
    EXPECT_EQ(1, alive);
    object->destroy(1);
    EXPECT_EQ(0, alive);
}

TEST(RefCount, DecrementGivesTheValueBefore) {
    int alive = 0;
    Counted object(alive);
    object.increment();
    object.increment();
    EXPECT_EQ(2, object.decrement());
    EXPECT_EQ(1, object.decrement());
    EXPECT_EQ(0, object.getRefCount());
}

TEST(RefCount, StandsBehindTheTable) {
    int alive = 0;
    Counted object(alive);
    object.increment();
    EXPECT_EQ(1, reinterpret_cast<const std::int64_t*>(&object)[1]);
    object.decrement();
}

TEST(RefCount, IsExactAcrossThreads) {
    int alive = 0;
    const Reference<Counted> held = new Counted(alive);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&held] {
            for (int k = 0; k < 50000; ++k) {
                const Reference<Counted> first = held;
                const Reference<ThreadSafeRefCounted> second = first;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1, held->getRefCount());
    EXPECT_EQ(1, alive);
}

TEST(RefCount, TheLastOfManyThreadsDestroysOnce) {
    for (int round = 0; round < 200; ++round) {
        int alive = 0;
        Reference<Counted> first = new Counted(alive);
        Reference<Counted> second = first;
        std::thread other([&second] { second = nullptr; });
        first = nullptr;
        other.join();
        EXPECT_EQ(0, alive);
    }
}

TEST(Reference, ToNothingDoesNoCounting) {
    const Reference<Counted> made_empty;
    const Reference<Counted> made_of_null(nullptr);
    EXPECT_EQ(nullptr, made_empty.getPointer());
    EXPECT_FALSE(made_of_null);
    EXPECT_TRUE(made_empty == made_of_null);
}

TEST(Reference, CountsWhileItLives) {
    int alive = 0;
    auto* const object = new Counted(alive);
    {
        const Reference<Counted> first(object);
        EXPECT_EQ(1, object->getRefCount());
        const Reference<Counted> second(first);
        EXPECT_EQ(2, object->getRefCount());
        EXPECT_EQ(object, second.getPointer());
        EXPECT_EQ(2, object->getRefCount());
    }
    EXPECT_EQ(0, alive);
}

TEST(Reference, AssigningItselfKeepsTheObject) {
    int alive = 0;
    Reference<Counted> held = new Counted(alive);
    const Reference<Counted>& same = held;
    held = same;
    EXPECT_EQ(1, alive);
    EXPECT_EQ(1, held->getRefCount());
    held = held.getPointer();
    EXPECT_EQ(1, alive);
    EXPECT_EQ(1, held->getRefCount());
}

TEST(Reference, AssignmentReleasesTheOldObject) {
    int first_alive = 0;
    int second_alive = 0;
    Reference<Counted> held = new Counted(first_alive);
    held = new Counted(second_alive);
    EXPECT_EQ(0, first_alive);
    EXPECT_EQ(1, second_alive);
    held = nullptr;
    EXPECT_EQ(0, second_alive);
}

TEST(Reference, TheFirstHolderOfAFreshObjectIsItsOwner) {
    int alive = 0;
    auto* const object = new Counted(alive);
    { const Reference<Counted> only(object); }
    EXPECT_EQ(0, alive);
}

TEST(ReferenceDeathTest, DereferencingNothingIsReported) {
    const Reference<Counted> empty;
    // Each runtime has its own form.
    const auto report = AnyOf(HasSubstr("Assertion `ob' failed"), HasSubstr("Assertion failed: ob,"));
    EXPECT_DEATH(static_cast<void>(*empty), report);
    EXPECT_DEATH(static_cast<void>(empty.operator->()), report);
}

TEST(Destroy, RunsTheDestructorOfTheRealClass) {
    int alive = 0;
    ThreadSafeRefCounted* const object = new Counted(alive);
    EXPECT_EQ(object, callSlot<void*>(object, 0, 1U));
    EXPECT_EQ(0, alive);
}

TEST(Destroy, WithoutItsFlagLeavesTheMemory) {
    int alive = 0;
    alignas(Counted) unsigned char memory[sizeof(Counted)];
    auto* const object = new (static_cast<void*>(memory)) Counted(alive);
    EXPECT_EQ(object, callSlot<void*>(object, 0, 0U));
    EXPECT_EQ(0, alive);
    EXPECT_EQ(object, callSlot<void*>(new (static_cast<void*>(memory)) Counted(alive), 0, 2U));
    EXPECT_EQ(0, alive);
}

TEST(Destroy, MostClassesGoWhateverTheirCount) {
    int alive = 0;
    auto* const object = new Counted(alive);
    object->increment();
    object->destroy(1);
    EXPECT_EQ(0, alive);
}

TEST(DestroyDeathTest, ClassesThatCheckReportAHolder) {
    EXPECT_DEATH(
        {
            auto* const object = new Checked;
            object->increment();
            object->destroy(1);
        },
        HasSubstr("refcount == 0"));
    auto* const free_of_holders = new Checked;
    free_of_holders->destroy(1);
}

TEST(DestroyDeathTest, TheBaseReportsAHolder) {
    EXPECT_DEATH(
        {
            auto* const object = new Plain;
            object->increment();
            callSlot<void*>(object, 0, 1U);
        },
        HasSubstr("refcount == 0"));
}

} // namespace ReferenceTests
