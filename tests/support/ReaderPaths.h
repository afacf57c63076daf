#pragma once

#include "velmarexceptions.h"
#include "velmarstring.h"

#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "mesh/PlyInput.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

/// What the fast path makes of a PLY file.
enum class PlainPly {
    refused,
    same_as_rply,
    /// It changed the mesh though it refused the file.
    refused_too_late,
    different_from_rply
};

namespace Details {

template <class T>
bool areSame(const Velmar::Vector<T>& a, const Velmar::Vector<T>& b) {
    return a.size() == b.size() && a.capacity() == b.capacity() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

/// Bit for bit.
inline bool areSame(const Velmar::Mesh& a, const Velmar::Mesh& b) {
    return areSame(a.verts, b.verts) && areSame(a.normals, b.normals) && areSame(a.uv_pairs, b.uv_pairs) &&
           areSame(a.triangles, b.triangles) && areSame(a.quads, b.quads) && a.checksum() == b.checksum() &&
           std::memcmp(&a.aabb_min, &b.aabb_min, sizeof a.aabb_min) == 0 &&
           std::memcmp(&a.aabb_max, &b.aabb_max, sizeof a.aabb_max) == 0 &&
           a.num_materials_referenced == b.num_materials_referenced;
}

/// Reads into `mesh`; the message of what was thrown, or nothing.
template <class Read>
std::string messageOfReading(Read read) {
    try {
        read();
        return {};
    } catch (const Velmar::Exception& e) {
        return "Exception: " + e.getMessage();
    } catch (const Velmar::VelmarException& e) {
        return "VelmarException: " + Velmar::toStdString(e.getMessage());
    }
}

} // namespace Details

/// Reads `file` by the fast path, and by RPly too if the fast path takes it: then RPly must give the same mesh and the
/// same message. A file that it refuses is read by RPly anyway.
inline PlainPly comparePlyPaths(std::string_view file, float scale) {
    const Velmar::PlyHeader header = Velmar::parsePlyHeader(file);
    if (!header.complete) return PlainPly::refused;
    Velmar::Mesh plain;
    bool taken = false;
    const std::string message =
        Details::messageOfReading([&] { taken = Velmar::readPlainPly(header, file, plain, scale); });
    if (!taken && message.empty())
        return Details::areSame(plain, Velmar::Mesh()) ? PlainPly::refused : PlainPly::refused_too_late;
    Velmar::Mesh by_rply;
    const std::string rply_message =
        Details::messageOfReading([&] { Velmar::readPlyByRPly(header, file, "a.ply", by_rply, scale); });
    return message == rply_message && Details::areSame(plain, by_rply) ? PlainPly::same_as_rply
                                                                       : PlainPly::different_from_rply;
}

/// Whether the content of an OBJ or STL file gives the same mesh or the same message in parts of about `part_size`
/// bytes as at once.
template <class Reader>
bool isSameInParts(Reader read, std::size_t part_size) {
    Velmar::Mesh whole;
    Velmar::Mesh in_parts;
    const std::string message = Details::messageOfReading([&] { read(whole, Velmar::TextInParts::default_part_size); });
    return message == Details::messageOfReading([&] { read(in_parts, part_size); }) &&
           Details::areSame(whole, in_parts);
}
inline bool isOBJSameInParts(std::string_view content, std::size_t part_size) {
    return isSameInParts(
        [&](Velmar::Mesh& mesh, std::size_t size) {
            std::vector<std::string> library_names;
            Velmar::readOBJ(content, mesh, 0.5f, library_names, size);
        },
        part_size);
}
inline bool isSTLSameInParts(std::string_view content, std::size_t part_size) {
    return isSameInParts([&](Velmar::Mesh& mesh, std::size_t size) { Velmar::readSTL(content, mesh, 0.5f, size); },
                         part_size);
}

} // namespace TestSupport
