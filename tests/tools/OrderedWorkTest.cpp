#include "tools/OrderedWork.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <thread>
#include <vector>

namespace OrderedWorkTests {

namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

std::vector<std::size_t> numbersBelow(std::size_t count) {
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    return numbers;
}

/// The largest cost that is being worked on at one time.
std::uint64_t peakOf(const std::vector<std::uint64_t>& costs, unsigned jobs, std::uint64_t memory) {
    std::atomic<std::uint64_t> used = 0;
    std::atomic<std::uint64_t> peak = 0;
    const auto work = [&](std::size_t i) {
        const std::uint64_t now = used += costs[i];
        for (std::uint64_t known = peak; known < now && !peak.compare_exchange_weak(known, now);) {
        }
        for (int turn = 0; turn < 100; ++turn)
            std::this_thread::yield();
        used -= costs[i];
    };
    runInOrder({costs.size(), [&](std::size_t i) { return costs[i]; }, work, [](std::size_t) {}}, jobs, memory);
    return peak;
}

TEST(OrderedWork, FinishesEachTaskOnceInOrder) {
    for (const unsigned jobs : {0U, 1U, 2U, 8U}) {
        std::vector<std::size_t> finished;
        std::atomic<std::size_t> worked = 0;
        runInOrder({100, [](std::size_t) { return 0; }, [&](std::size_t) { ++worked; },
                    [&](std::size_t i) { finished.push_back(i); }},
                   jobs, unlimited);
        EXPECT_EQ(worked, 100U);
        EXPECT_EQ(finished, numbersBelow(100)) << jobs << " jobs";
    }
}

TEST(OrderedWork, WorksOnSeveralTasksAtOnce) {
    // Each waits for the other: one after the other, they would never end.
    std::atomic<int> arrived = 0;
    const auto work = [&](std::size_t) {
        ++arrived;
        while (arrived < 2)
            std::this_thread::yield();
    };
    runInOrder({2, [](std::size_t) { return 0; }, work, [](std::size_t) {}}, 2, unlimited);
    EXPECT_EQ(arrived, 2);
}

TEST(OrderedWork, KeepsWithinTheMemory) {
    const std::vector<std::uint64_t> costs = {3, 4, 5, 1, 2, 6, 3, 3, 4, 2, 5, 1};
    for (int turn = 0; turn < 20; ++turn)
        EXPECT_LE(peakOf(costs, 4, 7), 7U);
}

TEST(OrderedWork, DoesATaskThatExceedsTheMemoryAlone) {
    for (int turn = 0; turn < 20; ++turn)
        EXPECT_EQ(peakOf({1, 1, 50, 1, 1}, 4, 10), 50U);
}

TEST(OrderedWork, FinishesOneTaskAtATime) {
    // The first is being finished while others are worked on, by a thread that must not finish any meanwhile.
    std::atomic<std::size_t> worked = 0;
    std::atomic<int> finishing = 0;
    std::atomic<int> overlaps = 0;
    const auto finish = [&](std::size_t) {
        if (++finishing > 1) {
            ++overlaps;
        } else {
            while (worked < 3)
                std::this_thread::yield();
        }
        --finishing;
    };
    runInOrder({3, [](std::size_t) { return 0; }, [&](std::size_t) { ++worked; }, finish}, 2, unlimited);
    EXPECT_EQ(overlaps, 0);
}

TEST(OrderedWork, IsDoneAtOnceWithoutTasks) {
    runInOrder({0, {}, {}, {}}, 4, unlimited);
}

} // namespace

} // namespace OrderedWorkTests
