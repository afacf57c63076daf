#pragma once

#include "velmarcompiler.h"

#include "mesh/Mesh.h"
#include "mesh/RecordAppender.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <xmmintrin.h>
#include <xxhash.h>

namespace Velmar {

/// The smallest f32 area of a triangle that is kept.
inline constexpr float min_triangle_area = 1e-20f;

/// Whether the f32 area of a triangle is at least `min_triangle_area`; false for a NaN.
inline bool hasArea(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2) {
    const Vec3f e1 = {p2.x - p0.x, p2.y - p0.y, p2.z - p0.z};
    const Vec3f e2 = {p1.x - p0.x, p1.y - p0.y, p1.z - p0.z};
    const Vec3f cross = {e1.y * e2.z - e1.z * e2.y, e1.z * e2.x - e1.x * e2.z, e1.x * e2.y - e1.y * e2.x};
    const float squared_length = cross.x * cross.x + cross.y * cross.y + cross.z * cross.z;
    // Far above the bound the result doesn't depend on the root, whose latency would slow down large files.
    constexpr float far_above = 1e-30f;
    return squared_length > far_above || std::sqrt(squared_length) * 0.5f >= min_triangle_area;
}

/// `normal` divided by its f32 length; NaNs for a length of zero.
/// Throws `VelmarException` if a component of `normal` isn't finite.
Vec3f normalised(const Vec3f& normal);

/// Fills a mesh, and decides what a mesh accepts: it checks indices and normals and drops triangles without area.
/// Vertices and UVs are added before the faces that use them.
///
/// The lists of the mesh belong to the builder as long as it exists. `build` or the destructor gives them back with
/// everything that was added, so a mesh whose filling failed contains whole records, and what it had before.
class MeshBuilder {
  public:
    /// Appends to `filled`. `text` is the text that is read into it, for a forecast of its size.
    explicit MeshBuilder(Mesh& filled, const TextInParts* text = nullptr);
    ~MeshBuilder() { finish(); }
    MeshBuilder(const MeshBuilder&) = delete;
    MeshBuilder& operator=(const MeshBuilder&) = delete;

    /// As that of the mesh.
    void raiseNumUVMappings(std::uint32_t n) { mesh.raiseNumUVMappings(n); }

    /// Appends a vertex without a normal and returns its index. Nothing is checked.
    VELMAR_ALWAYS_INLINE std::uint32_t addVertex(const Vec3f& position) {
        vertices.append() = position;
        return static_cast<std::uint32_t>(vertices.size() - 1);
    }

    /// Appends a vertex with `normal` divided by its f32 length, and returns its index. A normal of length zero is
    /// stored as NaNs. Throws `VelmarException` if a component of `normal` isn't finite.
    std::uint32_t addVertexWithNormal(Vec3f position, const Vec3f& normal) {
        const Vec3f unit = normalised(normal);
        vertices.reserveMore(1);
        normals.append() = unit;
        return addVertex(position);
    }

    /// Appends a UV entry: a pair for each UV set. Missing pairs are (0, 0), pairs beyond the sets are ignored.
    void addUVs(std::span<const Vec2f> pairs);

    /// `addUVs` of one pair.
    void addUV(Vec2f pair) {
        if (mesh.num_uv_mappings == 1) [[likely]]
            uvs.append() = pair;
        else
            addUVs({&pair, 1});
    }

    /// The index of the material `name`: materials are numbered in the order of their first use in this builder.
    /// Appends a new name to `used_materials` unless the mesh had it before.
    std::uint32_t useMaterial(std::string_view name);

    /// Appends a triangle, or drops it if its area isn't at least `min_triangle_area`. `material` isn't checked, and UV
    /// indices only if the mesh has UV sets.
    /// Throws `VelmarException` if a vertex or UV index is out of bounds.
    VELMAR_ALWAYS_INLINE void addTriangle(const std::uint32_t (&vertex_indices)[3],
                                          const std::uint32_t (&uv_indices)[3], std::uint32_t material) {
        checkVertexIndices(FaceKind::triangle, vertex_indices);
        addTriangleOfVertices(vertex_indices, uv_indices, material);
    }

    /// Appends a quad, with or without area. Checks and throws as `addTriangle` does.
    void addQuad(const std::uint32_t (&vertex_indices)[4], const std::uint32_t (&uv_indices)[4],
                 std::uint32_t material) {
        checkVertexIndices(FaceKind::quad, vertex_indices);
        addQuadOfVertices(vertex_indices, uv_indices, material);
    }

    /// Appends a polygon of any number of corners: a triangle, a quad, or a fan of triangles around the first corner.
    /// Fewer than three corners make no face. `uv_indices` is empty or has one index for each corner.
    /// Checks and throws as `addTriangle` does.
    void addPolygon(std::span<const std::uint32_t> vertex_indices, std::span<const std::uint32_t> uv_indices,
                    std::uint32_t material);

    /// `addTriangle` of vertices that are known to exist.
    VELMAR_ALWAYS_INLINE void addTriangleOfVertices(const std::uint32_t (&vertex_indices)[3],
                                                    const std::uint32_t (&uv_indices)[3], std::uint32_t material) {
        checkUVIndices(FaceKind::triangle, uv_indices);
        const Vec3f* const at = vertices.data();
        if (!hasArea(at[vertex_indices[0]], at[vertex_indices[1]], at[vertex_indices[2]])) return;
        addAnyTriangle(vertex_indices, uv_indices, material);
    }

    /// `addQuad` of vertices that are known to exist.
    VELMAR_ALWAYS_INLINE void addQuadOfVertices(const std::uint32_t (&vertex_indices)[4],
                                                const std::uint32_t (&uv_indices)[4], std::uint32_t material) {
        checkUVIndices(FaceKind::quad, uv_indices);
        writeFace(quads.append(), vertex_indices, uv_indices, material);
    }

    /// Appends a triangle whatever it refers to, with or without area.
    VELMAR_ALWAYS_INLINE void addAnyTriangle(const std::uint32_t (&vertex_indices)[3],
                                             const std::uint32_t (&uv_indices)[3], std::uint32_t material) {
        writeFace(triangles.append(), vertex_indices, uv_indices, material);
    }

    /// Throws `VelmarException` if a face of a mesh that was filled in another way refers to a vertex or UV entry that
    /// doesn't exist. UV indices count only if the mesh has UV sets.
    static void checkFaces(const Mesh& mesh);

    /// Reserves memory for so many more vertices, normals or triangles, if there is that much.
    void tryReserveVertices(std::size_t count) noexcept { vertices.tryReserve(vertices.size() + count); }
    void tryReserveNormals(std::size_t count) noexcept { normals.tryReserve(normals.size() + count); }
    void tryReserveTriangles(std::size_t count) noexcept { triangles.tryReserve(triangles.size() + count); }

    std::size_t numVertices() const { return vertices.size(); }

    /// Whether the UV indices of faces have a meaning.
    bool hasUVs() const { return mesh.num_uv_mappings != 0; }

    /// Whether a face may have this UV index.
    bool acceptsUV(std::uint32_t index) const {
        // The product wraps at 32 bits, and files rely on what this accepts.
        const std::uint32_t num_uv_mappings = mesh.num_uv_mappings;
        return num_uv_mappings == 0 || num_uv_mappings * index < static_cast<std::uint32_t>(uvs.size());
    }

    /// Has the processor fetch vertices, which must exist, because they are needed soon.
    VELMAR_ALWAYS_INLINE void prefetchVertices(std::size_t a, std::size_t b, std::size_t c) const {
        for (const std::size_t index : {a, b, c})
            _mm_prefetch(reinterpret_cast<const char*>(vertices.data() + index), _MM_HINT_T0);
    }

    /// Gives the lists back and has the mesh check itself and compute its bounds. Nothing may be added afterwards.
    /// Throws as `Mesh::build` does.
    void build();

  private:
    void finish() noexcept;

    enum class FaceKind { triangle, quad };

    /// Seeded, so that the names in a file can't be chosen to collide. Finds names by views.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return XXH3_64bits_withSeed(name.data(), name.size(), seed);
        }

        std::uint64_t seed;
    };
    struct Materials {
        explicit Materials(const Mesh& mesh);

        std::unordered_map<std::string, std::uint32_t, NameHash, std::equal_to<>> indices;
        std::unordered_set<std::string, NameHash, std::equal_to<>> earlier_names;
    };

    [[noreturn]] static void throwOutOfBounds(FaceKind kind, const char* what, std::uint32_t index);

    // Corners are written out one by one: compilers keep arrays that loops go through in memory.

    template <std::size_t corners, class Check>
    VELMAR_ALWAYS_INLINE static bool areInBounds(const std::uint32_t (&indices)[corners], Check isInBounds) {
        static_assert(corners == 3 || corners == 4);
        bool result = isInBounds(indices[0]) && isInBounds(indices[1]) && isInBounds(indices[2]);
        if constexpr (corners == 4) result = result && isInBounds(indices[3]);
        return result;
    }

    template <std::size_t corners, class Check>
    static std::uint32_t firstOutOfBounds(const std::uint32_t (&indices)[corners], Check isInBounds) {
        return *std::find_if_not(std::begin(indices), std::end(indices), isInBounds);
    }

    /// All vertex indices of a face are checked before the first UV index.
    template <std::size_t corners>
    VELMAR_ALWAYS_INLINE void checkVertexIndices(FaceKind kind, const std::uint32_t (&vertex_indices)[corners]) const {
        const auto isInBounds = [count = vertices.size()](std::uint32_t index) { return index < count; };
        if (!areInBounds(vertex_indices, isInBounds)) [[unlikely]]
            throwOutOfBounds(kind, "vertex", firstOutOfBounds(vertex_indices, isInBounds));
    }

    template <std::size_t corners>
    VELMAR_ALWAYS_INLINE void checkUVIndices(FaceKind kind, const std::uint32_t (&uv_indices)[corners]) const {
        if (mesh.num_uv_mappings == 0) return;
        const auto isInBounds = [this](std::uint32_t index) { return acceptsUV(index); };
        if (!areInBounds(uv_indices, isInBounds)) [[unlikely]]
            throwOutOfBounds(kind, "uv", firstOutOfBounds(uv_indices, isInBounds));
    }

    /// Field by field: to copy a local record, the processor would wait until its parts are stored.
    template <class Face, std::size_t corners>
    VELMAR_ALWAYS_INLINE static void writeFace(Face& face, const std::uint32_t (&vertex_indices)[corners],
                                               const std::uint32_t (&uv_indices)[corners], std::uint32_t material) {
        face.vertex_indices[0] = vertex_indices[0];
        face.vertex_indices[1] = vertex_indices[1];
        face.vertex_indices[2] = vertex_indices[2];
        face.uv_indices[0] = uv_indices[0];
        face.uv_indices[1] = uv_indices[1];
        face.uv_indices[2] = uv_indices[2];
        if constexpr (corners == 4) {
            face.vertex_indices[3] = vertex_indices[3];
            face.uv_indices[3] = uv_indices[3];
        }
        face.material_index = material;
    }

    Mesh& mesh;
    RecordAppender<Vec3f> vertices;
    RecordAppender<Vec3f> normals;
    RecordAppender<Vec2f> uvs;
    RecordAppender<MeshTriangle> triangles;
    RecordAppender<MeshQuad> quads;
    std::optional<Materials> materials;
};

} // namespace Velmar
