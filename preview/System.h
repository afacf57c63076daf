#pragma once

#include <cstdint>
#include <span>
#include <string>

/// What the preview asks of the system, one implementation for each. Texts and paths are UTF-8.
namespace Preview::System {

/// The variable's value, or an empty text.
std::string getEnvironment(const char* name);

/// Writes a whole file so that nobody sees a part of it: under another name first, which then takes the file's place.
/// Returns an empty text, or what went wrong.
std::string writeFileAtomically(const std::string& path, std::span<const unsigned char> bytes);

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

/// The threads with which Embree builds. They belong to the process and outlive the device that started them; the last
/// of these objects ends them and waits until they are gone, so that none runs while its process or library is taken
/// down.
class BuilderThreads {
  public:
    /// Throws `std::bad_alloc`.
    BuilderThreads();
    /// After the device has been released.
    ~BuilderThreads();
    BuilderThreads(const BuilderThreads&) = delete;
    BuilderThreads& operator=(const BuilderThreads&) = delete;

  private:
    void* handle = nullptr;
};

} // namespace Preview::System
