#include "kit/Failures.h"

#include <windows.h>
// After windows.h, which it needs.
#include <cstdlib>

namespace Velmar::Kit {

namespace {

void WINAPI releaseBlock(void* block) {
    std::free(block);
}

class Slot {
  public:
    Slot() : index(FlsAlloc(releaseBlock)) {}
    ~Slot() { FlsFree(index); }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    void* get() const { return FlsGetValue(index); }
    bool set(void* block) const { return FlsSetValue(index, block) != 0; }

  private:
    DWORD index;
};

const Slot slot;

} // namespace

void* getThreadBlock() noexcept {
    return slot.get();
}

bool setThreadBlock(void* block) noexcept {
    return slot.set(block);
}

} // namespace Velmar::Kit
