#pragma once

#include <cstddef>

namespace Faults {

/// How many files this process holds open or mapped.
std::size_t openFiles();

} // namespace Faults
