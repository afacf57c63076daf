#include "bench/support/MeshTexts.h"

#include "bench/support/BenchMesh.h"

#include <cstdint>
#include <cstdio>
#include <random>

using namespace Velmar;

namespace BenchSupport {

namespace {

void appendNumbers(std::string& text, const char* keyword, const Vec3f& numbers) {
    char line[128];
    const int length = std::snprintf(line, sizeof line, "%s%.6f %.6f %.6f\n", keyword, static_cast<double>(numbers.x),
                                     static_cast<double>(numbers.y), static_cast<double>(numbers.z));
    text.append(line, static_cast<std::size_t>(length));
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

std::string makeStlText(const Mesh& mesh) {
    std::string text = "solid mesh\n";
    for (const MeshTriangle& triangle : mesh.triangles) {
        text += "facet normal 0 0 0\n outer loop\n";
        for (const std::uint32_t index : triangle.vertex_indices)
            appendNumbers(text, "  vertex ", mesh.verts[index]);
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
