#include "velmarcompiler.h"
#include "velmarexceptions.h"
#include "velmarstring.h"

#include "mesh/Mesh.h"
#include "mesh/MeshBuilder.h"
#include "mesh/MeshReaders.h"
#include "mesh/ObjVertices.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"
#include "utils/numbers/Digits.h"
#include "utils/numbers/LineShapes.h"
#include "utils/numbers/PlainFloats.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Velmar {

namespace {

constexpr std::uint32_t max_corners = 256;

/// Parts end between two lines, unless a backslash may join them.
std::size_t findOBJPartEnd(std::string_view text, std::size_t start, std::size_t wanted) {
    return findCut(text, start, wanted, [text](std::size_t offset) {
        if (!isLineStart(text, offset)) return false;
        std::size_t line = offset - 1;
        while (line > 0 && !isLineStart(text, line))
            if (text[--line] == '\\') return false;
        return true;
    });
}

class ObjReader : TextInParts {
  public:
    ObjReader(std::string_view file_path, const TextInParts& text, Mesh& filled_mesh, float position_scale)
        : TextInParts(text), path(file_path), scale(position_scale), mesh(filled_mesh, this) {}
    ObjReader(const ObjReader&) = delete;
    ObjReader& operator=(const ObjReader&) = delete;

    /// Null: no library is read.
    MTLLibrary* library = nullptr;
    /// Null: the names aren't collected.
    std::vector<std::string>* library_names = nullptr;

    void read() {
        do {
            while (!parser.atEnd()) {
                ++line_num;
                if (readPlainLine()) continue;
                addWaitingFaces();
                readLine();
            }
            addWaitingFaces();
        } while (nextPart());
        readLastLibraryAgain();
        mesh.build();
    }

  private:
    // ---- the fast path: lines as nearly all programs write them, without anything that could fail -------------------

    // Faces wait until the processor has fetched what is known of their positions, and again for their vertices: in
    // meshes that weren't made in order both may be anywhere.
    static constexpr std::uint32_t max_waiting = 32;
    static constexpr std::uint32_t max_waiting_corners = 4;

    struct WaitingFace {
        /// Their positions, and later their vertices.
        std::uint32_t corners[max_waiting_corners];
        /// Those of the vertices' keys.
        std::uint32_t normals[max_waiting_corners];
        std::uint32_t uvs[max_waiting_corners];
        std::uint32_t num_corners;
        /// Bit i is set if corner i has a normal.
        std::uint32_t has_normal;

        /// Without normals, and with the UV indices that an earlier face left.
        void start(const std::uint32_t* earlier_uvs) {
            static_assert(ObjVertices::key_without_normal == 0);
            std::memset(normals, 0, sizeof normals);
            std::memcpy(uvs, earlier_uvs, sizeof uvs);
            has_normal = 0;
        }
    };

    /// How many bytes from the start of a number or a corner must be readable.
    static constexpr std::uint32_t plain_reach = PlainFloats::reach + 4;

    /// Reads the line at the cursor if it has the usual form and is valid. Otherwise returns false, and the slow path
    /// reads the same line from its start.
    bool readPlainLine() {
        if (parser.size - parser.pos < plain_reach) return false;
        const char* const p = parser.text + parser.pos;
        if (p[0] == 'f') return p[1] == ' ' && readPlainFace(p + 2);
        if (p[0] != 'v') return false;
        addWaitingFaces();
        // Some programs write two blanks here.
        if (p[1] == ' ') return readPlainPosition(p[2] == ' ' ? p + 3 : p + 2);
        if (p[2] != ' ') return false;
        if (p[1] == 't') return readPlainTexCoord(p + 3);
        return p[1] == 'n' && readPlainNormal(p + 3);
    }

    bool readPlainPosition(const char* p) {
        float numbers[3];
        if ((p = shapes.scan(p, numbers)) == nullptr) return false;
        vertices.addPosition({numbers[0] * scale, numbers[1] * scale, numbers[2] * scale});
        passLineFrom(p);
        return true;
    }

    bool readPlainNormal(const char* p) {
        float numbers[3];
        if ((p = shapes.scan(p, numbers)) == nullptr) return false;
        vertices.addNormal({numbers[0], numbers[1], numbers[2]});
        passLineFrom(p);
        return true;
    }

    bool readPlainTexCoord(const char* p) {
        float numbers[2];
        if ((p = PlainFloats::scan(p, numbers)) == nullptr) return false;
        addTexCoord({numbers[0], numbers[1]});
        passLineFrom(p);
        return true;
    }

    bool readPlainFace(const char* p) {
        if (current_material < 0) return false;
        vertices.preparePositions();
        std::uint64_t stops = Digits::findOthers<48>(p);
        WaitingFace& face = waiting_faces[num_waiting];
        face.start(uv_indices);
        if (p[lowestBit(stops)] == ' ') {
            p = readPlainFaceOfPositions(p, stops, face);
        } else {
            for (face.num_corners = 0;; stops = Digits::findOthers<32>(p)) {
                // Larger faces are rare.
                if (face.num_corners == max_waiting_corners || parser.text + parser.size - p < plain_reach)
                    return false;
                if ((p = readPlainCorner(p, stops, face)) == nullptr) return false;
                ++face.num_corners;
                if (*p == ' ') ++p;
                if (Parser::isLineEnd(*p)) break;
            }
            if (face.num_corners < 3) return false;
        }
        if (p == nullptr || !acceptsUVs(face)) return false;
        std::memcpy(uv_indices, face.uvs, sizeof face.uvs);
        passLineFrom(p);
        if (++num_waiting == max_waiting) addWaitingFaces();
        return true;
    }

    /// A triangle or a quad of positions alone. `stops`: bit i is set if p[i] is not a digit. Returns the line's end,
    /// or null for any other.
    const char* readPlainFaceOfPositions(const char* p, std::uint64_t stops, WaitingFace& face) {
        // The places after the numbers.
        const std::size_t a = takeLowestBit(stops);
        const std::size_t b = takeLowestBit(stops);
        const std::size_t c = takeLowestBit(stops);
        if (p[b] != ' ' || !isIndexLength(a) || !isIndexLength(b - a - 1) || !isIndexLength(c - b - 1)) return nullptr;
        std::size_t end = c;
        std::size_t fourth_length = 0;
        if (p[c] == ' ') {
            end = takeLowestBit(stops);
            fourth_length = end - c - 1;
            // There is no fourth number if only a blank ends the line.
            if (fourth_length > max_index_length) return nullptr;
        }
        if (!Parser::isLineEnd(p[end])) return nullptr;

        const Digits::Four positions = Digits::join(Digits::makePair(p, a, p + a + 1, b - a - 1),
                                                    Digits::makePair(p + b + 1, c - b - 1, p + c + 1, fourth_length))
                                           .minusOne();
        face.num_corners = fourth_length == 0 ? 3 : 4;
        positions.store(face.corners);
        const bool fine = isPosition(positions.get<0>()) && isPosition(positions.get<1>()) &&
                          isPosition(positions.get<2>()) && (fourth_length == 0 || isPosition(positions.get<3>()));
        return fine ? p + end : nullptr;
    }

    VELMAR_ALWAYS_INLINE bool isPosition(std::uint32_t position) const {
        if (position >= vertices.numPositions()) return false;
        vertices.prefetch(position);
        return true;
    }

    /// Reads the next corner, of indices that count from 1. Returns the place after it, or null for any other. `stops`:
    /// bit i is set if p[i] is not a digit.
    const char* readPlainCorner(const char* p, std::uint64_t stops, WaitingFace& face) const {
        const std::size_t position_length = takeLowestBit(stops);
        if (!isIndexLength(position_length)) return nullptr;
        const char* end = p + position_length;
        const char* uv_at = p;
        const char* normal_at = p;
        std::size_t uv_length = 0;
        std::size_t normal_length = 0;
        if (*end == '/') {
            uv_at = end + 1;
            end = p + takeLowestBit(stops);
            uv_length = static_cast<std::size_t>(end - uv_at);
            if (uv_length > max_index_length) return nullptr;
            if (*end == '/') {
                normal_at = end + 1;
                end = p + takeLowestBit(stops);
                normal_length = static_cast<std::size_t>(end - normal_at);
                if (!isIndexLength(normal_length)) return nullptr;
            }
        }
        if (*end != ' ' && !Parser::isLineEnd(*end)) return nullptr;

        const Digits::Four indices = Digits::join(Digits::makePair(p, position_length, uv_at, uv_length),
                                                  Digits::makePair(normal_at, normal_length, p, 0))
                                         .minusOne();
        const std::uint32_t corner = face.num_corners;
        face.corners[corner] = indices.get<0>();
        if (!isPosition(face.corners[corner])) return nullptr;
        if (uv_length != 0) {
            const std::uint32_t uv = indices.get<1>();
            if (uv == before_first) return nullptr;
            face.uvs[corner] = uv;
        }
        if (normal_length != 0) {
            const std::uint32_t normal = indices.get<2>();
            if (normal >= vertices.numNormals()) return nullptr;
            face.normals[corner] = normal;
            face.has_normal |= 1U << corner;
        }
        return end;
    }

    VELMAR_ALWAYS_INLINE bool acceptsUVs(const WaitingFace& face) const {
        if (!mesh.hasUVs()) return true;
        for (std::uint32_t corner = 0; corner < face.num_corners; ++corner)
            if (!mesh.acceptsUV(face.uvs[corner])) return false;
        return true;
    }

    /// Adds the faces that wait.
    void addWaitingFaces() {
        if (num_waiting == 0) return;
        const std::uint32_t count = std::exchange(num_waiting, 0);
        std::uint32_t complete = 0;
        try {
            for (; complete < count; ++complete)
                findVertices(waiting_faces[complete]);
        } catch (...) {
            addFaces(complete);
            throw;
        }
        addFaces(count);
    }

    /// Replaces the positions of a face by their vertices.
    VELMAR_ALWAYS_INLINE void findVertices(WaitingFace& face) {
        for (std::uint32_t i = 0; i < 3; ++i)
            findVertex(face, i);
        if (face.num_corners == 4) findVertex(face, 3);
        mesh.prefetchVertices(face.corners[0], face.corners[1], face.corners[2]);
    }

    VELMAR_ALWAYS_INLINE void findVertex(WaitingFace& face, std::uint32_t i) {
        face.corners[i] = vertices.vertexFor(face.corners[i], face.normals[i], (face.has_normal >> i & 1) != 0);
    }

    /// Adds the first `count` faces, whose vertices have been found.
    void addFaces(std::uint32_t count) {
        const auto material = static_cast<std::uint32_t>(current_material);
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto& [v, normals, uv, num_corners, has_normal] = waiting_faces[i];
            if (num_corners == 3)
                mesh.addTriangleOfVertices({v[0], v[1], v[2]}, {uv[0], uv[1], uv[2]}, material);
            else
                mesh.addQuadOfVertices({v[0], v[1], v[2], v[3]}, {uv[0], uv[1], uv[2], uv[3]}, material);
        }
    }

    static constexpr std::size_t max_index_length = 8;

    /// Returns false for negative lengths too.
    static bool isIndexLength(std::size_t length) { return length - 1 < max_index_length; }

    static std::size_t takeLowestBit(std::uint64_t& bits) {
        const std::size_t bit = lowestBit(bits);
        bits &= bits - 1;
        return bit;
    }

    /// Skips the rest of a line that has been read up to `p`.
    void passLineFrom(const char* p) {
        parser.pos = static_cast<std::uint32_t>(p - parser.text);
        if (*p == '\n') [[likely]]
            ++parser.pos;
        else
            parser.advancePastLineEnd();
    }

    // ---- the slow path: everything that may be in a file
    // -------------------------------------------------------------

    void readLine() {
        parser.skipSpacesAndTabs();
        Parser::Token keyword;
        // A comment has no letters at its start, like any other line without a keyword.
        if (parser.parseAlpha(keyword)) readStatement(keyword);
        parser.advancePastLineEnd();
    }

    void readStatement(const Parser::Token& keyword) {
        switch (keyword.size) {
        case 1:
            if (keyword.data[0] == 'v')
                readPosition();
            else if (keyword.data[0] == 'f')
                readFace();
            return;
        case 2:
            if (keyword == "vt")
                readTexCoord();
            else if (keyword == "vn")
                readNormal();
            return;
        default:
            if (keyword == "usemtl")
                takeMaterial(readToken());
            else if (keyword == "mtllib")
                readMaterialLibrary();
        }
    }

    bool readNumber(float& number) {
        parser.skipBlanks();
        return parser.parseFloat(number);
    }

    bool readTriple(Vec3f& triple) {
        const bool x = readNumber(triple.x);
        const bool y = readNumber(triple.y);
        const bool z = readNumber(triple.z);
        return x && y && z;
    }

    void readPosition() {
        Vec3f p;
        if (!readTriple(p)) throwAtLine("Parse error while reading position on line ");
        vertices.addPosition({p.x * scale, p.y * scale, p.z * scale});
    }

    void readTexCoord() {
        Vec2f uv;
        const bool u = readNumber(uv.x);
        const bool v = readNumber(uv.y);
        if (!u || !v) throwAtLine("Parse error while reading tex coord on line ");
        addTexCoord(uv);
    }

    void addTexCoord(const Vec2f& uv) {
        if (num_uvs == 0) mesh.raiseNumUVMappings(1);
        mesh.addUV(uv);
        ++num_uvs;
    }

    void readNormal() {
        Vec3f normal;
        if (!readTriple(normal)) throwAtLine("Parse error while reading normal on line ");
        vertices.addNormal(normal);
    }

    void readFace() {
        vertices.preparePositions();
        std::uint32_t corners = 0;
        while (corners < max_corners) {
            parser.skipBlanks();
            if (parser.atEnd() || Parser::isLineEnd(parser.current())) break;
            readCorner(corners);
            ++corners;
        }
        if (corners < 3)
            throw Velmar::Exception("Invalid number of vertices in face: " + std::to_string(corners) + " (line " +
                                    std::to_string(line_num) + ")");
        if (current_material < 0) takeMaterial("default");
        addFace(corners);
    }

    void readCorner(std::uint32_t corner) {
        std::int32_t index = 0;
        if (!parser.parseInt(index)) throwSyntaxError("f");
        constexpr const char* position_invalid = "Position index invalid.";
        const std::int32_t position = fromZero(index, vertices.numPositions(), position_invalid);

        std::int32_t normal = ObjVertices::key_without_normal;
        bool has_normal = false;
        if (passSlash()) {
            // Without a number the corner keeps the UV index that an earlier face left there.
            if (parser.parseInt(index))
                uv_indices[corner] = static_cast<std::uint32_t>(fromZero(index, num_uvs, "Invalid tex coord index."));
            if (passSlash()) {
                if (!parser.parseInt(index)) throwSyntaxError("/");
                normal = fromZero(index, vertices.numNormals(), "Invalid normal index.");
                has_normal = true;
            }
        }

        const auto position_at = static_cast<std::uint32_t>(position);
        const auto normal_at = static_cast<std::uint32_t>(normal);
        // As unsigned numbers negative indices are out of bounds like too large ones.
        if (position_at >= vertices.numPositions()) throwInvalidIndex(position_invalid, position);
        if (has_normal && normal_at >= vertices.numNormals()) throwInvalidIndex("Normal index invalid.", normal);
        vertex_indices[corner] = vertices.vertexFor(position_at, normal_at, has_normal);
    }

    bool passSlash() {
        if (parser.atEnd() || parser.current() != '/') return false;
        ++parser.pos;
        return true;
    }

    /// A file's index as one that counts from 0: negative ones count back from the last of `count` so far. The result
    /// isn't checked against `count`, and is negative when it lies before the first.
    std::int32_t fromZero(std::int32_t index, std::uint64_t count, const char* what) const {
        if (index > 0) [[likely]]
            return index - 1;
        if (index == 0) throwInvalidIndex(what, 0);
        return static_cast<std::int32_t>(count) + index;
    }

    void addFace(std::uint32_t corners) {
        if (corners == 3)
            addTriangle(1, 2);
        else if (corners == 4)
            addQuad();
        else
            for (std::uint32_t i = 1; i + 1 < corners; ++i)
                addTriangle(i, i + 1);
    }

    /// Of the first corner and two others.
    VELMAR_ALWAYS_INLINE void addTriangle(std::uint32_t second, std::uint32_t third) {
        const std::uint32_t(&v)[max_corners] = vertex_indices;
        const std::uint32_t(&uv)[max_corners] = uv_indices;
        mesh.addTriangleOfVertices({v[0], v[second], v[third]}, {uv[0], uv[second], uv[third]},
                                   static_cast<std::uint32_t>(current_material));
    }

    void addQuad() {
        const auto& v = vertex_indices;
        const auto& uv = uv_indices;
        mesh.addQuadOfVertices({v[0], v[1], v[2], v[3]}, {uv[0], uv[1], uv[2], uv[3]},
                               static_cast<std::uint32_t>(current_material));
    }

    void takeMaterial(std::string_view name) { current_material = static_cast<std::int32_t>(mesh.useMaterial(name)); }

    void readMaterialLibrary() {
        const std::string name(readToken());
        // A file may name a library any number of times.
        const bool is_new = known_libraries.insert(name).second;
        if (library_names != nullptr && is_new && !name.empty()) library_names->push_back(name);
        if (library == nullptr) return;
        const std::string library_path = FileUtils::join(FileUtils::getDirectory(path), name);
        if (!FileUtils::fileExists(library_path)) return;
        if (is_new) loadMTL(library_path, *library);
        last_library = library_path;
    }

    /// The last library that the file names replaces the others.
    void readLastLibraryAgain() {
        if (library != nullptr && !last_library.empty() && last_library != library->path)
            loadMTL(last_library, *library);
    }

    std::string_view readToken() {
        parser.skipBlanks();
        Parser::Token token;
        parser.parseNonBlankToken(token);
        return token.view();
    }

    [[noreturn]] void throwAtLine(const char* what) const { throw Velmar::Exception(what + std::to_string(line_num)); }

    [[noreturn]] void throwSyntaxError(const char* before) const {
        throw Velmar::Exception("syntax error: no integer following '" + std::string(before) + "' (line " +
                                std::to_string(line_num) + ")");
    }

    [[noreturn]] void throwInvalidIndex(const char* what, std::int32_t index) const {
        throw Velmar::Exception(what + (" (index '" + std::to_string(index)) + "' out of bounds, on line " +
                                std::to_string(line_num) + ")");
    }

    /// Of an index that counts from 1 and is 0.
    static constexpr std::uint32_t before_first = 0xFFFFFFFF;

    std::string_view path;
    float scale;
    MeshBuilder mesh;
    ObjVertices vertices{mesh, *this};

    WaitingFace waiting_faces[max_waiting];
    std::uint32_t num_waiting = 0;
    PlainFloats::LineShapes shapes;
    std::uint64_t line_num = 0;
    std::uint64_t num_uvs = 0;
    std::uint32_t vertex_indices[max_corners] = {};
    /// Not cleared between faces.
    std::uint32_t uv_indices[max_corners] = {};
    std::int32_t current_material = -1;
    std::unordered_set<std::string> known_libraries;
    std::string last_library;
};

} // namespace

void loadOBJ(std::string_view path, Mesh& mesh, float scale, bool parse_mtllib, MTLLibrary& library) {
    const MappedFile file(path);
    ObjReader reader(path, TextInParts(parserOver(file)), mesh, scale);
    if (parse_mtllib) reader.library = &library;
    reader.read();
}

void readOBJ(std::string_view text, Mesh& mesh, float scale, std::vector<std::string>& library_names,
             std::size_t part_size) {
    ObjReader reader({}, TextInParts(text, part_size, findOBJPartEnd), mesh, scale);
    reader.library_names = &library_names;
    reader.read();
}

} // namespace Velmar
