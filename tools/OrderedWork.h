#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

/// A list of tasks that several threads work on at once, with the results in the order of the list.
struct OrderedWork {
    std::size_t count = 0;
    /// The memory that task `i` may take, in bytes.
    std::function<std::uint64_t(std::size_t i)> cost;
    /// Does task `i`, at the same time as others.
    std::function<void(std::size_t i)> work;
    /// Called with one task at a time, in order, once `work` has done it.
    std::function<void(std::size_t i)> finish;
};

/// Does all tasks on `jobs` threads, the calling one included. They begin in order, and one whose cost exceeds what is
/// left of `memory` bytes waits, unless nothing else is being done. `work` and `finish` mustn't throw.
void runInOrder(const OrderedWork& tasks, unsigned jobs, std::uint64_t memory);
