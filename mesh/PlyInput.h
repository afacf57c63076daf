#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <rply.h>
#include <string>
#include <string_view>
#include <vector>

namespace Velmar {

enum class PlyType : std::uint8_t { int8, uint8, int16, uint16, int32, uint32, float32, float64 };

/// Of the body of a file; `none` if the header doesn't name one.
enum class PlyFormat : std::uint8_t { none, ascii, little_endian, big_endian };

/// A number, or a list of a length and so many numbers.
struct PlyProperty {
    std::string_view name{};
    bool is_list = false;
    /// Of the length of a list.
    PlyType length_type = PlyType::int8;
    /// Of the number, or of those of a list.
    PlyType type = PlyType::int8;
};

struct PlyElement {
    std::string_view name{};
    /// Never negative.
    long count = 0;
    std::vector<PlyProperty> properties{};
};

/// The header of a PLY file, checked and rewritten for RPly, which trusts headers where it must not: it overruns its
/// buffers at a file that ends within a word and at long comments, stores each comment in a kilobyte, accepts any word
/// as a type, and loops over elements that have nothing to read.
struct PlyHeader {
    /// All words up to "end_header" are there, known where a type or a format is meant, and followed by a blank.
    bool complete = false;
    PlyFormat format = PlyFormat::none;
    /// What `text` declares, with names in the file.
    std::vector<PlyElement> elements{};
    /// The header that means the same to RPly: one declaration on a line, without comments and without elements that
    /// read nothing.
    std::string text{};
    /// Where the body begins in the file.
    std::size_t body_offset = 0;
    /// Where a header that isn't complete stopped making sense: a line, counted from 1, and its word. No word where the
    /// line ends too early or too late.
    std::size_t line = 1;
    std::string_view word{};

    bool isAscii() const { return format == PlyFormat::ascii; }
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

class Mesh;

/// `loadPLY` of the file `path` with the bytes `file`, whose header is complete, without its fast path.
void readPlyByRPly(const PlyHeader& header, std::string_view file, std::string_view path, Mesh& mesh, float scale);

/// The fast path of `loadPLY`, for PLY files as nearly all programs write them: coordinates of floating-point types in
/// the order x, y, z, vertices before faces, lengths of lists and indices of integer types. What it accepts, it reads
/// as RPly does; it leaves everything else to RPly, and each file that has an error anywhere.
///
/// Reads the body of `file`, whose header must be complete, into `mesh`, and builds it. Returns false if it isn't sure
/// of what RPly would make of the file; the mesh is then as it was.
bool readPlainPly(const PlyHeader& header, std::string_view file, Mesh& mesh, float scale);

} // namespace Velmar
