#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

/// What the preview asks of the system, one implementation for each. Texts and paths are UTF-8.
namespace Preview::System {

/// The variable's value, or an empty text.
std::string getEnvironment(const char* name);

/// Writes a whole file so that nobody sees a part of it: under a name of its own first, which then takes the file's
/// place. If several threads or processes write one path, one of their files is there in the end. Returns an empty
/// text, or what went wrong; then there is no new file. Throws `std::bad_alloc`.
std::string writeFileAtomically(const std::string& path, std::span<const unsigned char> bytes);

/// The ending of a file that isn't complete, another one with each call.
inline std::string temporaryEnding(std::uint32_t process) {
    static std::atomic<std::uint32_t> count = 0;
    return std::string(1, '.')
        .append(std::to_string(process))
        .append(1, '-')
        .append(std::to_string(++count))
        .append(".part");
}

/// Reads a whole file of at most `max_size` bytes. Returns an empty text, or what went wrong.
std::string readFile(const std::string& path, std::uint64_t max_size, std::string& bytes);

/// The host's critical sections, by address: `CRITICAL_SECTION`, or a recursive mutex of POSIX threads.
void enterCriticalSection(void* section);
void leaveCriticalSection(void* section);

/// Holds a critical section of the host for a scope.
class Lock {
  public:
    explicit Lock(void* section_) : section(section_) { enterCriticalSection(section); }
    ~Lock() { leaveCriticalSection(section); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    void* section;
};

} // namespace Preview::System
