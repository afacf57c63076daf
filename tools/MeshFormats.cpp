#include "tools/MeshFormats.h"

#include "tools/MeshFile.h"
#include "tools/Placement.h"
#include "utils/FileUtils.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>

using Velmar::Mesh;
using Velmar::MeshQuad;
using Velmar::MeshTriangle;
using Velmar::Vec2f;
using Velmar::Vec3f;

namespace {

/// Gathers the bytes of a file in large pieces.
class FileSink {
  public:
    explicit FileSink(const std::string& path) {
        if (!FileUtils::openOutputFile(file, path, false)) throw Failure("can't be written");
        buffer.reserve(2 * piece);
    }

    FileSink& add(std::string_view text) {
        buffer.append(text);
        if (buffer.size() >= piece) write();
        return *this;
    }

    FileSink& add(float value) { return addNumber(value); }
    FileSink& add(std::uint64_t value) { return addNumber(value); }

    /// The bytes of a record, little-endian.
    template <class Record>
    FileSink& addRecord(const Record& record) {
        char bytes[sizeof record];
        std::memcpy(bytes, &record, sizeof record);
        return add({bytes, sizeof bytes});
    }

    void finish() {
        write();
        file.flush();
        if (file.fail()) throw Failure("wasn't written whole; is the disk full?");
    }

  private:
    static constexpr std::size_t piece = 256 * 1024;

    template <class Number>
    FileSink& addNumber(Number value) {
        char digits[48];
        const auto end = std::to_chars(digits, digits + sizeof digits, value);
        return add({digits, static_cast<std::size_t>(end.ptr - digits)});
    }

    void write() {
        file.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        buffer.clear();
    }

    std::ofstream file;
    std::string buffer;
};

/// Calls `use` with the vertex indices, UV indices, number of corners and material of each face.
template <class Use>
void forEachFace(const Mesh& mesh, Use use) {
    for (const MeshTriangle& face : mesh.triangles)
        use(face.vertex_indices, face.uv_indices, std::size_t{3}, face.material_index);
    for (const MeshQuad& face : mesh.quads)
        use(face.vertex_indices, face.uv_indices, std::size_t{4}, face.material_index);
}

/// The pair of the first UV set.
Vec2f firstUV(const Mesh& mesh, std::uint32_t uv_index) {
    return mesh.uv_pairs[std::size_t{uv_index} * mesh.num_uv_mappings];
}

// ---- OBJ -----------------------------------------------------------------------------------------------------------

/// A name there ends at a blank.
std::string withoutBlanks(std::string_view name) {
    std::string word(name);
    std::replace_if(
        word.begin(), word.end(), [](char c) { return c == ' ' || c == '\t'; }, '_');
    return word;
}

void writeOBJ(const Mesh& mesh, FileSink& file) {
    const bool has_uvs = mesh.num_uv_mappings != 0 && !mesh.uv_pairs.empty();
    const bool has_normals = !mesh.normals.empty();
    const auto add_triple = [&](std::string_view keyword, const Vec3f& v) {
        file.add(keyword).add(v.x).add(" ").add(v.y).add(" ").add(v.z).add("\n");
    };
    for (const Vec3f& v : mesh.verts)
        add_triple("v ", v);
    if (has_uvs) {
        for (std::size_t i = 0; i < mesh.uv_pairs.size(); i += mesh.num_uv_mappings)
            file.add("vt ").add(mesh.uv_pairs[i].x).add(" ").add(mesh.uv_pairs[i].y).add("\n");
    }
    for (const Vec3f& normal : mesh.normals)
        add_triple("vn ", normal);
    // All names at first, so that a reader meets them in this order.
    for (const Velmar::String& name : mesh.used_materials)
        file.add("usemtl ").add(withoutBlanks(name.view())).add("\n");
    std::size_t material = mesh.used_materials.empty() ? 0 : mesh.used_materials.size() - 1;
    forEachFace(mesh, [&](const std::uint32_t* vertices, const std::uint32_t* uvs, std::size_t corners,
                          std::uint32_t face_material) {
        if (face_material != material && face_material < mesh.used_materials.size()) {
            material = face_material;
            file.add("usemtl ").add(withoutBlanks(mesh.used_materials[material].view())).add("\n");
        }
        file.add("f");
        for (std::size_t i = 0; i < corners; ++i) {
            const std::uint64_t vertex = std::uint64_t{vertices[i]} + 1;
            file.add(" ").add(vertex);
            if (has_uvs) file.add("/").add(std::uint64_t{uvs[i]} + 1);
            if (has_normals) file.add(has_uvs ? "/" : "//").add(vertex);
        }
        file.add("\n");
    });
}

// ---- PLY -----------------------------------------------------------------------------------------------------------

class PlyWriter {
  public:
    PlyWriter(const Mesh& written_mesh, FileSink& sink, bool as_text)
        : mesh(written_mesh), file(sink), text(as_text), has_uvs(mesh.num_uv_mappings != 0 && !mesh.uv_pairs.empty()),
          has_vertex_uvs(has_uvs && areUVsOfVertices()) {}

    void write() {
        writeHeader();
        for (std::size_t i = 0; i < mesh.verts.size(); ++i) {
            const Vec3f& v = mesh.verts[i];
            add(v.x), add(v.y), add(v.z);
            if (!mesh.normals.empty()) add(mesh.normals[i].x), add(mesh.normals[i].y), add(mesh.normals[i].z);
            if (has_vertex_uvs) addUV(static_cast<std::uint32_t>(i));
            endElement();
        }
        forEachFace(mesh,
                    [&](const std::uint32_t* vertices, const std::uint32_t* uvs, std::size_t corners, std::uint32_t) {
                        addLength(corners);
                        for (std::size_t i = 0; i < corners; ++i)
                            add(vertices[i]);
                        if (has_uvs && !has_vertex_uvs) {
                            addLength(2 * corners);
                            for (std::size_t i = 0; i < corners; ++i)
                                addUV(uvs[i]);
                        }
                        endElement();
                    });
    }

  private:
    bool areUVsOfVertices() const {
        if (mesh.uv_pairs.size() != mesh.verts.size() * mesh.num_uv_mappings) return false;
        bool same = true;
        forEachFace(mesh, [&](const std::uint32_t* vertices, const std::uint32_t* uvs, std::size_t corners,
                              std::uint32_t) { same = same && std::equal(vertices, vertices + corners, uvs); });
        return same;
    }

    void writeHeader() {
        file.add("ply\nformat ").add(text ? "ascii" : "binary_little_endian").add(" 1.0\n");
        file.add("element vertex ").add(std::uint64_t{mesh.verts.size()}).add("\n");
        const auto add_floats = [&](std::initializer_list<const char*> names) {
            for (const char* const name : names)
                file.add("property float ").add(name).add("\n");
        };
        add_floats({"x", "y", "z"});
        if (!mesh.normals.empty()) add_floats({"nx", "ny", "nz"});
        if (has_vertex_uvs) add_floats({"s", "t"});
        file.add("element face ").add(std::uint64_t{mesh.triangles.size() + mesh.quads.size()}).add("\n");
        file.add("property list uchar uint vertex_indices\n");
        if (has_uvs && !has_vertex_uvs) file.add("property list uchar float texcoord\n");
        file.add("end_header\n");
    }

    void add(float value) {
        if (text)
            separate().add(value);
        else
            file.addRecord(value);
    }

    void add(std::uint32_t value) {
        if (text)
            separate().add(std::uint64_t{value});
        else
            file.addRecord(value);
    }

    void addLength(std::size_t length) {
        if (text)
            separate().add(std::uint64_t{length});
        else
            file.addRecord(static_cast<std::uint8_t>(length));
    }

    void addUV(std::uint32_t index) {
        const Vec2f uv = firstUV(mesh, index);
        add(uv.x), add(uv.y);
    }

    FileSink& separate() {
        if (!at_start) file.add(" ");
        at_start = false;
        return file;
    }

    void endElement() {
        if (text) file.add("\n");
        at_start = true;
    }

    const Mesh& mesh;
    FileSink& file;
    bool text;
    bool has_uvs;
    bool has_vertex_uvs;
    bool at_start = true;
};

// ---- STL -----------------------------------------------------------------------------------------------------------

Vec3f getNormal(const Vec3f& a, const Vec3f& b, const Vec3f& c) {
    const double ux = double{b.x} - a.x;
    const double uy = double{b.y} - a.y;
    const double uz = double{b.z} - a.z;
    const double vx = double{c.x} - a.x;
    const double vy = double{c.y} - a.y;
    const double vz = double{c.z} - a.z;
    const double x = uy * vz - uz * vy;
    const double y = uz * vx - ux * vz;
    const double z = ux * vy - uy * vx;
    const double length = std::sqrt(x * x + y * y + z * z);
    if (!(length > 0)) return {};
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

void writeSTL(const Mesh& mesh, FileSink& file, bool text) {
    const std::uint64_t count = mesh.triangles.size() + 2 * mesh.quads.size();
    constexpr std::uint64_t max_count = 0xFFFFFFFF;
    if (count > max_count) throw Failure("more triangles than an STL file can hold");
    if (text) {
        file.add("solid velmar\n");
    } else {
        // Not "solid", by which readers know text.
        std::string header = "binary STL";
        header.resize(80, ' ');
        file.add(header).addRecord(static_cast<std::uint32_t>(count));
    }
    const auto add_triangle = [&](const Vec3f& a, const Vec3f& b, const Vec3f& c) {
        const Vec3f corners[] = {getNormal(a, b, c), a, b, c};
        if (!text) {
            for (const Vec3f& v : corners)
                file.addRecord(v.x).addRecord(v.y).addRecord(v.z);
            file.addRecord(std::uint16_t{0});
            return;
        }
        const char* prefix = "facet normal ";
        for (const Vec3f& v : corners) {
            file.add(prefix).add(v.x).add(" ").add(v.y).add(" ").add(v.z).add("\n");
            if (&v == corners) file.add("outer loop\n");
            prefix = "vertex ";
        }
        file.add("endloop\nendfacet\n");
    };
    forEachFace(mesh, [&](const std::uint32_t* vertices, const std::uint32_t*, std::size_t corners, std::uint32_t) {
        for (std::size_t i = 1; i + 1 < corners; ++i)
            add_triangle(mesh.verts[vertices[0]], mesh.verts[vertices[i]], mesh.verts[vertices[i + 1]]);
    });
    if (text) file.add("endsolid velmar\n");
}

} // namespace

bool isWritable(std::string_view format) {
    return Velmar::isMeshFormat(format);
}

void writeMeshAs(std::string_view format, Mesh& mesh, const OutputFile& output, const WriteSettings& settings) {
    if (format == "vmmesh") {
        writeMesh(mesh, output, !settings.plain);
        return;
    }
    const std::string fault = findFaultyFace(mesh);
    try {
        // The vmmesh format takes any face, the others have readers that trust them.
        if (!fault.empty()) throw Failure(fault);
        FileSink file(output.getPartialPath());
        if (format == "obj") {
            turnMesh(mesh, makeUpright("y", {}), true);
            writeOBJ(mesh, file);
        } else if (format == "ply") {
            PlyWriter(mesh, file, settings.text).write();
        } else {
            writeSTL(mesh, file, settings.text);
        }
        file.finish();
    } catch (...) {
        throw output.makeFailure();
    }
}

std::string describeLoss(std::string_view format, const Mesh& mesh) {
    if (format == "vmmesh") return {};
    std::string lost;
    const auto add = [&](bool is_lost, const char* what) {
        if (is_lost) lost += (lost.empty() ? "" : ", ") + std::string(what);
    };
    add(format == "stl" && !mesh.normals.empty(), "normals");
    add(format == "stl" && mesh.num_uv_mappings != 0, "UVs");
    add(format != "stl" && mesh.num_uv_mappings > 1, "the UV sets after the first");
    add(format != "obj" && mesh.used_materials.size() > 1, "materials");
    return lost;
}
