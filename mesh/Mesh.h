#pragma once

#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"
#include "velmarvec.h"
#include "velmarvector.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace Velmar {

/// A triangle, with the same bytes in memory and, unfiltered, in mesh files. UV indices count UV entries, of which each
/// holds one pair per UV set.
struct MeshTriangle {
    std::uint32_t vertex_indices[3];
    std::uint32_t uv_indices[3];
    std::uint32_t material_index;
};

static_assert(offsetof(MeshTriangle, vertex_indices) == 0);
static_assert(offsetof(MeshTriangle, uv_indices) == 12);
static_assert(offsetof(MeshTriangle, material_index) == 24);
static_assert(sizeof(MeshTriangle) == 28);

/// A quad, with the same bytes in memory and, unfiltered, in mesh files.
struct MeshQuad {
    std::uint32_t vertex_indices[4];
    std::uint32_t uv_indices[4];
    std::uint32_t material_index;
};

static_assert(offsetof(MeshQuad, vertex_indices) == 0);
static_assert(offsetof(MeshQuad, uv_indices) == 16);
static_assert(offsetof(MeshQuad, material_index) == 32);
static_assert(sizeof(MeshQuad) == 36);

/// A polygon mesh in memory: flat records in the order in which they were added. Nothing is reordered, welded or
/// triangulated here. Vertices and UVs are added before the faces that use them, and `build` ends the construction.
///
/// The fields may be filled directly too; then only `build` and the writer of mesh files guard what they hold. Their
/// order and offsets are shared with the renderer library. Only the reference count is safe across threads.
class Mesh : public Destroyable<Mesh, ThreadSafeRefCounted> {
    static constexpr float infinity = std::numeric_limits<float>::infinity();

  public:
    /// The box that holds nothing: folding any point into it gives that point.
    static constexpr Vec3f empty_box_min = {infinity, infinity, infinity};
    static constexpr Vec3f empty_box_max = {-infinity, -infinity, -infinity};

    Mesh() = default;
    ~Mesh() = default;

    /// `num_uv_mappings` becomes `n` unless it is greater already.
    void raiseNumUVMappings(std::uint32_t n);

    /// Appends `name`, which may be empty, to `used_materials` unless it contains the name already.
    void addMaterialUsed(const String& name);

    /// Appends a vertex without a normal. Nothing is checked.
    void addVertex(const Vec3f& position) { verts.push_back(position); }

    /// As `addVertex` for each of `positions`, with one reallocation at most.
    void addVertices(std::span<const Vec3f> positions);

    /// Appends a vertex and its normal, divided by its f32 length. A normal of length zero is stored as NaNs.
    /// Throws `VelmarException` when a component of `normal` isn't finite.
    void addVertexWithNormal(const Vec3f& position, const Vec3f& normal);

    /// Appends one UV entry: a pair for each UV set. Missing pairs are (0, 0), pairs beyond the sets are ignored.
    void addUVs(std::span<const Vec2f> pairs);

    /// Appends a triangle, or drops it without a word when its f32 area isn't at least 1e-20. `material_index` isn't
    /// checked, and UV indices only when the mesh has UV sets.
    /// Throws `VelmarException` when a vertex or UV index is out of bounds.
    void addTriangle(const std::uint32_t (&vertex_indices)[3], const std::uint32_t (&uv_indices)[3],
                     std::uint32_t material_index);

    /// Appends a quad; a degenerate one too. Checks and throws as `addTriangle` does.
    void addQuad(const std::uint32_t (&vertex_indices)[4], const std::uint32_t (&uv_indices)[4],
                 std::uint32_t material_index);

    /// Appends `count` faces from a stream of words, unchecked and degenerate ones included, with one reallocation per
    /// vector at most. A record is a word that selects the kind, 0 for a triangle and any other for a quad, and the
    /// words of a `MeshTriangle` or `MeshQuad`: 8 or 10 words in all. `words` must hold that many records.
    void addFaces(std::uint64_t count, const std::uint32_t* words);

    /// Checks the mesh as a whole, then computes the bounding box and `num_materials_referenced`, and returns the
    /// latter: 1 + the greatest `material_index`, so 1 for a mesh without faces. May be called again.
    /// Throws `VelmarException` as `checkConsistency` does, before it changes anything.
    std::uint32_t build();

    /// Throws `VelmarException` when the number of UV pairs is no multiple of the number of UV sets, or when there are
    /// normals but not one for each vertex. Face indices aren't looked at.
    void checkConsistency() const;

    /// Copies min x, y, z and max x, y, z to the six floats at `bounds`. (+inf, -inf) before `build` and without
    /// vertices.
    void getBoundingBox(float* bounds) const;

    /// A hash of the content: equal for meshes of equal content, in every run. Names of materials are hashed without
    /// their lengths. Bounding box and `num_materials_referenced` aren't part of it.
    std::uint64_t checksum() const;

    /// How many pairs a UV entry has. 0: the mesh has no UVs and nobody looks at UV indices.
    std::uint32_t num_uv_mappings = 0;
    /// Distinct names in the order of first use. `material_index` of a face means this list, but isn't checked.
    Vector<String> used_materials;
    Vector<Vec3f> verts;
    /// Empty or as long as `verts`.
    Vector<Vec3f> normals;
    /// 0 or 1; stored and written back, not interpreted.
    std::uint32_t uv_layout = 0;
    Vector<Vec2f> uv_pairs;
    Vector<MeshTriangle> triangles;
    Vector<MeshQuad> quads;
    Vec3f aabb_min = empty_box_min;
    Vec3f aabb_max = empty_box_max;
    std::uint32_t num_materials_referenced = 0;
};

static_assert(offsetof(Mesh, num_uv_mappings) == 16);
static_assert(offsetof(Mesh, used_materials) == 24);
static_assert(offsetof(Mesh, verts) == 48);
static_assert(offsetof(Mesh, normals) == 72);
static_assert(offsetof(Mesh, uv_layout) == 96);
static_assert(offsetof(Mesh, uv_pairs) == 104);
static_assert(offsetof(Mesh, triangles) == 128);
static_assert(offsetof(Mesh, quads) == 152);
static_assert(offsetof(Mesh, aabb_min) == 176);
static_assert(offsetof(Mesh, aabb_max) == 188);
static_assert(offsetof(Mesh, num_materials_referenced) == 200);
static_assert(sizeof(Mesh) == 208);

} // namespace Velmar
