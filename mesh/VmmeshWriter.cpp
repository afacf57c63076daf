#include "velmarexceptions.h"
#include "velmarmemory.h"

#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "mesh/VmmeshFormat.h"
#include "utils/BinaryStreams.h"
#include "utils/ByteArrays.h"
#include "utils/FileUtils.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <zstd.h>

namespace Velmar {

namespace {

constexpr int compression_level = 1;

class FileWriter {
  public:
    explicit FileWriter(std::ofstream& stream) : file(stream) {}

    void write(const void* bytes, std::size_t size) {
        file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    }
    void write(std::uint32_t word) { write(&word, sizeof word); }
    void write(std::uint64_t word) { write(&word, sizeof word); }

    /// Only the low 32 bits are compared: that is what the file holds.
    void writeCount(std::size_t count) {
        const auto word = static_cast<std::uint32_t>(count);
        if (word > VmmeshFormat::max_count) throw VelmarException("Vector too long.");
        write(word);
    }

    template <class T>
    void writeBlock(const Vector<T>& records) {
        writeCount(records.size());
        write(records.data(), records.size() * sizeof(T));
    }

  private:
    std::ofstream& file;
};

void writePreamble(FileWriter& file, const Mesh& mesh, bool use_compression) {
    file.write(VmmeshFormat::magic);
    file.write(VmmeshFormat::newest_version);
    file.write(std::uint32_t{use_compression});
    file.write(VmmeshFormat::reserved_word);
    file.write(mesh.num_uv_mappings);

    file.writeCount(mesh.used_materials.size());
    for (const String& name : mesh.used_materials) {
        if (name.size() > VmmeshFormat::max_string_length) throw VelmarException("String too long.");
        file.write(static_cast<std::uint32_t>(name.size()));
        file.write(name.data(), name.size());
    }

    constexpr std::uint32_t no_extra_entries = 0;
    file.write(no_extra_entries);
}

void writePlainBody(FileWriter& file, const Mesh& mesh) {
    file.writeBlock(mesh.verts);
    file.writeBlock(mesh.normals);
    file.write(mesh.uv_layout);
    file.writeBlock(mesh.uv_pairs);
    file.writeBlock(mesh.triangles);
    file.writeBlock(mesh.quads);
}

template <class T>
void appendBlock(BufferOutStream& buffer, const Vector<T>& records) {
    buffer.writeUInt32(static_cast<std::uint32_t>(records.size()));
    buffer.writeData(records.data(), records.size() * sizeof(T));
}

template <class Face>
void appendFaces(BufferOutStream& buffer, const Vector<Face>& faces) {
    buffer.writeUInt32(static_cast<std::uint32_t>(faces.size()));
    FaceDeltaFilter::encode(faces.data(), faces.size(), buffer.buf.extendUninitialized(faces.size() * sizeof(Face)));
}

/// The body before compression, in a buffer that is allocated once, at its exact size.
void fillInnerBlock(BufferOutStream& buffer, const Mesh& mesh) {
    constexpr std::size_t six_words = 6 * sizeof(std::uint32_t);
    buffer.buf.reserve((mesh.verts.size() + mesh.normals.size()) * sizeof(Vec3f) + six_words +
                       mesh.uv_pairs.size() * sizeof(Vec2f) + mesh.triangles.size() * sizeof(MeshTriangle) +
                       mesh.quads.size() * sizeof(MeshQuad));
    appendBlock(buffer, mesh.verts);
    appendBlock(buffer, mesh.normals);
    buffer.writeUInt32(mesh.uv_layout);
    appendBlock(buffer, mesh.uv_pairs);
    appendFaces(buffer, mesh.triangles);
    appendFaces(buffer, mesh.quads);
}

void writeCompressedBody(FileWriter& file, const Mesh& mesh) {
    BufferOutStream inner;
    fillInnerBlock(inner, mesh);

    AlignedByteArray frame;
    frame.resizeUninitialized(ZSTD_compressBound(inner.buf.size()));
    const std::size_t compressed_size =
        ZSTD_compress(frame.data(), frame.size(), inner.buf.data(), inner.buf.size(), compression_level);
    // Into a buffer of the bound's size it fails only if zstd itself is out of memory.
    if (ZSTD_isError(compressed_size) != 0) throw BadAlloc();

    file.write(std::uint64_t{compressed_size});
    file.write(frame.data(), compressed_size);
}

[[noreturn]] void throwNotWritten(const String& path) {
    throw VelmarException(toVelmarString("Error while writing to '" + toStdString(path) + "'."));
}

/// Writes the file `file_path` through `stream`, which stays open. Messages name `final_path`.
void writeFile(std::ofstream& stream, std::string_view file_path, const String& final_path, const Mesh& mesh,
               bool use_compression) {
    mesh.checkConsistency();
    if (!FileUtils::openOutputFile(stream, file_path, false))
        throw VelmarException(toVelmarString("Failed to open file '" + toStdString(final_path) + "' for writing."));

    FileWriter file(stream);
    writePreamble(file, mesh, use_compression);
    if (use_compression)
        writeCompressedBody(file, mesh);
    else
        writePlainBody(file, mesh);

    // The destructor's close ignores errors.
    stream.flush();
    if (stream.fail()) throwNotWritten(final_path);
}

} // namespace

void writeToFile(const String& path, const Mesh& mesh, bool use_compression) {
    std::ofstream stream;
    writeFile(stream, path.view(), path, mesh, use_compression);
}

void writeToFileAtomically(const String& path, const Mesh& mesh, bool use_compression) {
    FileUtils::TemporaryFile temporary(path.view());
    {
        std::ofstream stream;
        writeFile(stream, temporary.path(), path, mesh, use_compression);
        stream.close();
        if (stream.fail()) throwNotWritten(path);
    }
    // A reader may keep Windows from replacing the file that another writer of the same mesh has finished by now.
    if (!temporary.moveToFinalPath() && !FileUtils::fileExists(path.view())) throwNotWritten(path);
}

} // namespace Velmar
