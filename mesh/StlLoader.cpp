#include "velmarcompiler.h"
#include "velmarexceptions.h"

#include "mesh/MeshBuilder.h"
#include "mesh/MeshReaders.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"
#include "utils/numbers/LineShapes.h"
#include "utils/numbers/PlainFloats.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <limits>
#include <string>

namespace Velmar {

namespace {

[[noreturn]] void throwTooSmall() {
    throw Velmar::Exception("Invalid file.  (file size too small)");
}

[[noreturn]] void throwTooMany() {
    throw Velmar::Exception("Invalid file.  (too many triangles)");
}

bool isText(std::string_view content) {
    constexpr std::string_view magic = "solid";
    if (content.size() < magic.size()) throwTooSmall();
    return content.starts_with(magic);
}

/// Parts end between two lines of which the second begins with "facet".
std::size_t findSTLPartEnd(std::string_view text, std::size_t start, std::size_t wanted) {
    return findCut(text, start, wanted, [text](std::size_t offset) {
        if (!isLineStart(text, offset)) return false;
        const std::size_t word = text.find_first_not_of(" \t", offset);
        return word != std::string_view::npos && text.substr(word).starts_with("facet");
    });
}

/// 80 bytes of header and a count; then for each triangle a normal, three vertices and two bytes, all unaligned.
void readBinary(std::string_view file, Mesh& mesh, float scale) {
    constexpr std::size_t count_offset = 80;
    constexpr std::size_t header_size = 84;
    constexpr std::size_t record_size = 50;
    constexpr std::size_t vertices_offset = 12;

    if (file.size() < header_size) throwTooSmall();
    std::uint32_t count = 0;
    std::memcpy(&count, file.data() + count_offset, sizeof count);
    if (file.size() < header_size + std::uint64_t{count} * record_size) throwTooSmall();
    if (count > std::numeric_limits<std::uint32_t>::max() / 3) throwTooMany();

    Vector<Vec3f> vertices;
    Vector<MeshTriangle> triangles;
    vertices.resizeUninitialized(std::size_t{3} * count);
    triangles.resizeUninitialized(count);
    const char* record = file.data() + header_size;
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

/// What is between two numbers of a facet: words and whitespace. Programs write the same for all facets, so it is
/// compared with that of an earlier facet.
class Separator {
  public:
    static constexpr std::size_t max_size = 48;

    /// Takes the bytes from `first` up to `end`. Returns false for too many.
    bool learn(const char* first, const char* end) {
        const auto count = static_cast<std::size_t>(end - first);
        if (count > max_size) return false;
        std::memcpy(bytes, first, count);
        size = count;
        return true;
    }

    /// Moves `p` past the separator if it is there. `max_size` bytes are read.
    VELMAR_ALWAYS_INLINE bool pass(const char*& p) const {
        for (std::size_t at = 0; at < size; at += block_size) {
            const __m128i is_equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + at)),
                                                    _mm_load_si128(reinterpret_cast<const __m128i*>(bytes + at)));
            const auto different = ~static_cast<std::uint32_t>(_mm_movemask_epi8(is_equal));
            // Whether the first difference is after the separator.
            if (static_cast<std::size_t>(lowestBit(different)) < std::min(size - at, block_size)) return false;
        }
        p += size;
        return true;
    }

  private:
    static constexpr std::size_t block_size = 16;

    alignas(16) char bytes[max_size] = {};
    std::size_t size = 0;
};

class TextReader : TextInParts {
  public:
    TextReader(const TextInParts& text, Mesh& filled_mesh, float position_scale)
        : TextInParts(text), mesh(filled_mesh, this), scale(position_scale) {}
    TextReader(const TextReader&) = delete;
    TextReader& operator=(const TextReader&) = delete;

    void read() {
        expect("solid");
        parser.advancePastLineEnd();
        skipBlanks();
        Parser::Token keyword;
        if (!parseKeyword(keyword)) throw Velmar::Exception("Invalid file, expected 'facet' or 'endsolid'");
        while (keyword == "facet") {
            readFacetsOfKnownForm();
            if (!readPlainFacet()) readFacet();
            parseKeyword(keyword);
        }
        if (!(keyword == "endsolid")) throwExpected("endsolid");
        mesh.build();
    }

  private:
    bool parseKeyword(Parser::Token& keyword) {
        if (nextPart()) {
            if (mesh.numVertices() > max_vertices) throwTooMany();
            skipBlanks();
        }
        return parser.parseAlpha(keyword);
    }

    /// Reads facets, from after the first word of one, that have the separators of the last plain one. The cursor
    /// then is after that word of the next one.
    void readFacetsOfKnownForm() {
        if (!knows_form) return;
        while (parser.size - parser.pos >= plain_reach) {
            const char* p = parser.text + parser.pos;
            float corners[3][3];
            if (!passPlainWord(p, normal_word) || (p = normal_shapes.pass(p)) == nullptr) return;
            for (std::size_t i = 0; i < 3; ++i)
                if (!separators[i].pass(p) || !scanPlain(p, corners[i])) return;
            // The word at its end may be the beginning of another one.
            if (!separators[3].pass(p) || Parser::isLetter(*p)) return;
            addFacet(corners);
            parser.pos = static_cast<std::uint32_t>(p - parser.text);
        }
    }

    /// Reads what follows "facet" if it is of the usual form: its words, with a little whitespace between the lines
    /// only, and plain numbers. Otherwise returns false, with the cursor in place and nothing added.
    bool readPlainFacet() {
        if (parser.size - parser.pos < plain_reach) return false;
        const char* p = parser.text + parser.pos;
        float corners[3][3];
        if (!passPlainWord(p, normal_word) || (p = normal_shapes.pass(p)) == nullptr) return false;
        // Until all separators are those of this facet.
        knows_form = false;
        bool learned = true;
        const char* separator = p;
        const auto learn = [&](std::size_t i) { learned = separators[i].learn(separator, p) && learned; };
        if (!passPlainWhitespace(p) || !passPlainWord(p, "outer loop") || !passPlainWhitespace(p)) return false;
        for (std::size_t i = 0; i < 3; ++i) {
            if (!passPlainWord(p, "vertex ")) return false;
            learn(i);
            if (!scanPlain(p, corners[i])) return false;
            separator = p;
            if (!passPlainWhitespace(p)) return false;
        }
        if (!passPlainWord(p, "endloop") || !passPlainWhitespace(p) || !passPlainWord(p, "endfacet") ||
            !passPlainWhitespace(p))
            return false;
        addFacet(corners);
        parser.pos = static_cast<std::uint32_t>(p - parser.text);
        // The next one's first word belongs to the last separator.
        const bool has_next = passPlainWord(p, "facet");
        learn(3);
        knows_form = has_next && learned;
        return true;
    }

    void addFacet(const float (&corners)[3][3]) {
        addTriangle();
        for (const auto& corner : corners)
            addVertex({corner[0], corner[1], corner[2]});
    }

    template <std::size_t size>
    VELMAR_ALWAYS_INLINE static bool passPlainWord(const char*& p, const char (&word)[size]) {
        if (std::memcmp(p, word, size - 1) != 0) return false;
        p += size - 1;
        return true;
    }

    VELMAR_ALWAYS_INLINE bool scanPlain(const char*& p, float (&numbers)[3]) {
        const char* const after = shapes.scan(p, numbers);
        if (after == nullptr) return false;
        p = after;
        return true;
    }

    VELMAR_ALWAYS_INLINE static bool passPlainWhitespace(const char*& p) {
        for (const char* const end = p + max_plain_whitespace; p < end; ++p)
            if (!Parser::isBlank(*p) && !Parser::isLineEnd(*p)) return true;
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

    static constexpr std::ptrdiff_t max_plain_whitespace = 32;
    /// More than is read of a plain facet: words, numbers and whitespace.
    static constexpr std::uint32_t plain_reach = 128 + 4 * PlainFloats::reach + 7 * max_plain_whitespace;
    static constexpr char normal_word[] = " normal ";
    /// The indices of those of the next part must have 32 bits too.
    static constexpr std::size_t max_vertices = std::numeric_limits<std::uint32_t>::max() / 2;

    MeshBuilder mesh;
    float scale;
    PlainFloats::LineShapes shapes;
    PlainFloats::LineShapes normal_shapes;
    /// Between the normal, the three vertices and the next facet.
    Separator separators[4];
    bool knows_form = false;
};

} // namespace

void loadSTL(std::string_view path, Mesh& mesh, float scale) {
    const MappedFile file(path);
    if (isText(file.getText()))
        TextReader(TextInParts(parserOver(file)), mesh, scale).read();
    else
        readBinary(file.getText(), mesh, scale);
}

void readSTL(std::string_view content, Mesh& mesh, float scale, std::size_t part_size) {
    if (isText(content))
        TextReader(TextInParts(content, part_size, findSTLPartEnd), mesh, scale).read();
    else
        readBinary(content, mesh, scale);
}

} // namespace Velmar
