#pragma once

#include <stdint.h>

/// What the fake library asks of the system.
namespace FakeSdk {

/// Opens the record: the file named by the environment variable VELMAR_FAKE_LIBRARY_RECORD, "-" for the standard
/// output, nowhere when it isn't set.
void openRecord();
void appendToRecord(const char* text, uint64_t size);

void writeFile(const char* path, const char* bytes, uint64_t size);

using Job = void (*)(void* argument);
void* startThread(Job job, void* argument);
/// Waits for the thread to end.
void joinThread(void* thread);

/// The host's critical sections, by address.
void enterCriticalSection(void* section);
void leaveCriticalSection(void* section);

} // namespace FakeSdk
