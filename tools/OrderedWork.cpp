#include "tools/OrderedWork.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

class Run {
  public:
    Run(const OrderedWork& tasks_, std::uint64_t memory_) : tasks(tasks_), memory(memory_), done(tasks.count) {}

    /// What each thread does.
    void operator()() {
        std::unique_lock lock(mutex);
        while (next < tasks.count) {
            const std::size_t task = next;
            const std::uint64_t cost = tasks.cost(task);
            if (used != 0 && cost > memory - std::min(used, memory)) {
                // Without a limit it would need a newer C++ runtime than the rest of the tool.
                changed.wait_for(lock, std::chrono::seconds(1));
                continue;
            }
            ++next;
            // At least one byte, so that 0 means that nothing is being done.
            const std::uint64_t taken = std::max<std::uint64_t>(cost, 1);
            used += taken;
            lock.unlock();
            tasks.work(task);
            lock.lock();
            used -= taken;
            done[task] = true;
            changed.notify_all();
            finishReady(lock);
        }
    }

  private:
    void finishReady(std::unique_lock<std::mutex>& lock) {
        if (finishing) return;
        finishing = true;
        while (finished < tasks.count && done[finished]) {
            const std::size_t task = finished;
            lock.unlock();
            tasks.finish(task);
            lock.lock();
            ++finished;
        }
        finishing = false;
    }

    const OrderedWork& tasks;
    const std::uint64_t memory;
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t next = 0;
    std::size_t finished = 0;
    bool finishing = false;
    std::uint64_t used = 0;
    std::vector<bool> done;
};

} // namespace

void runInOrder(const OrderedWork& tasks, unsigned jobs, std::uint64_t memory) {
    Run run(tasks, memory);
    const std::size_t others = std::min<std::size_t>(std::max(jobs, 1U), std::max<std::size_t>(tasks.count, 1)) - 1;
    // Joins on every way out, also when the system refuses a thread.
    std::vector<std::jthread> threads;
    try {
        for (std::size_t i = 0; i < others; ++i)
            threads.emplace_back(std::ref(run));
    } catch (const std::system_error&) {
        // Those that exist do the work.
    }
    run();
}
