#pragma once

#include <cstddef>
#include <memory>
#include <rply.h>
#include <string>
#include <string_view>

namespace Velmar {

/// The header of a PLY file, checked and rewritten for RPly, which trusts headers where it must not: it overruns its
/// buffers at a file that ends within a word and at long comments, stores each comment in a kilobyte, accepts any word
/// as a type, and loops over elements that have nothing to read.
struct PlyHeader {
    /// All words up to "end_header" are there, known where a type or a format is meant, and followed by a blank.
    bool complete = false;
    /// The body is text.
    bool ascii = false;
    /// The header that means the same to RPly: one declaration on a line, without comments and without elements that
    /// read nothing.
    std::string text{};
    /// Where the body begins in the file.
    std::size_t body_offset = 0;
    /// Where a header that isn't complete stopped making sense: a line, counted from 1, and its word. No word where the
    /// line ends too early or too late.
    std::size_t line = 1;
    std::string_view word{};
};

/// Reads the header of the file with the bytes `file` word by word, as RPly does.
PlyHeader parsePlyHeader(std::string_view file);

/// The bytes that RPly reads. RPly itself opens files by name; it is compiled to call functions of `PlyInput.cpp` in
/// place of `fopen`, `fread` and `fclose`.
class PlyStream {
  public:
    PlyStream() = default;
    virtual ~PlyStream() = default;
    PlyStream(const PlyStream&) = delete;
    PlyStream& operator=(const PlyStream&) = delete;

    /// Copies the next `size` bytes to `to`, or as many as are left, and returns how many. Must not throw.
    virtual std::size_t read(char* to, std::size_t size) noexcept = 0;
};

/// The bytes of the PLY file `file` with its header rewritten, and with a line end after a text that doesn't end in a
/// blank: RPly overruns its buffer there. Both arguments must outlive it.
class PlyFileStream final : public PlyStream {
  public:
    PlyFileStream(const PlyHeader& header, std::string_view file);

    std::size_t read(char* to, std::size_t size) noexcept override;

  private:
    std::string_view parts[3];
};

struct PlyCloser {
    void operator()(p_ply ply) const { ply_close(ply); }
};
using PlyHandle = std::unique_ptr<t_ply_, PlyCloser>;

/// An RPly reader of `stream`, which must outlive it. Null when out of memory, after a call of `on_error` without a
/// reader. `user` is for `ply_get_ply_user_data`.
PlyHandle openPly(PlyStream& stream, p_ply_error_cb on_error, void* user);

/// `ply_read_header`, which keeps part of its state in a global variable, for one thread at a time.
bool readPlyHeader(p_ply ply);

} // namespace Velmar
