#pragma once

#include <cstddef>

namespace Steps {

/// The most bytes that were allocated at a time since the last call, beyond those at that call: of `malloc`, `new`, and
/// the parser of documents, with what the system's heap adds to each block.
std::size_t takePeakBytes();

} // namespace Steps
