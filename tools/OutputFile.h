#pragma once

#include "tools/Console.h"

#include <cstdint>
#include <string>
#include <string_view>

/// A file in the making: written under another name in the same folder, which no other process uses, and renamed when
/// it is whole. Until then an existing file stays. A failure or an interrupt (Ctrl-C, SIGTERM) leaves no other file.
/// Of two processes that write one file, the later one wins whole.
class OutputFile {
  public:
    /// A symbolic link at `path` is followed. Throws `Failure` when no file can be made there or when an existing one
    /// is write-protected, before any long work begins. `extension` ends the other name, for writers that go by it.
    explicit OutputFile(std::string path, std::string_view extension = {});
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Whether a file of this name may be one in the making, or what a killed process left of it.
    static bool isPartialName(std::string_view name);

    /// Where to write: an absolute path. It is the file's with a longer extension, so what the library names after a
    /// file without its extension gets the same name.
    const std::string& getPartialPath() const { return partial_path; }

    /// The file itself: absolute, and no link.
    const std::string& getFinalPath() const { return final_path; }

    /// The failure of the exception being handled, naming the file as it was given. Only in a handler.
    Failure makeFailure() const;

    /// Writes what the system still holds back to the disk. Throws `Failure`.
    void flush();

    /// Renames the file, flushed if it wasn't yet, and returns its size. Throws `Failure`.
    std::uint64_t commit();

  private:
    /// As it was given, for messages.
    std::string given_path;
    std::string final_path;
    std::string partial_path;
    bool flushed = false;
};

/// What an interrupt must remove: files in the making and folders made for them.
namespace Interrupts {

/// Has an interrupt end the process by the means of the system, after it removed what is registered. To be called once,
/// before any other thread starts.
void install();

/// While it lives, an interrupt waits: for steps that must all happen or none.
class Deferral {
  public:
    Deferral();
    ~Deferral();
    Deferral(const Deferral&) = delete;
    Deferral& operator=(const Deferral&) = delete;
};

} // namespace Interrupts

/// Makes a folder unless it exists. Those that are made are removed again by the destructor, and by an interrupt, if
/// they are empty then.
class OutputFolder {
  public:
    /// Throws the library's exception when the folder can't be made.
    explicit OutputFolder(std::string path);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

  private:
    std::string made_path;
};
