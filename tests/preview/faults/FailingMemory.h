#pragma once

#include "tests/preview/PreviewRender.h"

#include <cstdint>

namespace TestSupport {

/// Whether one allocation fails, or all that follow it too.
enum class Lasting { once, for_ever };

/// As long as it lives, the `nth` allocation of the renderer library and of Embree fails from its construction on, and
/// with `for_ever` all that follow too, on any thread. One at a time.
///
/// On Windows the library is one that was linked for this, and what fails are its calls of the system's and of the C
/// library's functions. Elsewhere every `new` of the process is counted, except those of the test's own thread outside
/// of `inside`.
class FailingMemory {
  public:
    FailingMemory(const PreviewFolder& folder, std::int64_t nth, Lasting lasting);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    /// Calls the library: `call` isn't the test's own code.
    template <class Call>
    auto inside(Call call) const {
        enter();
        const auto result = call();
        leave();
        return result;
    }

    /// Lets all allocations pass from here on. Returns whether one has failed.
    bool end();

  private:
    static void enter();
    static void leave();

    using Arm = void(std::int64_t nth, bool for_ever);
    using Disarm = bool();
    Arm* arm;
    Disarm* disarm;
};

} // namespace TestSupport
