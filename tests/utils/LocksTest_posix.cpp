#include "utils/Locks.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <pthread.h>
#include <thread>

namespace {

pthread_mutex_t* mutexIn(Velmar::CriticalSectionSlot& slot) {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(slot.bytes));
}

int tryFromAnotherThread(pthread_mutex_t* mutex) {
    int result = 0;
    std::thread([&] {
        result = pthread_mutex_trylock(mutex);
        if (result == 0) pthread_mutex_unlock(mutex);
    }).join();
    return result;
}

void expectWorkingMutex(Velmar::CriticalSectionSlot& slot) {
    pthread_mutex_t* const mutex = mutexIn(slot);
    EXPECT_EQ(0, pthread_mutex_lock(mutex));
    EXPECT_EQ(0, pthread_mutex_lock(mutex)) << "the owner may enter again";
    EXPECT_EQ(EBUSY, tryFromAnotherThread(mutex));
    pthread_mutex_unlock(mutex);
    pthread_mutex_unlock(mutex);
    EXPECT_EQ(0, tryFromAnotherThread(mutex));
}

} // namespace

TEST(CriticalSection, IsAWorkingMutexInItsSlot) {
    Velmar::CriticalSectionSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(slot);
    expectWorkingMutex(slot);
    Velmar::destroyCriticalSection(slot);
}

TEST(ConditionVariable, IsZerosInItsSlot) {
    Velmar::ConditionVariableSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructConditionVariable(slot);
    EXPECT_EQ(8, std::count(slot.bytes, slot.bytes + 8, 0));
}

TEST(OwnedMutex, HoldsAWorkingMutex) {
    const Velmar::OwnedMutex owned;
    expectWorkingMutex(owned.getCriticalSection());
}
