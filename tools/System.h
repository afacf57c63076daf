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

/// Drops what this process writes to its standard output while it lives, the library's own lines included.
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

/// What tells a file or directory from every other one, whatever names lead to it: its volume and its number there.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

/// Of what stands at `path`, links followed; none when that can't be told.
std::optional<FileIdentity> getIdentity(std::string_view path);

enum class EntryKind { file, directory, link_to_directory, other };

/// What stands in a directory. The name of a file that isn't valid text is empty where the system's names are UTF-16.
struct DirectoryEntry {
    std::string name;
    EntryKind kind;
};

/// Appends the entries of a directory, in no order. Returns whether that worked; else the last system error tells why.
bool listDirectory(std::string_view path, std::vector<DirectoryEntry>& entries);

/// Gives the file `from` the name `to`; a file of that name goes. Returns whether that worked.
bool moveFile(std::string_view from, std::string_view to);

/// Writes what the system still holds back of a file to its disk. Returns whether that worked.
bool syncFile(std::string_view path);

/// Removes a file if it exists.
void removeFile(std::string_view path);

/// Removes a directory if it exists and is empty.
void removeDirectory(std::string_view path);

} // namespace System
