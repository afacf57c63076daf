#pragma once

#include <cstddef>

namespace TestSupport {

/// The number of threads of the process.
std::size_t countThreads();

} // namespace TestSupport
