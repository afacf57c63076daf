#pragma once

#include <cstddef>

namespace BenchSupport {

/// How much the resident memory of this process rises above what it was when the object was made, whatever allocates
/// it.
class PeakMemory {
  public:
    /// Hands unused memory back to the system first, so that what was freed before doesn't hide a rise.
    PeakMemory();

    /// The highest rise so far, in bytes.
    std::size_t rise() const;

  private:
    std::size_t before = 0;
};

} // namespace BenchSupport
