#pragma once

#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <cstddef>
#include <fstream>
#include <memory>

namespace Velmar {

/// Text output to a file, with the system's line ends and numbers that ignore the locale.
class OFStream : public Destroyable<OFStream, OStream> {
  public:
    /// Opens `path` (UTF-8) for output and replaces the file that is there. A failure isn't thrown: ask `failed`.
    explicit OFStream(const String& path);
    ~OFStream();

    void writeString(const String& text) override;
    void writeDouble(double value) override;

    /// Writes what is buffered to the file, so that `failed` reports its errors too.
    void flush();

    /// Whether opening or a write has failed.
    bool failed() const { return file.fail(); }

  private:
    static constexpr std::size_t capacity = 64 * 1024;

    void writeBuffer();
    void writeToFile(const char* bytes, std::size_t size);

    // Faster than the file's own buffer for many short texts.
    std::unique_ptr<char[]> buffer;
    std::size_t used = 0;
    std::ofstream file;
};

} // namespace Velmar
