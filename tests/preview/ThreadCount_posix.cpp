#include "tests/preview/ThreadCount.h"

#include <filesystem>
#include <iterator>

namespace TestSupport {

std::size_t countThreads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

} // namespace TestSupport
