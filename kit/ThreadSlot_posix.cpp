#include "kit/Failures.h"

#include <cstdlib>
#include <pthread.h>

namespace Velmar::Kit {

namespace {

class Slot {
  public:
    Slot() : made(pthread_key_create(&key, std::free) == 0) {}
    ~Slot() {
        if (!made) return;
        // Other threads have ended or keep theirs: the library is unloaded.
        std::free(pthread_getspecific(key));
        pthread_key_delete(key);
    }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    void* get() const { return made ? pthread_getspecific(key) : nullptr; }
    bool set(void* block) const { return made && pthread_setspecific(key, block) == 0; }

  private:
    pthread_key_t key = {};
    bool made;
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
