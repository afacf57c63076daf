#pragma once

#include "tests/support/FileBytes.h"
#include "tests/support/TempDir.h"

#include <string>
#include <string_view>

namespace TestSupport {

/// A text in a file of its own for as long as the object.
class TextFile {
  public:
    TextFile(std::string_view name, std::string_view text) : full_path(dir.file(name)) {
        writeFileBytes(full_path, text);
    }

    const std::string& path() const { return full_path; }
    const TempDir& directory() const { return dir; }

  private:
    const TempDir dir;
    const std::string full_path;
};

} // namespace TestSupport
