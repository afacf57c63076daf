#include "System.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <string>

namespace FakeSdk {

namespace {

// A plain array: the destructor of the library still records when other objects are gone.
char record_path[1024];

struct Start {
    Job job;
    void* argument;
};

void* runJob(void* start) {
    const Start taken = *static_cast<Start*>(start);
    delete static_cast<Start*>(start);
    taken.job(taken.argument);
    return nullptr;
}

__attribute__((destructor)) void recordUnloading() {
    appendToRecord("unloaded\n", 9);
}

} // namespace

void openRecord() {
    const char* const path = std::getenv("VELMAR_FAKE_LIBRARY_RECORD");
    if (path != nullptr && std::strlen(path) < sizeof record_path) std::strcpy(record_path, path);
}

void appendToRecord(const char* text, uint64_t size) {
    if (record_path[0] == 0) return;
    if (std::strcmp(record_path, "-") == 0) {
        std::fwrite(text, 1, size, stdout);
        std::fflush(stdout);
        return;
    }
    std::FILE* const file = std::fopen(record_path, "ab");
    if (file == nullptr) return;
    std::fwrite(text, 1, size, file);
    std::fclose(file);
}

void writeFile(const char* path, const char* bytes, uint64_t size) {
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr) return;
    std::fwrite(bytes, 1, size, file);
    std::fclose(file);
}

void* startThread(Job job, void* argument) {
    pthread_t thread;
    pthread_create(&thread, nullptr, runJob, new Start{job, argument});
    return reinterpret_cast<void*>(thread);
}

void joinThread(void* thread) {
    pthread_join(reinterpret_cast<pthread_t>(thread), nullptr);
}

void enterCriticalSection(void* section) {
    pthread_mutex_lock(static_cast<pthread_mutex_t*>(section));
}

void leaveCriticalSection(void* section) {
    pthread_mutex_unlock(static_cast<pthread_mutex_t*>(section));
}

} // namespace FakeSdk
