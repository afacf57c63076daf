#include "Watch.h"

#include <stdint.h>

namespace FakeSdk {

namespace {

using Operation = uint64_t (*)(void* object, uint64_t a, uint64_t b, uint64_t c);

constexpr uint32_t max_watches = 64;

struct Watch {
    void* object;
    /// The table that the object came with.
    const Operation* operations;
    uint32_t calls[slot_count];
};

Watch watches[max_watches];
uint32_t watch_count = 0;

Watch& watchOf(const void* object) {
    for (uint32_t i = 0; i < watch_count; ++i)
        if (watches[i].object == object) return watches[i];
    __builtin_trap();
}

/// Counts each call and passes it on to the object's first table. No operation takes more than the object and three
/// arguments in general registers.
class Counting {
  public:
    virtual uint64_t slot0(uint64_t a, uint64_t b, uint64_t c) { return pass(0, a, b, c); }
    virtual uint64_t slot1(uint64_t a, uint64_t b, uint64_t c) { return pass(1, a, b, c); }
    virtual uint64_t slot2(uint64_t a, uint64_t b, uint64_t c) { return pass(2, a, b, c); }
    virtual uint64_t slot3(uint64_t a, uint64_t b, uint64_t c) { return pass(3, a, b, c); }
    virtual uint64_t slot4(uint64_t a, uint64_t b, uint64_t c) { return pass(4, a, b, c); }
    virtual uint64_t slot5(uint64_t a, uint64_t b, uint64_t c) { return pass(5, a, b, c); }
    virtual uint64_t slot6(uint64_t a, uint64_t b, uint64_t c) { return pass(6, a, b, c); }
    virtual uint64_t slot7(uint64_t a, uint64_t b, uint64_t c) { return pass(7, a, b, c); }
    virtual uint64_t slot8(uint64_t a, uint64_t b, uint64_t c) { return pass(8, a, b, c); }
    virtual uint64_t slot9(uint64_t a, uint64_t b, uint64_t c) { return pass(9, a, b, c); }
    virtual uint64_t slot10(uint64_t a, uint64_t b, uint64_t c) { return pass(10, a, b, c); }
    virtual uint64_t slot11(uint64_t a, uint64_t b, uint64_t c) { return pass(11, a, b, c); }
    virtual uint64_t slot12(uint64_t a, uint64_t b, uint64_t c) { return pass(12, a, b, c); }
    virtual uint64_t slot13(uint64_t a, uint64_t b, uint64_t c) { return pass(13, a, b, c); }
    virtual uint64_t slot14(uint64_t a, uint64_t b, uint64_t c) { return pass(14, a, b, c); }
    virtual uint64_t slot15(uint64_t a, uint64_t b, uint64_t c) { return pass(15, a, b, c); }

  private:
    uint64_t pass(uint32_t slot, uint64_t a, uint64_t b, uint64_t c) {
        Watch& watch = watchOf(this);
        ++watch.calls[slot];
        // The object may be destroyed now, and another take its place.
        if (slot == 0) watch.object = nullptr;
        return watch.operations[slot](this, a, b, c);
    }
};

Counting counting;

} // namespace

uint32_t* watchObject(void* object) {
    Watch& watch = watches[watch_count++];
    if (watch_count > max_watches) __builtin_trap();
    watch.object = object;
    __builtin_memcpy(&watch.operations, object, sizeof watch.operations);
    __builtin_memcpy(object, static_cast<const void*>(&counting), sizeof watch.operations);
    return watch.calls;
}

} // namespace FakeSdk
