#include "velmarexceptions.h"

#include "mesh/MeshBuilder.h"
#include "mesh/MeshReaders.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"
#include "utils/numbers/PlainFloats.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace Velmar {

namespace {

constexpr std::string_view text_magic = "solid";

[[noreturn]] void throwTooSmall() {
    throw Velmar::Exception("Invalid file.  (file size too small)");
}

/// 80 bytes of header and a count; then for each triangle a normal, three vertices and two bytes, all unaligned.
void readBinary(std::span<const std::uint8_t> file, Mesh& mesh, float scale) {
    constexpr std::size_t count_offset = 80;
    constexpr std::size_t header_size = 84;
    constexpr std::size_t record_size = 50;
    constexpr std::size_t vertices_offset = 12;

    if (file.size() < header_size) throwTooSmall();
    std::uint32_t count = 0;
    std::memcpy(&count, file.data() + count_offset, sizeof count);
    if (file.size() < header_size + std::uint64_t{count} * record_size) throwTooSmall();
    if (count > std::numeric_limits<std::uint32_t>::max() / 3)
        throw Velmar::Exception("Invalid file.  (too many triangles)");

    Vector<Vec3f> vertices;
    Vector<MeshTriangle> triangles;
    vertices.resizeUninitialized(std::size_t{3} * count);
    triangles.resizeUninitialized(count);
    const std::uint8_t* record = file.data() + header_size;
    Vec3f* vertex = vertices.data();
    MeshTriangle* triangle = triangles.data();
    for (std::uint32_t i = 0; i < count; ++i, record += record_size) {
        Vec3f corners[3];
        std::memcpy(corners, record + vertices_offset, sizeof corners);
        for (const Vec3f& corner : corners)
            *vertex++ = {corner.x * scale, corner.y * scale, corner.z * scale};
        *triangle++ = {{3 * i, 3 * i + 1, 3 * i + 2}, {0, 0, 0}, 0};
    }
    mesh.verts.swap(vertices);
    mesh.triangles.swap(triangles);
    mesh.build();
}

class TextReader {
  public:
    TextReader(Parser text, Mesh& filled_mesh, float position_scale)
        : parser(text), mesh(filled_mesh, &parser), scale(position_scale) {}
    TextReader(const TextReader&) = delete;
    TextReader& operator=(const TextReader&) = delete;

    void read() {
        expect("solid");
        parser.advancePastLineEnd();
        skipBlanks();
        Parser::Token keyword;
        if (!parser.parseAlpha(keyword)) throw Velmar::Exception("Invalid file, expected 'facet' or 'endsolid'");
        while (keyword == "facet") {
            if (!readPlainFacet()) readFacet();
            parser.parseAlpha(keyword);
        }
        if (!(keyword == "endsolid")) throwExpected("endsolid");
        mesh.build();
    }

  private:
    /// Reads what follows "facet" if it is of the usual form: its words, with whitespace between the lines only, and
    /// plain numbers. Otherwise returns false, with the cursor in place and nothing added.
    bool readPlainFacet() {
        const char* p = parser.text + parser.pos;
        float corners[3][3];
        if (!passPlainWord(p, " normal ") || !passPlain(p, PlainFloats::pass) || !passPlainWhitespace(p) ||
            !passPlainWord(p, "outer loop") || !passPlainWhitespace(p))
            return false;
        for (auto& corner : corners) {
            const auto scan = [&corner](const char* first) { return PlainFloats::scanWithExponents(first, corner); };
            if (!passPlainWord(p, "vertex ") || !passPlain(p, scan) || !passPlainWhitespace(p)) return false;
        }
        if (!passPlainWord(p, "endloop") || !passPlainWhitespace(p) || !passPlainWord(p, "endfacet") ||
            !passPlainWhitespace(p))
            return false;

        addTriangle();
        for (const auto& corner : corners)
            addVertex({corner[0], corner[1], corner[2]});
        parser.pos = static_cast<std::uint32_t>(p - parser.text);
        return true;
    }

    bool isFarFromEnd(const char* p) const { return parser.text + parser.size - p >= std::ptrdiff_t{plain_reach}; }

    template <std::size_t size>
    bool passPlainWord(const char*& p, const char (&word)[size]) const {
        static_assert(size <= plain_reach);
        if (!isFarFromEnd(p) || std::memcmp(p, word, size - 1) != 0) return false;
        p += size - 1;
        return true;
    }

    /// `scan` returns the place after what it skips, or null.
    template <class Scan>
    bool passPlain(const char*& p, Scan scan) const {
        if (!isFarFromEnd(p)) return false;
        p = scan(p);
        return p != nullptr;
    }

    /// False near the end of the file.
    bool passPlainWhitespace(const char*& p) const {
        while (isFarFromEnd(p)) {
            if (!Parser::isBlank(*p) && !Parser::isLineEnd(*p)) return true;
            ++p;
        }
        return false;
    }

    void readFacet() {
        skipBlanks();
        expect("normal");
        skipBlanks();
        Vec3f ignored;
        readTriple(ignored);

        expect("outer");
        skipBlanks();
        expect("loop");
        skipWhitespace();
        addTriangle();
        for (int corner = 0; corner < 3; ++corner) {
            expect("vertex");
            skipBlanks();
            Vec3f position = {0.0f, 0.0f, 0.0f};
            readTriple(position);
            addVertex(position);
        }
        expect("endloop");
        skipWhitespace();
        expect("endfacet");
        skipWhitespace();
    }

    /// Of the three vertices that come next.
    void addTriangle() {
        const auto first = static_cast<std::uint32_t>(mesh.numVertices());
        mesh.addAnyTriangle({first, first + 1, first + 2}, {0, 0, 0}, 0);
    }

    void addVertex(const Vec3f& position) {
        mesh.addVertex({position.x * scale, position.y * scale, position.z * scale});
    }

    /// A number that isn't there leaves its component as it was.
    void readTriple(Vec3f& triple) {
        parser.parseFloat(triple.x);
        skipBlanks();
        parser.parseFloat(triple.y);
        skipBlanks();
        parser.parseFloat(triple.z);
        skipWhitespace();
    }

    void expect(const char* keyword) {
        if (!parser.parseString(keyword)) throwExpected(keyword);
    }

    [[noreturn]] static void throwExpected(const char* keyword) {
        throw Velmar::Exception("Invalid file, expected '" + std::string(keyword) + "'");
    }

    void skipBlanks() { parser.skipSpacesAndTabs(); }

    void skipWhitespace() {
        while (!parser.atEnd() && (Parser::isBlank(parser.current()) || Parser::isLineEnd(parser.current())))
            ++parser.pos;
    }

    static constexpr std::size_t plain_reach = PlainFloats::reach;

    Parser parser;
    MeshBuilder mesh;
    float scale;
};

} // namespace

void loadSTL(std::string_view path, Mesh& mesh, float scale) {
    const MappedFile file(path);
    if (file.getSize() < text_magic.size()) throwTooSmall();
    if (file.getText().starts_with(text_magic))
        TextReader(parserOver(file), mesh, scale).read();
    else
        readBinary(file.getBytes(), mesh, scale);
}

} // namespace Velmar
