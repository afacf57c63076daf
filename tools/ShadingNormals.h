#pragma once

#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <cstdint>
#include <vector>

/// The normals that a picture shades by: those of the mesh where it has them, else the means of the faces around each
/// vertex, but for edges that are to look sharp.
class ShadingNormals {
  public:
    /// The mesh must outlive this and its faces refer to vertices that are there.
    explicit ShadingNormals(const Velmar::Mesh& shaded_mesh);

    /// At a corner of a face, on that side of it to which `face_normal` points. Of length 1, as `face_normal` must be.
    Velmar::Vec3d getNormal(std::uint32_t vertex, const Velmar::Vec3d& face_normal) const;

  private:
    template <class Face>
    void addFace(const Face& face);

    const Velmar::Mesh& mesh;
    /// One for each vertex when the mesh has none of its own.
    std::vector<Velmar::Vec3f> means;
};

/// Of length 1, or zero when the face has no area.
Velmar::Vec3d getFaceNormal(const Velmar::Mesh& mesh, const Velmar::MeshTriangle& face);
Velmar::Vec3d getFaceNormal(const Velmar::Mesh& mesh, const Velmar::MeshQuad& face);
