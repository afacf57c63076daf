#include "tests/support/VmmeshBytes.h"

#include <stdexcept>
#include <vector>
#include <zstd.h>

namespace TestSupport {

std::string decompressed(std::string_view frame) {
    const auto size = ZSTD_getFrameContentSize(frame.data(), frame.size());
    if (size == ZSTD_CONTENTSIZE_ERROR || size == ZSTD_CONTENTSIZE_UNKNOWN) throw std::runtime_error("no content size");
    std::string content(static_cast<std::size_t>(size), '\0');
    if (ZSTD_decompress(content.data(), content.size(), frame.data(), frame.size()) != content.size())
        throw std::runtime_error("damaged frame");
    return content;
}

std::string compressed(std::string_view content) {
    std::string frame(ZSTD_compressBound(content.size()), '\0');
    frame.resize(ZSTD_compress(frame.data(), frame.size(), content.data(), content.size(), 1));
    return frame;
}

namespace {

class Words {
  public:
    explicit Words(std::string_view bytes) : rest(bytes) {}

    std::string_view take(std::size_t size) {
        if (size > rest.size()) throw std::runtime_error("file too short");
        const std::string_view taken = rest.substr(0, size);
        rest.remove_prefix(size);
        return taken;
    }
    template <class T>
    T next() {
        T value;
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
        return value;
    }
    std::uint32_t u32() { return next<std::uint32_t>(); }
    void expectEnd() const {
        if (!rest.empty()) throw std::runtime_error("bytes after the end");
    }

  private:
    std::string_view rest;
};

void expect(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

template <class T>
void readRecords(Words& words, Velmar::Vector<T>& records) {
    for (std::uint32_t count = words.u32(); count > 0; --count)
        records.push_back(words.next<T>());
}

/// The indices of one corner list, relative to the first of the record before and then to their own first.
template <std::size_t corners>
void addDifferences(std::uint32_t (&indices)[corners], std::uint32_t& previous_first) {
    indices[0] += previous_first;
    for (std::size_t corner = 1; corner < corners; ++corner)
        indices[corner] += indices[0];
    previous_first = indices[0];
}

template <class Face>
void undoDifferences(Velmar::Vector<Face>& faces) {
    std::uint32_t vertex = 0;
    std::uint32_t uv = 0;
    for (Face& face : faces) {
        addDifferences(face.vertex_indices, vertex);
        addDifferences(face.uv_indices, uv);
    }
}

void readSixFields(Words& words, Velmar::Mesh& mesh) {
    readRecords(words, mesh.verts);
    readRecords(words, mesh.normals);
    mesh.uv_layout = words.u32();
    readRecords(words, mesh.uv_pairs);
    readRecords(words, mesh.triangles);
    readRecords(words, mesh.quads);
    words.expectEnd();
}

} // namespace

void readIndependently(std::string_view file, Velmar::Mesh& mesh) {
    Words words(file);
    expect(words.take(4) == std::string_view("oCS\0", 4), "magic");
    expect(words.u32() == 4, "version");
    const std::uint32_t is_compressed = words.u32();
    expect(is_compressed <= 1, "compression flag");
    expect(words.u32() == 1, "reserved word");
    mesh.num_uv_mappings = words.u32();
    for (std::uint32_t count = words.u32(); count > 0; --count) {
        const std::uint32_t length = words.u32();
        mesh.used_materials.push_back(Velmar::String(words.take(length)));
    }
    expect(words.u32() == 0, "extra entries");
    if (is_compressed == 0) {
        readSixFields(words, mesh);
        return;
    }
    const auto frame_size = words.next<std::uint64_t>();
    const std::string inner = decompressed(words.take(static_cast<std::size_t>(frame_size)));
    words.expectEnd();
    Words inner_words(inner);
    readSixFields(inner_words, mesh);
    undoDifferences(mesh.triangles);
    undoDifferences(mesh.quads);
}

} // namespace TestSupport
