#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the tool asks of the operating system beyond what the library asks. Text and paths are UTF-8.
namespace System {

/// The arguments without the program's name, whatever bytes `main` was given.
std::vector<std::string> getArguments(int argc, char** argv);

/// Makes a console show UTF-8 while it lives.
class ConsoleEncoding {
  public:
    ConsoleEncoding();
    // Not trivial on Windows.
    // NOLINTNEXTLINE(performance-trivially-destructible)
    ~ConsoleEncoding();
    ConsoleEncoding(const ConsoleEncoding&) = delete;
    ConsoleEncoding& operator=(const ConsoleEncoding&) = delete;

  private:
    /// Where the system has such a setting.
    [[maybe_unused]] unsigned before = 0;
};

/// Drops what this process writes to its standard output while it lives, including the lines of the library.
class SilentOutput {
  public:
    SilentOutput();
    ~SilentOutput();
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

  private:
    int saved = -1;
};

/// Whether a person sees what is written to `file`.
bool isTerminal(std::FILE* file);

/// The absolute form of `path`.
std::string getAbsolutePath(std::string_view path);

/// Makes `path` the directory that relative paths begin at. Returns whether that worked.
bool enterDirectory(std::string_view path);

/// The directory of this program's file, with a separator at its end; empty if it isn't known.
std::string getProgramFolder();

/// The address of a name that a library exports which this process has loaded from `path`, or null.
void* findLoadedFunction(std::string_view path, const char* name);

/// Of the files of shared libraries: ".dll" or ".so".
extern const char* const library_suffix;

bool isDirectory(std::string_view path);

/// Distinguishes a file or directory from every other one, whatever names lead to it: its volume and its number there.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

/// Of what is at `path`, links followed; none when that isn't known.
std::optional<FileIdentity> getIdentity(std::string_view path);

/// The size of a file in bytes, and when it was last written, in nanoseconds since 1970.
struct FileStamp {
    std::uint64_t size = 0;
    std::int64_t time = 0;

    bool operator==(const FileStamp&) const = default;
};

/// Links are followed; none for what isn't a file.
std::optional<FileStamp> getStamp(std::string_view path);

/// The machine's memory in bytes; 0 if it isn't known.
std::uint64_t getMemorySize();

enum class EntryKind { file, directory, link_to_directory, other };

/// An entry of a directory. The name of a file that isn't valid text is empty where the system's names are UTF-16.
struct DirectoryEntry {
    std::string name;
    EntryKind kind;
};

/// Appends the entries of a directory, in no order. Returns whether that worked; else the last system error says why.
bool listDirectory(std::string_view path, std::vector<DirectoryEntry>& entries);

/// A number that no other running process of this system has.
std::uint64_t getProcessID();

/// `path`, or what it leads to if a symbolic link is there, whether or not that exists.
std::string followLinks(const std::string& path);

/// Whether an existing file mustn't be written: no user may, or this one mayn't.
bool isWriteProtected(std::string_view path);

/// Opens a file for binary reading. Returns null when that fails. The caller closes it.
std::FILE* openFile(std::string_view path);

/// Opens a file to append to it, which makes it if it doesn't exist. Returns null when that fails. The caller closes
/// it.
std::FILE* openForAppending(std::string_view path);

/// Makes an empty file. Returns whether that worked; not so where anything exists.
bool createFile(std::string_view path);

/// Gives the file `from` the name `to`, replacing an existing file, whose permissions it takes. Returns whether that
/// worked.
bool moveFile(std::string_view from, std::string_view to);

/// Writes what the system still holds back of a file to its disk. Returns whether that worked.
bool syncFile(std::string_view path);

/// Removes a file if it exists.
void removeFile(std::string_view path);

/// Removes a directory if it exists and is empty.
void removeDirectory(std::string_view path);

/// Has `clean_up` called on a thread of its own when the user or the system ends the program, which then ends as the
/// system has it. To be called once, before other threads start.
void onInterrupt(void (*clean_up)());

/// Closes all files of this process where open files can't be removed. Only before it ends.
void closeAllFiles();

} // namespace System
