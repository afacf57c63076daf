#include "utils/Locks.h"

#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <thread>
#include <windows.h>

namespace {

CRITICAL_SECTION* sectionIn(Velmar::CriticalSectionSlot& slot) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(slot.bytes));
}

bool tryFromAnotherThread(CRITICAL_SECTION* section) {
    bool entered = false;
    std::thread([&] {
        entered = TryEnterCriticalSection(section) != 0;
        if (entered) LeaveCriticalSection(section);
    }).join();
    return entered;
}

void expectWorkingSection(Velmar::CriticalSectionSlot& slot) {
    CRITICAL_SECTION* const section = sectionIn(slot);
    EnterCriticalSection(section);
    EXPECT_TRUE(TryEnterCriticalSection(section)) << "the owner may enter again";
    EXPECT_FALSE(tryFromAnotherThread(section));
    LeaveCriticalSection(section);
    LeaveCriticalSection(section);
    EXPECT_TRUE(tryFromAnotherThread(section));
}

} // namespace

TEST(CriticalSection, WorksInItsSlot) {
    Velmar::CriticalSectionSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(slot);
    expectWorkingSection(slot);
    Velmar::destroyCriticalSection(slot);
}

TEST(ConditionVariable, WakesAWaiterFromItsSlot) {
    Velmar::CriticalSectionSlot section_slot;
    Velmar::ConditionVariableSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(section_slot);
    Velmar::constructConditionVariable(slot);
    CRITICAL_SECTION* const section = sectionIn(section_slot);
    auto* const condition = std::launder(reinterpret_cast<CONDITION_VARIABLE*>(slot.bytes));

    bool ready = false;
    EnterCriticalSection(section);
    std::thread waker([&] {
        EnterCriticalSection(section);
        ready = true;
        LeaveCriticalSection(section);
        WakeAllConditionVariable(condition);
    });
    while (!ready)
        ASSERT_TRUE(SleepConditionVariableCS(condition, section, INFINITE));
    LeaveCriticalSection(section);
    waker.join();
    Velmar::destroyCriticalSection(section_slot);
}

TEST(OwnedMutex, HoldsAWorkingSection) {
    const Velmar::OwnedMutex owned;
    expectWorkingSection(owned.getCriticalSection());
}
