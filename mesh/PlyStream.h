#pragma once

#include <cstddef>
#include <memory>
#include <rply.h>

namespace Velmar {

/// The bytes that RPly reads. RPly itself opens files by name; it is compiled to call functions of `PlyStream.cpp` in
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
