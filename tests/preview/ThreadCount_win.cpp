#include "tests/preview/ThreadCount.h"

#include <windows.h>
// Needs the types of windows.h.
#include <tlhelp32.h>

namespace TestSupport {

std::size_t countThreads() {
    const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = Thread32First(threads, &entry); more != 0; more = Thread32Next(threads, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(threads);
    return count;
}

} // namespace TestSupport
