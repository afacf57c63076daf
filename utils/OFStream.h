#pragma once

#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "utils/OStream.h"

#include <fstream>
#include <memory>

namespace Velmar {

/// Text output to a file, with the system's line ends and numbers that ignore the locale.
class OFStream : public Destroyable<OFStream, OStream> {
  public:
    /// Opens `path` (UTF-8) for output and replaces the file that is there. A failure isn't thrown: ask `failed`.
    explicit OFStream(const String& path);
    ~OFStream() = default;

    void writeString(const String& text) override;
    void writeDouble(double value) override;

    /// Writes what is buffered to the file, so that `failed` reports its errors too.
    void flush();

    /// Whether opening or a write has failed.
    bool failed() const { return file.fail(); }

  private:
    // Before the stream, which uses it up to its end.
    std::unique_ptr<char[]> buffer;
    std::ofstream file;
};

} // namespace Velmar
