#include "mesh/ObjLoader.h"

#include "velmarexceptions.h"
#include "velmarstring.h"
#include "velmarvector.h"

#include "mesh/Mesh.h"
#include "mesh/MtlLoader.h"
#include "mesh/ObjVertexMap.h"
#include "mesh/TextLines.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/Parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Velmar {

namespace {

constexpr std::uint32_t max_corners = 256;
constexpr int most_plain_digits = 9;
constexpr std::uint32_t no_vertex = 0xFFFFFFFF;
/// The second half of the key of a corner without a normal: it shares its vertex with normal 0.
constexpr std::int32_t key_without_normal = 0;

/// A `v` line, and what stands in front of the vertex map: most positions have one normal, or none.
struct Position {
    Vec3f at;
    std::int32_t first_normal;
    std::uint32_t first_vertex;
};

/// Makes room in a list that a file fills line by line, so that a large one is seldom copied: as much as the rest of
/// the file holds if it goes on as it did from `first_offset`, but eight times the present size at most.
template <class T>
class RoomForecast {
  public:
    void beforeAppend(Vector<T>& records, const Parser& parser) {
        if (records.size() == records.capacity()) [[unlikely]]
            makeRoom(records, parser);
    }

  private:
    void makeRoom(Vector<T>& records, const Parser& parser) {
        const std::uint64_t size = records.size();
        if (size < least_to_judge_by) {
            if (size == 0) first_offset = parser.pos;
            records.growFor(1);
            return;
        }
        const std::uint64_t read = parser.pos - first_offset;
        const std::uint64_t rest = parser.size - parser.pos;
        const std::uint64_t to_come = read == 0 ? 0 : rest * size / read;
        const std::uint64_t with_margin = to_come + to_come / 64 + 1;
        records.growFor(1 + std::min(with_margin, size * 7));
    }

    static constexpr std::uint64_t least_to_judge_by = 1024;

    std::uint32_t first_offset = 0;
};

/// Lets names be looked up as views of the file.
struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};

class ObjReader {
  public:
    ObjReader(std::string_view file_path, Parser text, Mesh& filled_mesh, float position_scale)
        : path(file_path), parser(text), mesh(filled_mesh), scale(position_scale) {}

    /// Null: no library is read.
    MTLLibrary* library = nullptr;

    void read() {
        while (!parser.atEnd()) {
            ++line_num;
            TextLines::skipSpacesAndTabs(parser);
            Parser::Token keyword;
            // A comment has no letters at its start, like any other line without a keyword.
            if (parser.parseAlpha(keyword)) readStatement(keyword);
            TextLines::advancePastLineEnd(parser);
        }
        mesh.build();
    }

  private:
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
        position_room.beforeAppend(positions, parser);
        positions.push_back({{p.x * scale, p.y * scale, p.z * scale}, key_without_normal, no_vertex});
    }

    void readTexCoord() {
        Vec2f uv;
        const bool u = readNumber(uv.x);
        const bool v = readNumber(uv.y);
        if (!u || !v) throwAtLine("Parse error while reading tex coord on line ");
        if (num_uvs == 0) mesh.raiseNumUVMappings(1);
        uv_room.beforeAppend(mesh.uv_pairs, parser);
        mesh.addUVs({&uv, 1});
        ++num_uvs;
    }

    void readNormal() {
        Vec3f normal;
        if (!readTriple(normal)) throwAtLine("Parse error while reading normal on line ");
        normal_room.beforeAppend(normals, parser);
        normals.push_back(normal);
    }

    void readFace() {
        if (mesh.verts.empty()) reserveVertices();
        std::uint32_t corners = 0;
        while (corners < max_corners) {
            if (readPlainCorner(corners)) [[likely]] {
                ++corners;
                continue;
            }
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

    /// Reads a corner written in the usual way: one space, then indices that count from 1 and have few digits. Returns
    /// false for any other, with the cursor where it was.
    bool readPlainCorner(std::uint32_t corner) {
        constexpr std::uint32_t longest = 1 + 3 * (most_plain_digits + 1) + 1;
        if (parser.size - parser.pos < longest) return false;
        const char* p = parser.text + parser.pos;
        if (*p != ' ') return false;
        std::uint32_t position = 0;
        p = scanPlainIndex(p + 1, position);
        if (p == nullptr) return false;

        std::uint32_t uv = 0;
        std::uint32_t normal = 0;
        bool has_uv = false;
        bool has_normal = false;
        if (*p == '/') {
            ++p;
            has_uv = *p != '/';
            if (has_uv && (p = scanPlainIndex(p, uv)) == nullptr) return false;
            has_normal = *p == '/';
            if (has_normal && (p = scanPlainIndex(p + 1, normal)) == nullptr) return false;
        }
        parser.pos = static_cast<std::uint32_t>(p - parser.text);
        if (has_uv) uv_indices[corner] = uv;
        vertex_indices[corner] =
            vertexFor(static_cast<std::int32_t>(position), static_cast<std::int32_t>(normal), has_normal);
        return true;
    }

    /// The index at `p`, counted from 0, and the place behind it; null for a number that isn't plain.
    static const char* scanPlainIndex(const char* p, std::uint32_t& index) {
        std::uint32_t number = 0;
        const char* const first = p;
        for (;; ++p) {
            const auto digit = static_cast<std::uint32_t>(static_cast<unsigned char>(*p)) - '0';
            if (digit > 9) break;
            if (p - first == most_plain_digits) return nullptr;
            number = number * 10 + digit;
        }
        // Also where there is no digit: 0 counts back from nothing.
        if (number == 0) return nullptr;
        index = number - 1;
        return p;
    }

    void readCorner(std::uint32_t corner) {
        std::int32_t index = 0;
        if (!parser.parseInt(index)) throwSyntaxError("f");
        const std::int32_t position = fromZero(index, positions.size(), position_invalid);

        std::int32_t normal = key_without_normal;
        bool has_normal = false;
        if (passSlash()) {
            // Without a number the corner keeps the UV index that an earlier face left there.
            if (parser.parseInt(index))
                uv_indices[corner] = static_cast<std::uint32_t>(fromZero(index, num_uvs, "Invalid tex coord index."));
            if (passSlash()) {
                if (!parser.parseInt(index)) throwSyntaxError("/");
                normal = fromZero(index, normals.size(), "Invalid normal index.");
                has_normal = true;
            }
        }
        vertex_indices[corner] = vertexFor(position, normal, has_normal);
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

    std::uint32_t vertexFor(std::int32_t position_index, std::int32_t normal_index, bool has_normal) {
        const auto position_at = static_cast<std::uint32_t>(position_index);
        const auto normal_at = static_cast<std::uint32_t>(normal_index);
        // As unsigned numbers negative indices are out of bounds like too large ones.
        if (position_at >= positions.size()) [[unlikely]]
            throwInvalidIndex(position_invalid, position_index);
        if (has_normal && normal_at >= normals.size()) [[unlikely]]
            throwInvalidIndex("Normal index invalid.", normal_index);

        Position& position = positions.data()[position_at];
        if (position.first_vertex == no_vertex) {
            addVertex(position, normal_at, has_normal);
            position.first_normal = normal_index;
            position.first_vertex = next_vertex;
            return next_vertex++;
        }
        if (position.first_normal == normal_index) [[likely]]
            return position.first_vertex;

        const std::uint32_t vertex = vertex_map.findOrInsert(position_at, normal_at, next_vertex);
        if (vertex != next_vertex) return vertex;
        addVertex(position, normal_at, has_normal);
        return next_vertex++;
    }

    void addVertex(const Position& position, std::uint32_t normal_at, bool has_normal) {
        if (has_normal)
            mesh.addVertexWithNormal(position.at, normals.data()[normal_at]);
        else
            mesh.addVertex(position.at);
    }

    void addFace(std::uint32_t corners) {
        const auto material = static_cast<std::uint32_t>(current_material);
        const auto& v = vertex_indices;
        const auto& uv = uv_indices;
        if (corners == 4) {
            quad_room.beforeAppend(mesh.quads, parser);
            mesh.addQuad({v[0], v[1], v[2], v[3]}, {uv[0], uv[1], uv[2], uv[3]}, material);
            return;
        }
        for (std::uint32_t i = 0; i + 2 < corners; ++i) {
            triangle_room.beforeAppend(mesh.triangles, parser);
            mesh.addTriangle({v[0], v[i + 1], v[i + 2]}, {uv[0], uv[i + 1], uv[i + 2]}, material);
        }
    }

    /// Most files have as many vertices as positions before their first face.
    void reserveVertices() {
        mesh.verts.reserve(positions.size());
        if (!normals.empty()) mesh.normals.reserve(positions.size());
    }

    void takeMaterial(std::string_view name) {
        if (const auto known = material_indices.find(name); known != material_indices.end()) {
            current_material = static_cast<std::int32_t>(known->second);
            return;
        }
        current_material = static_cast<std::int32_t>(material_indices.size());
        material_indices.emplace(name, static_cast<std::uint32_t>(current_material));
        // The mesh looks through all its names, which takes too long for a file of many; ours are distinct already.
        if (mesh_had_materials)
            mesh.addMaterialUsed(String(name));
        else
            mesh.used_materials.push_back(String(name));
    }

    void readMaterialLibrary() {
        const std::string_view name = readToken();
        if (library == nullptr) return;
        const std::string library_path = FileUtils::join(FileUtils::getDirectory(path), name);
        if (FileUtils::fileExists(library_path)) loadMTL(library_path, *library);
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

    static constexpr const char* position_invalid = "Position index invalid.";

    std::string_view path;
    Parser parser;
    Mesh& mesh;
    float scale;
    const bool mesh_had_materials = !mesh.used_materials.empty();

    std::uint32_t line_num = 0;
    Vector<Position> positions;
    Vector<Vec3f> normals;
    std::uint64_t num_uvs = 0;
    std::uint32_t vertex_indices[max_corners] = {};
    /// Not cleared between faces.
    std::uint32_t uv_indices[max_corners] = {};
    std::int32_t current_material = -1;
    std::unordered_map<std::string, std::uint32_t, NameHash, std::equal_to<>> material_indices;
    ObjVertexMap vertex_map;
    std::uint32_t next_vertex = 0;

    RoomForecast<Position> position_room;
    RoomForecast<Vec3f> normal_room;
    RoomForecast<Vec2f> uv_room;
    RoomForecast<MeshTriangle> triangle_room;
    RoomForecast<MeshQuad> quad_room;
};

} // namespace

void loadOBJ(std::string_view path, Mesh& mesh, float scale, bool parse_mtllib, MTLLibrary& library) {
    const MappedFile file(path);
    ObjReader reader(path, parserOver(file), mesh, scale);
    if (parse_mtllib) reader.library = &library;
    reader.read();
}

} // namespace Velmar
