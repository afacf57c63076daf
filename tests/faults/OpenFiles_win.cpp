#include "tests/faults/OpenFiles.h"

#include <stdexcept>
#include <windows.h>

namespace Faults {

std::size_t openFiles() {
    DWORD count = 0;
    if (!GetProcessHandleCount(GetCurrentProcess(), &count)) throw std::runtime_error("can't count the handles");
    return count;
}

} // namespace Faults
