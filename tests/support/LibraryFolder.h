#pragma once

#include "tests/support/TempDir.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

/// A working directory of its own with a folder for renderer libraries, and the record of what a library was asked.
class LibraryFolder {
  public:
    LibraryFolder();
    ~LibraryFolder();
    LibraryFolder(const LibraryFolder&) = delete;
    LibraryFolder& operator=(const LibraryFolder&) = delete;

    /// Puts the fake library `variant` into `folder` under the system's file name for `name`.
    void install(std::string_view variant, std::string_view name = "velmar_sdk",
                 std::string_view folder = "vs2017_64") const;
    /// Puts a file that is no library there.
    void installText() const;

    /// The address of an exported name of the loaded library, or null.
    void* functionOfLibrary(const char* name) const;

    /// The lines of the record so far.
    std::vector<std::string> record() const;
    void clearRecord() const;

    /// The full path of `name` in the working directory.
    std::filesystem::path path(std::string_view name) const;

  private:
    TempDir dir;
    std::filesystem::path former;
};

} // namespace TestSupport
