#include "velmarexceptions.h"
#include "velmarmemory.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "mesh/VmmeshFormat.h"
#include "utils/BinaryStreams.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <zstd.h>
#include <zstd_errors.h>

namespace Velmar {

namespace {

void checkCount(std::uint32_t count) {
    if (count > VmmeshFormat::max_count) throw VelmarException("Vector too long.");
}

/// Reserves memory for `count` records, a number that is only claimed so far, and has `fill` write them. Memory that
/// isn't written costs nothing; when `fill` throws, the vector is emptied, so that nobody reads what wasn't written.
template <class T, class Fill>
void resizeAndFill(Vector<T>& records, std::uint32_t count, Fill fill) {
    records.resizeUninitialized(count);
    try {
        fill();
    } catch (...) {
        Vector<T> none;
        records.swap(none);
        throw;
    }
}

std::uint32_t checkedUVLayout(std::uint32_t value) {
    if (value > VmmeshFormat::max_uv_layout)
        throw VelmarException(toVelmarString("Invalid uv_layout value " + std::to_string(value)));
    return value;
}

/// A cursor over the bytes of the file. Access past their end throws.
class FileReader {
  public:
    explicit FileReader(std::span<const std::uint8_t> bytes) : rest(bytes) {}

    std::span<const std::uint8_t> remaining() const { return rest; }

    void read(void* dest, std::uint64_t size) {
        if (size > rest.size()) throw VelmarException("Read failed.");
        const auto taken = static_cast<std::size_t>(size);
        if (taken != 0) std::memcpy(dest, rest.data(), taken);
        rest = rest.subspan(taken);
    }

    template <class Word>
    Word readWord() {
        Word word = 0;
        read(&word, sizeof word);
        return word;
    }
    std::uint32_t readUInt32() { return readWord<std::uint32_t>(); }
    std::uint64_t readUInt64() { return readWord<std::uint64_t>(); }

    std::uint32_t readCount() {
        const std::uint32_t count = readUInt32();
        checkCount(count);
        return count;
    }

    /// A view of the file's bytes.
    std::string_view readString() {
        const std::uint32_t length = readUInt32();
        if (length > VmmeshFormat::max_string_length) throw VelmarException("String too long.");
        if (length > rest.size()) throw VelmarException("Read failed.");
        const std::string_view text(reinterpret_cast<const char*>(rest.data()), length);
        rest = rest.subspan(length);
        return text;
    }

    template <class T>
    void readBlock(Vector<T>& records) {
        const std::uint32_t count = readCount();
        resizeAndFill(records, count, [&] { read(records.data(), std::uint64_t{count} * sizeof(T)); });
    }

  private:
    std::span<const std::uint8_t> rest;
};

void readPlainBody(FileReader& file, std::uint32_t version, Mesh& mesh) {
    file.readBlock(mesh.verts);
    file.readBlock(mesh.normals);
    mesh.uv_layout =
        version >= VmmeshFormat::first_version_with_uv_layout ? checkedUVLayout(file.readUInt32()) : std::uint32_t{0};
    file.readBlock(mesh.uv_pairs);
    file.readBlock(mesh.triangles);
    if (version >= VmmeshFormat::first_version_with_quads) file.readBlock(mesh.quads);
}

template <class T>
void readBlock(InStream& stream, Vector<T>& records) {
    const std::uint32_t count = stream.readUInt32();
    checkCount(count);
    resizeAndFill(records, count, [&] { stream.readData(records.data(), std::size_t{count} * sizeof(T)); });
}

template <class Face>
void readFaces(BufferInStream& stream, Vector<Face>& faces) {
    const std::uint32_t count = stream.readUInt32();
    checkCount(count);
    resizeAndFill(faces, count, [&] {
        const std::uint64_t first = stream.read_index;
        stream.read_index += std::uint64_t{count} * sizeof(Face);
        if (stream.read_index > stream.data.size()) throw VelmarException("Read past end of file.");
        if (count != 0) FaceDeltaFilter::decode(stream.data.data() + first, count, faces.data());
    });
}

/// The size of the frame's content by its header; 0 if that can't be read or has none.
std::uint64_t claimedContentSize(std::span<const std::uint8_t> frame) {
    const std::uint64_t size = ZSTD_getFrameContentSize(frame.data(), frame.size());
    return size == ZSTD_CONTENTSIZE_UNKNOWN || size == ZSTD_CONTENTSIZE_ERROR ? 0 : size;
}

/// What zstd returns: the size of the content or an error. If zstd itself is out of memory, the frame is not to blame.
std::size_t decompressInto(AlignedByteArray& inner, std::span<const std::uint8_t> frame) {
    const std::size_t result = ZSTD_decompress(inner.data(), inner.size(), frame.data(), frame.size());
    if (ZSTD_getErrorCode(result) == ZSTD_error_memory_allocation) throw BadAlloc();
    return result;
}

/// Fills `inner` with what the frame holds. A damaged frame isn't refused here: what it doesn't give reads as zeros.
void decompress(std::span<const std::uint8_t> frame, AlignedByteArray& inner) {
    const std::size_t claimed = inner.size();
    if (decompressInto(inner, frame) == claimed) return;

    // zstd doesn't report how far it came, so once more over zeros. Memory is cleared only as far as a frame of this
    // size can reach: a block of four bytes, the least, gives 128 KiB at most. No reader is let beyond.
    constexpr std::size_t max_expansion = 128 * 1024 / 4;
    const std::size_t reachable = claimed / max_expansion >= frame.size() ? frame.size() * max_expansion : claimed;
    if (reachable != 0) std::memset(inner.data(), 0, reachable);
    inner.resizeUninitialized(reachable);
    decompressInto(inner, frame);
}

void readCompressedBody(FileReader& file, Mesh& mesh) {
    const std::uint64_t compressed_size = file.readUInt64();
    const std::span<const std::uint8_t> rest = file.remaining();

    BufferInStream inner;
    inner.data.resizeUninitialized(claimedContentSize(rest));
    decompress(rest.first(static_cast<std::size_t>(std::min<std::uint64_t>(compressed_size, rest.size()))), inner.data);

    readBlock(inner, mesh.verts);
    readBlock(inner, mesh.normals);
    mesh.uv_layout = checkedUVLayout(inner.readUInt32());
    readBlock(inner, mesh.uv_pairs);
    readFaces(inner, mesh.triangles);
    readFaces(inner, mesh.quads);
}

VmmeshHeader readHeader(FileReader& file) {
    if (file.readUInt32() != VmmeshFormat::magic) throw VelmarException("Invalid magic number.");
    VmmeshHeader header;
    header.version = file.readUInt32();
    if (header.version < 1 || header.version > VmmeshFormat::newest_version)
        throw VelmarException(toVelmarString("Unsupported format version " + std::to_string(header.version) + "."));
    if (header.version >= VmmeshFormat::first_version_with_compression) {
        header.compressed = file.readUInt32() != 0;
        file.readUInt32(); // reserved
    }
    return header;
}

void readMesh(FileReader& file, Mesh& mesh) {
    const VmmeshHeader header = readHeader(file);
    mesh.num_uv_mappings = file.readUInt32();
    const std::uint32_t num_materials = file.readCount();
    mesh.used_materials.clear();
    for (std::uint32_t i = 0; i < num_materials; ++i)
        mesh.used_materials.push_back(String(file.readString()));
    const std::uint32_t num_extra_entries = file.readCount();
    for (std::uint32_t i = 0; i < num_extra_entries; ++i) {
        file.readString();
        file.readUInt32();
    }

    if (header.compressed)
        readCompressedBody(file, mesh);
    else
        readPlainBody(file, header.version, mesh);
    mesh.build();
}

} // namespace

void readFromFile(const String& path, Mesh& mesh) {
    try {
        const MappedFile mapping(path.view());
        FileReader file(mapping.getBytes());
        readMesh(file, mesh);
    } catch (const std::bad_alloc&) {
        throw VelmarException("Bad allocation while reading from file.");
    }
}

VmmeshHeader readVmmeshHeader(std::string_view path) {
    const MappedFile mapping(path);
    FileReader file(mapping.getBytes());
    return readHeader(file);
}

} // namespace Velmar
