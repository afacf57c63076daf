#pragma once

namespace Velmar::Kit {

/// A block of one thread, released by `std::free` when the thread ends. Made of the system's own slots, because a
/// compiler's thread_local may allocate, and end the process when memory is exhausted.
void* getThreadBlock() noexcept;
/// False when the system has no room for it; the caller keeps the block then.
bool setThreadBlock(void* block) noexcept;

} // namespace Velmar::Kit
