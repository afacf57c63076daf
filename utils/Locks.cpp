#include "utils/Locks.h"

#include "velmarmemory.h"

#include <memory>
#include <new>

namespace Velmar {

OwnedMutex::OwnedMutex() {
    struct Release {
        void operator()(CriticalSectionSlot* slot) const { sdkFree(slot); }
    };
    std::unique_ptr<CriticalSectionSlot, Release> slot(new (sdkMalloc(sizeof(CriticalSectionSlot)))
                                                           CriticalSectionSlot());
    constructCriticalSection(*slot);
    critical_section = slot.release();
}

OwnedMutex::~OwnedMutex() {
    destroyCriticalSection(*critical_section);
    sdkFree(critical_section);
}

} // namespace Velmar
