#pragma once

#include "velmarmemory.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

/// What differs between the systems and isn't declared in FileUtils.h, MappedFile.h or PlatformUtils.h. All of it is
/// implemented in System_win.cpp and System_posix.cpp; no other file depends on the system. Text and paths are UTF-8.

namespace FileUtils {

/// The path in the form of this system's file calls. Windows: UTF-16, with the prefix that lifts the length limit where
/// the path is long. Elsewhere: every `\` becomes `/`.
std::filesystem::path toSystemPath(std::string_view path);

/// Windows only: UTF-8 to UTF-16. Bytes that aren't UTF-8 become U+FFFD. Empty when the conversion fails.
std::wstring utf8ToWide(std::string_view text);

/// Windows only: UTF-16 to UTF-8. Surrogates without a partner become U+FFFD. Empty when the conversion fails.
std::string wideToUtf8(std::wstring_view text);

} // namespace FileUtils

namespace PlatformUtils {

/// The number of this process.
std::uint32_t getProcessNumber();

/// The folder that holds one directory per program for this user's data. It may not exist.
/// Throws `PlatformUtilsExcep` when the system can't name it.
std::string getAppDataFolder();

/// Throws `PlatformUtilsExcep` when the system can't name the running program. Windows only; elsewhere does nothing.
void requireProgramPath();

} // namespace PlatformUtils

namespace Velmar {

// ---- libraries loaded at run time ----

/// How file names of libraries end on this system: ".dll" or ".so".
extern const std::string_view module_extension;

/// Loads the library file `path` and returns its handle, or null: then `error` receives the system's reason. If `path`
/// names an existing file, exactly that file is loaded, whatever the system's search path holds.
void* loadModule(std::string_view path, std::string& error);

/// The address of the exported name, or null when there is none.
void* findSymbol(void* module, const char* name);

/// Unloads the library. Null does nothing.
void unloadModule(void* module);

/// Where the system looks for the libraries that a loaded one depends on, from now on. Windows only; elsewhere
/// libraries name the place of their dependencies themselves.
void setModuleSearchDirectory(std::string_view dir);

// ---- synchronisation objects shared with the renderer library ----

/// Memory of one critical section of the system. It must not move while constructed.
struct CriticalSectionSlot {
    alignas(8) unsigned char bytes[40];
};

/// Memory of one condition variable of the system.
struct ConditionVariableSlot {
    alignas(8) unsigned char bytes[8];
};

static_assert(sizeof(CriticalSectionSlot) == 40);
static_assert(sizeof(ConditionVariableSlot) == 8);

/// Constructs a recursive critical section in `slot`. Destroy it with `destroyCriticalSection`.
void constructCriticalSection(CriticalSectionSlot& slot);

void destroyCriticalSection(CriticalSectionSlot& slot);

/// Constructs a condition variable in `slot`. It needs no destruction.
void constructConditionVariable(ConditionVariableSlot& slot);

/// Owns a critical section on the heap.
class OwnedMutex {
  public:
    /// Throws `BadAlloc` when out of memory.
    OwnedMutex() : critical_section(new (sdkMalloc(sizeof(CriticalSectionSlot))) CriticalSectionSlot()) {
        try {
            constructCriticalSection(*critical_section);
        } catch (...) {
            sdkFree(critical_section);
            throw;
        }
    }
    ~OwnedMutex() {
        destroyCriticalSection(*critical_section);
        sdkFree(critical_section);
    }
    OwnedMutex(const OwnedMutex&) = delete;
    OwnedMutex& operator=(const OwnedMutex&) = delete;

    CriticalSectionSlot& getCriticalSection() const { return *critical_section; }

  private:
    CriticalSectionSlot* critical_section;
};

static_assert(sizeof(OwnedMutex) == 8);

// ---- locale ----

/// While it lives, the C functions of this thread read and write numbers with a point, whatever the host's locale.
class PlainNumericLocale {
  public:
    PlainNumericLocale();
    ~PlainNumericLocale();
    PlainNumericLocale(const PlainNumericLocale&) = delete;
    PlainNumericLocale& operator=(const PlainNumericLocale&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace Velmar
