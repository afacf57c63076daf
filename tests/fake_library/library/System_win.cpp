#include "System.h"

#include <stddef.h>

// The few functions of the system, declared by hand: the fake library is built without the system's headers.
extern "C" {
#define SYSTEM_FUNCTION __declspec(dllimport)
SYSTEM_FUNCTION unsigned GetEnvironmentVariableA(const char* name, char* buffer, unsigned size);
SYSTEM_FUNCTION void* CreateFileA(const char* name, unsigned access, unsigned share, void* security, unsigned creation,
                                  unsigned flags, void* file_template);
SYSTEM_FUNCTION int WriteFile(void* file, const void* bytes, unsigned size, unsigned* written, void* overlapped);
SYSTEM_FUNCTION int CloseHandle(void* handle);
SYSTEM_FUNCTION void* GetStdHandle(unsigned which);
SYSTEM_FUNCTION void* CreateThread(void* security, size_t stack, unsigned (*start)(void*), void* argument,
                                   unsigned flags, unsigned* id);
SYSTEM_FUNCTION unsigned WaitForSingleObject(void* handle, unsigned milliseconds);
SYSTEM_FUNCTION void* GetProcessHeap();
SYSTEM_FUNCTION void* HeapAlloc(void* heap, unsigned flags, size_t size);
SYSTEM_FUNCTION int HeapFree(void* heap, unsigned flags, void* block);
SYSTEM_FUNCTION void EnterCriticalSection(void* section);
SYSTEM_FUNCTION void LeaveCriticalSection(void* section);
#undef SYSTEM_FUNCTION

// What the compiler expects of a runtime.
int _fltused = 0;

void* memset(void* to, int value, size_t size) {
    for (volatile char* byte = static_cast<volatile char*>(to); size > 0; --size)
        *byte++ = static_cast<char>(value);
    return to;
}

void* memcpy(void* to, const void* from, size_t size) {
    volatile char* out = static_cast<volatile char*>(to);
    for (const char* in = static_cast<const char*>(from); size > 0; --size)
        *out++ = *in++;
    return to;
}

int _purecall() {
    __builtin_trap();
}

int DllMain(void*, unsigned reason, void*) {
    constexpr unsigned process_detach = 0;
    if (reason == process_detach) FakeSdk::appendToRecord("unloaded\n", 9);
    return 1;
}
}

namespace FakeSdk {

namespace {

constexpr unsigned append_data = 4;
constexpr unsigned generic_write = 0x40000000;
constexpr unsigned share_read_and_write = 3;
constexpr unsigned create_always = 2;
constexpr unsigned open_always = 4;
constexpr unsigned standard_output = static_cast<unsigned>(-11);
constexpr unsigned forever = 0xFFFFFFFF;

char record_path[1024];

struct Start {
    Job job;
    void* argument;
};

unsigned runJob(void* start) {
    const Start taken = *static_cast<Start*>(start);
    HeapFree(GetProcessHeap(), 0, start);
    taken.job(taken.argument);
    return 0;
}

void write(void* file, const char* bytes, uint64_t size) {
    unsigned written = 0;
    WriteFile(file, bytes, static_cast<unsigned>(size), &written, nullptr);
}

} // namespace

void openRecord() {
    GetEnvironmentVariableA("VELMAR_FAKE_LIBRARY_RECORD", record_path, sizeof record_path);
}

void appendToRecord(const char* text, uint64_t size) {
    if (record_path[0] == 0) return;
    if (record_path[0] == '-' && record_path[1] == 0) {
        write(GetStdHandle(standard_output), text, size);
        return;
    }
    void* const file = CreateFileA(record_path, append_data, share_read_and_write, nullptr, open_always, 0, nullptr);
    write(file, text, size);
    CloseHandle(file);
}

void writeFile(const char* path, const char* bytes, uint64_t size) {
    void* const file = CreateFileA(path, generic_write, 0, nullptr, create_always, 0, nullptr);
    write(file, bytes, size);
    CloseHandle(file);
}

void* startThread(Job job, void* argument) {
    Start* const start = static_cast<Start*>(HeapAlloc(GetProcessHeap(), 0, sizeof(Start)));
    *start = {job, argument};
    return CreateThread(nullptr, 0, runJob, start, 0, nullptr);
}

void joinThread(void* thread) {
    WaitForSingleObject(thread, forever);
    CloseHandle(thread);
}

void enterCriticalSection(void* section) {
    EnterCriticalSection(section);
}

void leaveCriticalSection(void* section) {
    LeaveCriticalSection(section);
}

} // namespace FakeSdk
