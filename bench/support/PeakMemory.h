#pragma once

#include <cstddef>

namespace BenchSupport {

/// The rise of the resident memory of this process since the object was created, by any allocator.
class PeakMemory {
  public:
    /// Returns unused memory to the system first, so that memory that was freed before doesn't hide a rise.
    PeakMemory();

    /// The highest rise so far, in bytes.
    std::size_t rise() const;
    /// How much more there is now, in bytes.
    std::size_t present() const;

  private:
    std::size_t before = 0;
};

} // namespace BenchSupport
