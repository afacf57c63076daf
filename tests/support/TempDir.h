#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

/// A fresh empty directory that is removed with its contents when the object is destroyed.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The directory's absolute path, in UTF-8, with no separator at its end.
    const std::string& path() const { return dir; }

    /// The path of `name` in it, with a `\` between.
    std::string file(std::string_view name) const;

    /// The names of what is in it, sorted, in UTF-8.
    std::vector<std::string> names() const;

  private:
    std::string dir;
};

} // namespace TestSupport
