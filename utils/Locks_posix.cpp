#include "velmarmemory.h"

#include "utils/Locks.h"

#include <cstring>
#include <new>
#include <pthread.h>

namespace Velmar {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CriticalSectionSlot));
static_assert(alignof(pthread_mutex_t) <= alignof(CriticalSectionSlot));

void constructCriticalSection(CriticalSectionSlot& slot) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int failure = pthread_mutex_init(new (slot.bytes) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (failure != 0) throw BadAlloc();
}

void destroyCriticalSection(CriticalSectionSlot& slot) {
    pthread_mutex_destroy(std::launder(reinterpret_cast<pthread_mutex_t*>(slot.bytes)));
}

void constructConditionVariable(ConditionVariableSlot& slot) {
    // The system's own condition variable is larger than the slot; an address to wait on is all that fits.
    std::memset(slot.bytes, 0, sizeof slot.bytes);
}

} // namespace Velmar
