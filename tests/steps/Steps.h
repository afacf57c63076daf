#pragma once

#include <cstdint>

namespace Steps {

/// How many basic blocks of the readers ran since the last call: the compiler has each report itself. Unlike a time it
/// is the same in every run.
std::uint64_t take();

} // namespace Steps
