#include "utils/Locks.h"

#include <new>
#include <windows.h>

namespace Velmar {

static_assert(sizeof(CRITICAL_SECTION) == sizeof(CriticalSectionSlot));
static_assert(alignof(CRITICAL_SECTION) <= alignof(CriticalSectionSlot));
static_assert(sizeof(CONDITION_VARIABLE) == sizeof(ConditionVariableSlot));
static_assert(alignof(CONDITION_VARIABLE) <= alignof(ConditionVariableSlot));

void constructCriticalSection(CriticalSectionSlot& slot) {
    InitializeCriticalSection(new (slot.bytes) CRITICAL_SECTION);
}

void destroyCriticalSection(CriticalSectionSlot& slot) {
    DeleteCriticalSection(std::launder(reinterpret_cast<CRITICAL_SECTION*>(slot.bytes)));
}

void constructConditionVariable(ConditionVariableSlot& slot) {
    InitializeConditionVariable(new (slot.bytes) CONDITION_VARIABLE);
}

} // namespace Velmar
