#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// What the tool asks of the operating system beyond what the library asks. Text and paths are UTF-8.
namespace System {

/// The arguments without the program's name, whatever bytes `main` was given.
std::vector<std::string> getArguments(int argc, char** argv);

/// Makes a console show UTF-8 while it lives.
class ConsoleEncoding {
  public:
    ConsoleEncoding();
    ~ConsoleEncoding();
    ConsoleEncoding(const ConsoleEncoding&) = delete;
    ConsoleEncoding& operator=(const ConsoleEncoding&) = delete;

  private:
    unsigned before = 0;
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

bool isDirectory(std::string_view path);

/// Gives the file `from` the name `to`; a file of that name goes. Returns whether that worked.
bool moveFile(std::string_view from, std::string_view to);

/// Removes a file if it is there.
void removeFile(std::string_view path);

} // namespace System
