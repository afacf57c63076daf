#pragma once

#include "preview/EmbreeDevice.h"
#include "preview/Vec.h"

#include "mesh/Mesh.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Preview {

/// A mesh of the scene in the form of an Embree scene, which instances place. Vertices and faces are read where they
/// are in the host's memory, so the mesh must outlive this object and stay as it is; only what Embree must not see, a
/// face with an index out of range or an array that ends at the end of a page, is replaced by a copy.
class MeshGeometry {
  public:
    /// The kinds of faces, as geometry IDs of the Embree scene.
    enum FaceKind : unsigned { triangle_kind = 0, quad_kind = 1 };

    /// Three corners of a face around a hit, with the weights of the second and the third.
    struct Corners {
        std::array<std::uint32_t, 3> vertices;
        std::array<std::uint32_t, 3> uvs;
        std::uint32_t material = 0;
        float u = 0.0f;
        float v = 0.0f;
    };

    /// `smooth` asks for normals where the mesh has none. `name` is for messages. Throws as `EmbreeDevice::commit`
    /// does.
    MeshGeometry(EmbreeDevice& device, const Velmar::Mesh& mesh_, bool smooth, const std::string& name);

    RTCScene getScene() const { return scene.get(); }
    const Velmar::Mesh& getMesh() const { return *mesh; }

    /// Whether the arrays of the mesh are still those that this object was made of, with the same contents. Throws
    /// nothing.
    bool isMadeOf(const Velmar::Mesh& other, bool smooth) const;

    std::size_t countFaces(FaceKind kind) const { return kind == triangle_kind ? triangle_count : quad_count; }

    std::uint32_t materialOf(unsigned kind, unsigned prim) const {
        return kind == triangle_kind ? mesh->triangles.data()[prim].material_index
                                     : mesh->quads.data()[prim].material_index;
    }

    /// The corners of face `prim` around Embree's coordinates of a hit. Embree cuts a quad into the corners 0, 1, 3 and
    /// 2, 3, 1, and counts u and v from corner 0 in both.
    Corners cornersAt(unsigned kind, unsigned prim, float u, float v) const {
        if (kind == triangle_kind) {
            const Velmar::MeshTriangle& face = mesh->triangles.data()[prim];
            const std::uint32_t* const at = face.vertex_indices;
            const std::uint32_t* const uvs = face.uv_indices;
            return {{at[0], at[1], at[2]}, {uvs[0], uvs[1], uvs[2]}, face.material_index, u, v};
        }
        const Velmar::MeshQuad& face = mesh->quads.data()[prim];
        const std::uint32_t* const at = face.vertex_indices;
        const std::uint32_t* const uvs = face.uv_indices;
        if (u + v <= 1.0f) return {{at[0], at[1], at[3]}, {uvs[0], uvs[1], uvs[3]}, face.material_index, u, v};
        return {{at[2], at[3], at[1]}, {uvs[2], uvs[3], uvs[1]}, face.material_index, 1.0f - u, 1.0f - v};
    }

    Vec3 vertex(std::uint32_t index) const {
        const Velmar::Vec3f& at = mesh->verts.data()[index];
        return {at.x, at.y, at.z};
    }
    bool hasNormals() const { return normals != nullptr; }
    Vec3 normal(std::uint32_t index) const {
        const Velmar::Vec3f& at = normals[index];
        return {at.x, at.y, at.z};
    }

    /// The texture coordinates at the place that `corners` describe, or (0, 0) when the mesh has no such set.
    Vec2 uvAt(const Corners& corners, std::uint32_t uv_set) const;

  private:
    struct Identity {
        const void* verts;
        const void* normals;
        const void* triangles;
        const void* quads;
        std::uint64_t sizes[4];
        /// A hash. The memory of a mesh that was deleted may hold another one of the same size now, whose indices
        /// nothing has checked.
        std::uint64_t contents;
        bool smooth;
        bool operator==(const Identity&) const = default;
    };

    static Identity identify(const Velmar::Mesh& mesh, bool smooth);

    template <std::size_t corners, class Face>
    void addFaces(EmbreeDevice& device, const Face* faces, std::size_t count, FaceKind kind,
                  std::vector<std::array<std::uint32_t, corners>>& copy, const std::string& name);
    void attachVertices(RTCGeometry geometry);
    void makeSmoothNormals();

    const Velmar::Mesh* mesh;
    Identity identity;
    std::size_t triangle_count = 0;
    std::size_t quad_count = 0;
    /// Empty where the mesh's own arrays serve.
    std::vector<Velmar::Vec3f> vertex_copy;
    std::vector<std::array<std::uint32_t, 3>> triangle_copy;
    std::vector<std::array<std::uint32_t, 4>> quad_copy;
    std::vector<Velmar::Vec3f> smooth_normals;
    const Velmar::Vec3f* normals = nullptr;
    /// Last: it is released before what it reads.
    SceneOwner scene;
};

} // namespace Preview
