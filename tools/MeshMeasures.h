#pragma once

#include "mesh/Mesh.h"

#include <cstdint>
#include <optional>

/// What one wants to know of a mesh before using it.
struct MeshMeasures {
    /// Of all faces; a quad counts as the two triangles beside its first diagonal.
    double area = 0;
    /// Of a closed mesh whose faces all look outwards or all inwards.
    std::optional<double> volume;
    /// Edges of one face alone. Vertices of equal position count as one, so that seams don't matter.
    std::uint64_t open_edges = 0;
    /// Edges of more than two faces.
    std::uint64_t shared_edges = 0;
    /// Faces without an area or with a vertex twice.
    std::uint64_t degenerate_faces = 0;
    /// Faces of the same vertices as an earlier one.
    std::uint64_t duplicate_faces = 0;
    /// Vertices of no face.
    std::uint64_t unused_vertices = 0;
};

/// Measures a mesh whose faces refer to existing vertices.
MeshMeasures measureMesh(const Velmar::Mesh& mesh);
