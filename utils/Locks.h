#pragma once

#include <cstddef>

/// Synchronisation objects whose memory is shared with the renderer library. This side only makes and ends them.
namespace Velmar {

/// Room for one critical section of the system. It must not move while constructed.
struct CriticalSectionSlot {
    alignas(8) unsigned char bytes[40];
};

/// Room for one condition variable of the system.
struct ConditionVariableSlot {
    alignas(8) unsigned char bytes[8];
};

static_assert(sizeof(CriticalSectionSlot) == 40);
static_assert(sizeof(ConditionVariableSlot) == 8);

/// Makes a critical section, which its owner may enter again, in `slot`. End it with `destroyCriticalSection`.
void constructCriticalSection(CriticalSectionSlot& slot);

void destroyCriticalSection(CriticalSectionSlot& slot);

/// Makes a condition variable in `slot`. It needs no end.
void constructConditionVariable(ConditionVariableSlot& slot);

/// Owns a critical section on the heap.
class OwnedMutex {
  public:
    /// Throws `BadAlloc` when memory is exhausted.
    OwnedMutex();
    ~OwnedMutex();
    OwnedMutex(const OwnedMutex&) = delete;
    OwnedMutex& operator=(const OwnedMutex&) = delete;

    CriticalSectionSlot& getCriticalSection() const { return *critical_section; }

  private:
    CriticalSectionSlot* critical_section;
};

static_assert(sizeof(OwnedMutex) == 8);

} // namespace Velmar
