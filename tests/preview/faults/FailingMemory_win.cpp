#include "tests/preview/faults/FailingMemory.h"

namespace TestSupport {

FailingMemory::FailingMemory(const PreviewFolder& folder, std::int64_t nth, Lasting lasting)
    : arm(folder.get<Arm>("failAllocation")), disarm(folder.get<Disarm>("endFailures")) {
    arm(nth, lasting == Lasting::for_ever);
}

FailingMemory::~FailingMemory() {
    end();
}

void FailingMemory::enter() {}

void FailingMemory::leave() {}

bool FailingMemory::end() {
    return disarm();
}

} // namespace TestSupport
