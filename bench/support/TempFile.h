#pragma once

#include <filesystem>
#include <string>
#include <unistd.h>

namespace BenchSupport {

/// A path of this process for one file, which is removed with the object.
class TempFile {
  public:
    explicit TempFile(const std::string& name)
        : file(std::filesystem::temp_directory_path() / ("velmar-" + std::to_string(getpid()) + "-" + name)) {}
    ~TempFile() { std::filesystem::remove(file); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    std::string path() const { return file.string(); }

  private:
    std::filesystem::path file;
};

} // namespace BenchSupport
