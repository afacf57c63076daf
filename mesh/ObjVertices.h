#pragma once

#include "velmarcompiler.h"
#include "velmarvector.h"

#include "mesh/Mesh.h"
#include "mesh/MeshChecks.h"
#include "mesh/ObjVertexMap.h"
#include "mesh/RecordAppender.h"
#include "utils/Parser.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The positions and normals of an OBJ file, and the mesh vertices that stand for the pairs of them that faces name, in
/// the order of first use. Indices count from 0.
class ObjVertices {
  public:
    /// The second half of the key of a corner without a normal: it shares its vertex with normal 0.
    static constexpr std::uint32_t key_without_normal = 0;

    /// `text_cursor` tells, while the file is read, how far that is.
    ObjVertices(Mesh& filled, const Parser& text_cursor, std::uint64_t hash_seed)
        : mesh(filled), cursor(text_cursor), vertex_map(hash_seed) {}

    void addPosition(const Vec3f& position) { positions.append({position, no_normal_yet, 0}, cursor); }
    void addNormal(const Vec3f& normal) { normals.append(normal, cursor); }

    std::size_t numPositions() const { return positions.size(); }
    std::size_t numNormals() const { return normals.size(); }

    /// The vertex of a position with a normal, or without one: then `normal_at` is `key_without_normal`. Both must
    /// exist. Throws `VelmarException` for a new vertex whose normal isn't finite.
    VELMAR_ALWAYS_INLINE std::uint32_t vertexFor(std::uint32_t position_at, std::uint32_t normal_at, bool has_normal) {
        const Position& position = positions.data()[position_at];
        if (position.first_normal == normal_at) [[likely]]
            return position.first_vertex;
        return findOrAddVertex(position_at, normal_at, has_normal);
    }

    /// Whether the triangle of three vertices is large enough to be kept.
    bool haveArea(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        const Vec3f* const at = vertices.data();
        return hasArea(at[a], at[b], at[c]);
    }

    /// Ends the reading: gives the lists of the mesh their sizes.
    void settle() {
        vertices.settle();
        vertex_normals.settle();
    }

  private:
    static constexpr std::uint32_t no_normal_yet = 0xFFFFFFFF;

    /// With what stands in front of the vertex map: most positions have one normal, or none.
    struct Position {
        Vec3f at;
        std::uint32_t first_normal;
        std::uint32_t first_vertex;
    };

    std::uint32_t findOrAddVertex(std::uint32_t position_at, std::uint32_t normal_at, bool has_normal) {
        Position& position = positions.data()[position_at];
        if (position.first_normal == no_normal_yet) {
            addVertex(position, normal_at, has_normal);
            position.first_normal = normal_at;
            position.first_vertex = next_vertex;
            return next_vertex++;
        }
        const std::uint32_t vertex = vertex_map.findOrInsert(position_at, normal_at, next_vertex);
        if (vertex != next_vertex) return vertex;
        addVertex(position, normal_at, has_normal);
        return next_vertex++;
    }

    void addVertex(const Position& position, std::uint32_t normal_at, bool has_normal) {
        if (next_vertex == 0) [[unlikely]] {
            // Most files have as many vertices as positions before their first face.
            vertices.tryReserve(vertices.size() + positions.size(), cursor);
            if (has_normal) vertex_normals.tryReserve(vertex_normals.size() + positions.size(), cursor);
        }
        if (has_normal) vertex_normals.append(normalised(normals.data()[normal_at]), cursor);
        vertices.append(position.at, cursor);
    }

    Mesh& mesh;
    const Parser& cursor;
    Vector<Position> position_list;
    Vector<Vec3f> normal_list;
    RecordAppender<Position> positions{position_list};
    RecordAppender<Vec3f> normals{normal_list};
    RecordAppender<Vec3f> vertices{mesh.verts};
    RecordAppender<Vec3f> vertex_normals{mesh.normals};
    ObjVertexMap vertex_map;
    std::uint32_t next_vertex = 0;
};

} // namespace Velmar
