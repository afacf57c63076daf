#pragma once

#include <cstddef>

namespace TestSupport {

/// How often this thread has asked the C runtime for memory since it started; the whole process's allocation functions
/// are counted, those of shared libraries too.
std::size_t countAllocations();

/// The allocations that `action` makes.
template <class Action>
std::size_t allocationsOf(Action action) {
    const std::size_t before = countAllocations();
    action();
    return countAllocations() - before;
}

} // namespace TestSupport
