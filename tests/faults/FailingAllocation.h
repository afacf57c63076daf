#pragma once

#include <cstddef>
#include <cstdint>

namespace Faults {

/// Whether only one allocation fails or all that follow it too.
enum class Lasting { once, for_ever };

/// As long as it lives, the `nth` allocation from its construction on fails, or none if `nth` is 0, whichever way it is
/// asked for: `malloc`, `calloc`, `realloc` and every `new` of all code that is linked statically. One at a time, on
/// one thread.
class FailingAllocation {
  public:
    FailingAllocation(std::int64_t nth, Lasting lasting);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Lets all allocations pass from here on.
    void end();

    /// Whether an allocation has failed.
    bool hasStruck() const;
};

/// To be called before the first allocation that fails. Some runtimes allocate what they need for exceptions with the
/// first that is thrown, and for one without memory with the first of those, and end the process when they can't.
void prepareRuntime();

/// How many blocks are allocated and not released.
std::int64_t liveBlocks();

/// Counts a block that the system allocated and that is released here.
void countBlockOfSystem();

/// The size of the largest block that was asked for since the last call.
std::size_t takeLargestRequest();

} // namespace Faults
