#pragma once

#include "tools/Failure.h"

#include <cstdint>
#include <string>

/// A file in the making: written under another name beside its place, and put there when it is whole. Until then a file
/// that stands there stays, and a failure leaves nothing behind.
class OutputFile {
  public:
    /// Throws `Failure` when no file can be made there, before any long work begins.
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write: an absolute path. It is the file's with a longer extension, so what the library names after a
    /// file without its extension is named alike.
    const std::string& getPartialPath() const { return partial_path; }

    /// The failure of the exception being handled, naming the file as it was given. Only in a handler.
    Failure makeFailure() const;

    /// Puts the written file in its place and returns its size. Throws `Failure`.
    std::uint64_t commit();

  private:
    /// As it was given, for messages.
    std::string given_path;
    std::string final_path;
    std::string partial_path;
};
