#include "import/PlyImport.h"

#include "velmarcompiler.h"
#include "velmarexceptions.h"

#include "mesh/MeshBuilder.h"
#include "utils/BinaryStreams.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace Velmar {

namespace {

enum class Format { ascii, little_endian, big_endian };
enum class Type { int8, uint8, int16, uint16, int32, uint32, float32, float64 };

/// The destination of a property's values.
enum class Role { none, x, y, z, nx, ny, nz, u, v, indices, texcoord };

struct Property {
    Role role = Role::none;
    Type type = Type::float32;
    bool is_list = false;
    Type length_type = Type::uint8;
};

enum class ElementKind { vertex, face, tristrips, other };

struct Element {
    ElementKind kind = ElementKind::other;
    std::uint64_t count = 0;
    std::vector<Property> properties;

    bool has(Role role) const {
        return std::any_of(properties.begin(), properties.end(), [&](const Property& p) { return p.role == role; });
    }
};

std::size_t sizeOf(Type type) {
    static constexpr std::size_t sizes[] = {1, 1, 2, 2, 4, 4, 4, 8};
    return sizes[static_cast<std::size_t>(type)];
}

template <class Number>
double loadNumber(const char* bytes, bool swapped) {
    Number number = 0;
    std::memcpy(&number, bytes, sizeof number);
    if (swapped) number = Velmar::reversedBytes(number);
    return static_cast<double>(number);
}

// ---- the header ----------------------------------------------------------------------------------------------------

class Header {
  public:
    explicit Header(std::string_view text) : rest(text) {
        if (takeLine() != "ply") fail("isn't a PLY file");
        while (true) {
            const std::string_view line = takeLine();
            words.clear();
            for (std::size_t at = 0; (at = line.find_first_not_of(" \t", at)) != std::string_view::npos;) {
                const std::size_t end = std::min(line.find_first_of(" \t", at), line.size());
                words.push_back(line.substr(at, end - at));
                at = end;
            }
            if (words.empty() || words[0] == "comment" || words[0] == "obj_info") continue;
            if (words[0] == "end_header") break;
            if (words[0] == "format")
                readFormat();
            else if (words[0] == "element")
                readElement();
            else if (words[0] == "property")
                readProperty();
            else
                fail("has an unknown '" + std::string(words[0]) + "'");
        }
    }

    Format format = Format::ascii;
    std::vector<Element> elements;
    std::uint64_t lines = 0;
    /// The body.
    std::string_view rest;

  private:
    std::string_view takeLine() {
        ++lines;
        if (rest.empty()) fail("ends within its header");
        const std::size_t end = rest.find_first_of("\r\n");
        if (end == std::string_view::npos) fail("ends within its header");
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end + (rest.substr(end).starts_with("\r\n") ? 2 : 1));
        return line;
    }

    void readFormat() {
        const std::string_view name = words.size() > 1 ? words[1] : "";
        if (name == "ascii")
            format = Format::ascii;
        else if (name == "binary_little_endian")
            format = Format::little_endian;
        else if (name == "binary_big_endian")
            format = Format::big_endian;
        else
            fail("has an unknown format");
    }

    void readElement() {
        Element element;
        if (words.size() < 3) fail("has an element without a count");
        const char* const end = words[2].data() + words[2].size();
        if (const auto [stop, error] = std::from_chars(words[2].data(), end, element.count);
            error != std::errc() || stop != end)
            fail("has an element whose count is no number");
        if (words[1] == "vertex") element.kind = ElementKind::vertex;
        if (words[1] == "face") element.kind = ElementKind::face;
        if (words[1] == "tristrips") element.kind = ElementKind::tristrips;
        elements.push_back(element);
    }

    void readProperty() {
        if (elements.empty()) fail("has a property outside an element");
        Property property;
        property.is_list = words.size() > 1 && words[1] == "list";
        if (words.size() < (property.is_list ? 5U : 3U)) fail("has a property without a name");
        if (property.is_list) property.length_type = getType(words[2]);
        property.type = getType(words[property.is_list ? 3 : 1]);
        Element& element = elements.back();
        property.role = findRole(element.kind, words[property.is_list ? 4 : 2], property.is_list);
        if (element.has(property.role)) property.role = Role::none;
        element.properties.push_back(property);
    }

    Type getType(std::string_view name) const {
        constexpr std::string_view names[][2] = {{"int8", "char"},     {"uint8", "uchar"},   {"int16", "short"},
                                                 {"uint16", "ushort"}, {"int32", "int"},     {"uint32", "uint"},
                                                 {"float32", "float"}, {"float64", "double"}};
        for (std::size_t i = 0; i < std::size(names); ++i)
            if (name == names[i][0] || name == names[i][1]) return static_cast<Type>(i);
        fail("has an unknown type '" + std::string(name) + "'");
    }

    static Role findRole(ElementKind kind, std::string_view name, bool is_list) {
        struct Name {
            std::string_view name;
            Role role;
        };
        constexpr Name numbers[] = {{"x", Role::x},         {"y", Role::y},         {"z", Role::z},
                                    {"nx", Role::nx},       {"ny", Role::ny},       {"nz", Role::nz},
                                    {"u", Role::u},         {"v", Role::v},         {"s", Role::u},
                                    {"t", Role::v},         {"texture_u", Role::u}, {"texture_v", Role::v},
                                    {"texture_s", Role::u}, {"texture_t", Role::v}};
        constexpr Name lists[] = {
            {"vertex_indices", Role::indices}, {"vertex_index", Role::indices}, {"texcoord", Role::texcoord}};
        const auto find = [&](const auto& names) {
            for (const Name& known : names)
                if (known.name == name) return known.role;
            return Role::none;
        };
        if (kind == ElementKind::other || is_list != (kind != ElementKind::vertex)) return Role::none;
        return is_list ? find(lists) : find(numbers);
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw Velmar::Exception("PLY header " + what + " (line " + std::to_string(lines) + ")");
    }

    std::vector<std::string_view> words;
};

// ---- the body ------------------------------------------------------------------------------------------------------

/// The numbers of the body, one after another.
class Values {
  public:
    explicit Values(const Header& header)
        : format(header.format), line(header.lines + 1), at(header.rest.data()), end(at + header.rest.size()) {}

    /// How many elements of at least `size` numbers can be left, to reserve no more than a file can fill.
    std::uint64_t limit(std::uint64_t count, std::size_t size) const {
        return std::min<std::uint64_t>(count, static_cast<std::uint64_t>(end - at) / std::max<std::size_t>(size, 1));
    }

    double take(Type type) {
        if (format == Format::ascii) return takeWord();
        const std::size_t size = sizeOf(type);
        if (static_cast<std::size_t>(end - at) < size) fail("PLY file ends too early");
        const char* const bytes = at;
        at += size;
        const bool swapped = (format == Format::big_endian) != (std::endian::native == std::endian::big);
        switch (type) {
        case Type::int8:
            return loadNumber<std::int8_t>(bytes, false);
        case Type::uint8:
            return loadNumber<std::uint8_t>(bytes, false);
        case Type::int16:
            return loadNumber<std::int16_t>(bytes, swapped);
        case Type::uint16:
            return loadNumber<std::uint16_t>(bytes, swapped);
        case Type::int32:
            return loadNumber<std::int32_t>(bytes, swapped);
        case Type::uint32:
            return loadNumber<std::uint32_t>(bytes, swapped);
        case Type::float32:
            return loadNumber<float>(bytes, swapped);
        case Type::float64:
            break;
        }
        return loadNumber<double>(bytes, swapped);
    }

    [[noreturn]] void fail(std::string_view what) const {
        std::string message(what);
        if (format == Format::ascii) message += " (line " + std::to_string(line) + ")";
        throw Velmar::Exception(message);
    }

  private:
    // Its variable needs a check of the stack, which binary numbers are spared.
    VELMAR_NEVER_INLINE double takeWord() {
        for (; at != end && (*at == ' ' || *at == '\t' || *at == '\r' || *at == '\n'); ++at)
            line += *at == '\n' ? 1 : 0;
        if (at == end) fail("PLY file ends too early");
        double value = 0;
        // A plus sign is no part of a number to this function.
        const auto [stop, error] = std::from_chars(*at == '+' ? at + 1 : at, end, value);
        if (error == std::errc::invalid_argument) fail("PLY file has a word that is no number");
        if (error == std::errc::result_out_of_range) value = 0;
        at = stop;
        return value;
    }

    Format format;
    std::uint64_t line;
    const char* at;
    const char* end;
};

class BodyReader {
  public:
    BodyReader(const Header& file_header, Mesh& filled_mesh, float position_scale)
        : header(file_header), values(file_header), mesh(filled_mesh), builder(filled_mesh), scale(position_scale) {
        for (const Element& element : header.elements) {
            if (element.kind == ElementKind::vertex) {
                has_normals = element.has(Role::nx) && element.has(Role::ny) && element.has(Role::nz);
                has_vertex_uvs = element.has(Role::u) && element.has(Role::v);
                if (!element.has(Role::x) || !element.has(Role::y) || !element.has(Role::z))
                    throw Velmar::Exception("PLY file has vertices without positions");
            }
            if (element.kind == ElementKind::face) has_corner_uvs = element.has(Role::texcoord);
        }
        // Those of the corners are the finer ones.
        if (has_corner_uvs) has_vertex_uvs = false;
        if (has_vertex_uvs || has_corner_uvs) builder.raiseNumUVMappings(1);
    }

    void read() {
        builder.useMaterial("default");
        for (const Element& element : header.elements) {
            if (element.properties.empty()) continue;
            const auto reserved = static_cast<std::size_t>(values.limit(element.count, element.properties.size()));
            if (element.kind == ElementKind::vertex) builder.tryReserveVertices(reserved);
            if (element.kind == ElementKind::face) builder.tryReserveTriangles(reserved);
            for (std::uint64_t i = 0; i < element.count; ++i)
                readElement(element);
        }
        for (const Face& kept : faces_before_vertices)
            addFace(kept);
        builder.build();
        // A normal without a direction is kept as such.
        for (Vec3f& normal : mesh.normals)
            if (std::isnan(normal.x)) normal = {};
    }

  private:
    static constexpr std::uint32_t no_vertex = 0xFFFFFFFF;

    struct Face {
        std::vector<std::uint32_t> corners;
        std::vector<float> uvs;
    };

    void readElement(const Element& element) {
        face.corners.clear();
        face.uvs.clear();
        for (const Property& property : element.properties) {
            if (property.is_list)
                readList(property);
            else
                numbers[static_cast<std::size_t>(property.role)] = static_cast<float>(values.take(property.type));
        }
        switch (element.kind) {
        case ElementKind::vertex:
            addVertex();
            break;
        case ElementKind::face:
            addFaceOrKeep();
            break;
        case ElementKind::tristrips:
            addStrips();
            break;
        case ElementKind::other:
            break;
        }
    }

    void readList(const Property& property) {
        const double claimed = values.take(property.length_type);
        if (!(claimed >= 0 && claimed <= 0xFFFFFFFFU)) values.fail("PLY file has a list of an impossible length");
        const auto length = static_cast<std::uint32_t>(claimed);
        for (std::uint32_t i = 0; i < length; ++i) {
            const double value = values.take(property.type);
            if (property.role == Role::indices)
                face.corners.push_back(toIndex(value));
            else if (property.role == Role::texcoord)
                face.uvs.push_back(static_cast<float>(value));
        }
    }

    /// An index that is no 32-bit number is one that no vertex has.
    static std::uint32_t toIndex(double value) {
        return value >= 0 && value < no_vertex ? static_cast<std::uint32_t>(value) : no_vertex;
    }

    float number(Role role) const { return numbers[static_cast<std::size_t>(role)]; }

    void addVertex() {
        const Vec3f position = {number(Role::x) * scale, number(Role::y) * scale, number(Role::z) * scale};
        if (has_vertex_uvs) {
            builder.addUV({number(Role::u), number(Role::v)});
            ++num_uvs;
        }
        if (!has_normals) {
            builder.addVertex(position);
            return;
        }
        const Vec3f normal = {number(Role::nx), number(Role::ny), number(Role::nz)};
        const bool finite = std::isfinite(normal.x) && std::isfinite(normal.y) && std::isfinite(normal.z);
        builder.addVertexWithNormal(position, finite ? normal : Vec3f{});
    }

    void addFaceOrKeep() {
        if (face.corners.size() < 3) return;
        const bool complete = std::all_of(face.corners.begin(), face.corners.end(),
                                          [&](std::uint32_t corner) { return corner < builder.numVertices(); });
        if (complete || !verticesFollow())
            addFace(face);
        else
            faces_before_vertices.push_back(face);
    }

    bool verticesFollow() const {
        std::uint64_t vertices = 0;
        for (const Element& element : header.elements)
            if (element.kind == ElementKind::vertex) vertices += element.count;
        return builder.numVertices() < vertices;
    }

    void requireVertex(std::uint32_t index) const {
        if (index >= builder.numVertices()) failAtVertex(index);
    }

    [[noreturn]] void failAtVertex(std::uint32_t index) const {
        values.fail("PLY file has a face that refers to vertex " + std::to_string(index) + " of " +
                    std::to_string(builder.numVertices()));
    }

    void addFace(const Face& added) {
        const std::vector<std::uint32_t>& v = added.corners;
        for (const std::uint32_t corner : v)
            requireVertex(corner);
        if (has_corner_uvs) {
            corner_uvs.clear();
            for (std::size_t i = 0; i < v.size(); ++i) {
                if (num_uvs == no_vertex) values.fail("PLY file has more corners than can be counted");
                builder.addUV(2 * i + 1 < added.uvs.size() ? Vec2f{added.uvs[2 * i], added.uvs[2 * i + 1]} : Vec2f{});
                corner_uvs.push_back(num_uvs++);
            }
            builder.addPolygon(v, corner_uvs, 0);
        } else if (has_vertex_uvs) {
            builder.addPolygon(v, v, 0);
        } else {
            builder.addPolygon(v, {}, 0);
        }
    }

    /// Strips of triangles, each ended by an index of -1.
    void addStrips() {
        constexpr std::uint32_t end_of_strip = 0xFFFFFFFF;
        const std::vector<std::uint32_t>& corners = face.corners;
        std::size_t first = 0;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (corners[i] == end_of_strip) {
                first = i + 1;
                continue;
            }
            requireVertex(corners[i]);
            if (i < first + 2) continue;
            const std::uint32_t a = corners[i - 2];
            const std::uint32_t b = corners[i - 1];
            const std::uint32_t c = corners[i];
            // Every other triangle is wound the other way round.
            if ((i - first) % 2 == 0)
                addStripTriangle({a, b, c});
            else
                addStripTriangle({b, a, c});
        }
    }

    void addStripTriangle(const std::uint32_t (&vertices)[3]) {
        constexpr std::uint32_t no_uvs[3] = {};
        builder.addTriangle(vertices, has_vertex_uvs ? vertices : no_uvs, 0);
    }

    const Header& header;
    Values values;
    Mesh& mesh;
    MeshBuilder builder;
    float scale;
    bool has_normals = false;
    bool has_vertex_uvs = false;
    bool has_corner_uvs = false;
    /// Of the present element.
    float numbers[static_cast<std::size_t>(Role::texcoord) + 1] = {};
    Face face;
    std::vector<std::uint32_t> corner_uvs;
    std::uint32_t num_uvs = 0;
    std::vector<Face> faces_before_vertices;
};

} // namespace

void readWholePLY(std::string_view text, Mesh& mesh, float scale) {
    const Header header(text);
    BodyReader(header, mesh, scale).read();
}

} // namespace Velmar
