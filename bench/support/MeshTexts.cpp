#include "bench/support/MeshTexts.h"

#include "bench/support/BenchMesh.h"
#include "mesh/MeshBuilder.h"

#include <cstdint>
#include <cstdio>
#include <random>

using namespace Velmar;

namespace BenchSupport {

namespace {

void appendLine(std::string& text, const char* format, const Vec3f& numbers) {
    char line[128];
    const int length = std::snprintf(line, sizeof line, format, static_cast<double>(numbers.x),
                                     static_cast<double>(numbers.y), static_cast<double>(numbers.z));
    text.append(line, static_cast<std::size_t>(length));
}

void appendNumbers(std::string& text, const std::string& keyword, const Vec3f& numbers) {
    appendLine(text, (keyword + "%.6f %.6f %.6f\n").c_str(), numbers);
}

Vec3f normalOf(const Vec3f& a, const Vec3f& b, const Vec3f& c) {
    const Vec3f u = {b.x - a.x, b.y - a.y, b.z - a.z};
    const Vec3f v = {c.x - a.x, c.y - a.y, c.z - a.z};
    return normalised({u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x});
}

std::string plyHeader(const Mesh& mesh, const std::string& format) {
    return "ply\nformat " + format + " 1.0\nelement vertex " + std::to_string(mesh.verts.size()) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
           std::to_string(mesh.triangles.size()) + "\nproperty list uchar int vertex_indices\nend_header\n";
}

template <class T>
void appendBytes(std::string& bytes, const T& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

} // namespace

std::string makeObjText(const Mesh& mesh, ObjCorners corners) {
    std::string text = "# a mesh\n";
    const bool full = corners == ObjCorners::positions_uvs_normals;
    for (const Vec3f& vertex : mesh.verts)
        appendNumbers(text, "v ", vertex);
    if (full) {
        for (const Vec3f& vertex : mesh.verts) {
            char line[64];
            const int length = std::snprintf(line, sizeof line, "vt %.6f %.6f\n", static_cast<double>(vertex.x + 0.5f),
                                             static_cast<double>(vertex.y + 0.5f));
            text.append(line, static_cast<std::size_t>(length));
        }
        for (const Vec3f& vertex : mesh.verts)
            appendNumbers(text, "vn ", {vertex.y, vertex.z + 1.5f, vertex.x});
    }
    for (const MeshTriangle& triangle : mesh.triangles) {
        text += 'f';
        for (const std::uint32_t index : triangle.vertex_indices) {
            const std::string number = std::to_string(index + 1);
            text += ' ' + number;
            if (full) text += '/' + number + '/' + number;
        }
        text += '\n';
    }
    return text;
}

std::string makeStlText(const Mesh& mesh, StlNumbers numbers) {
    const bool decimals = numbers == StlNumbers::decimals;
    const char* const normal = decimals ? "facet normal %.6f %.6f %.6f\n" : "facet normal %.6e %.6e %.6e\n";
    const char* const vertex = decimals ? "  vertex %.6f %.6f %.6f\n" : "  vertex %.6e %.6e %.6e\n";
    std::string text = "solid mesh\n";
    for (const MeshTriangle& triangle : mesh.triangles) {
        const auto corner = [&](std::size_t i) -> const Vec3f& { return mesh.verts[triangle.vertex_indices[i]]; };
        appendLine(text, normal, normalOf(corner(0), corner(1), corner(2)));
        text += " outer loop\n";
        for (std::size_t i = 0; i < 3; ++i)
            appendLine(text, vertex, corner(i));
        text += " endloop\nendfacet\n";
    }
    return text + "endsolid mesh\n";
}

std::string makePlyText(const Mesh& mesh) {
    std::string text = plyHeader(mesh, "ascii");
    for (const Vec3f& vertex : mesh.verts)
        appendNumbers(text, "", vertex);
    for (const MeshTriangle& triangle : mesh.triangles) {
        text += '3';
        for (const std::uint32_t index : triangle.vertex_indices)
            text += ' ' + std::to_string(index);
        text += '\n';
    }
    return text;
}

std::string makeBinaryPly(const Mesh& mesh) {
    std::string bytes = plyHeader(mesh, "binary_little_endian");
    for (const Vec3f& vertex : mesh.verts)
        appendBytes(bytes, vertex);
    for (const MeshTriangle& triangle : mesh.triangles) {
        bytes += '\3';
        appendBytes(bytes, triangle.vertex_indices);
    }
    return bytes;
}

const Mesh& noisyBunny() {
    static const Mesh* const mesh = [] {
        static Mesh noisy;
        noisy.verts = refinedBunny().verts;
        noisy.triangles = refinedBunny().triangles;
        std::mt19937 random(1);
        const auto changed = [&random](float coordinate) {
            return coordinate / 1000 + (static_cast<float>(random() % 2001) - 1000) * 1e-8f;
        };
        for (Vec3f& vertex : noisy.verts)
            vertex = {changed(vertex.x), changed(vertex.y), changed(vertex.z)};
        return &noisy;
    }();
    return *mesh;
}

} // namespace BenchSupport
