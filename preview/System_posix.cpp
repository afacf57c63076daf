#include "preview/System.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <pthread.h>
#include <unistd.h>

namespace Preview::System {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Documents name files with '\' on both systems.
std::string systemPath(const std::string& path) {
    std::string result = path;
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

} // namespace

std::string getEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string writeFileAtomically(const std::string& path, std::span<const unsigned char> bytes) {
    const std::string target = systemPath(path);
    std::string temporary;
    int descriptor = -1;
    // A file of that name may be left by a process that was killed.
    do {
        temporary = target + temporaryEnding(static_cast<std::uint32_t>(getpid()));
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0) return std::strerror(errno);
    File file(fdopen(descriptor, "wb"));
    int error = errno;
    if (file == nullptr) {
        close(descriptor);
    } else {
        const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
        error = errno;
        const bool closed = std::fclose(file.release()) == 0;
        if (written) error = errno;
        if (written && closed) {
            if (std::rename(temporary.c_str(), target.c_str()) == 0) return {};
            error = errno;
        }
    }
    std::remove(temporary.c_str());
    return std::strerror(error);
}

std::string readFile(const std::string& path, std::uint64_t max_size, std::string& bytes) {
    const File file(std::fopen(systemPath(path).c_str(), "rb"));
    if (file == nullptr) return std::strerror(errno);
    bytes.clear();
    char block[65536];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get())) {
        if (bytes.size() + count > max_size) return "the file is too large";
        bytes.append(block, count);
    }
    return std::ferror(file.get()) != 0 ? "the file can't be read" : "";
}

void enterCriticalSection(void* section) {
    pthread_mutex_lock(static_cast<pthread_mutex_t*>(section));
}

void leaveCriticalSection(void* section) {
    pthread_mutex_unlock(static_cast<pthread_mutex_t*>(section));
}

} // namespace Preview::System
