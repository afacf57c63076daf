#pragma once

#include "velmarbulkmemory.h"
#include "velmarcompiler.h"
#include "velmarvector.h"

#include "mesh/MeshBuilder.h"
#include "mesh/RecordAppender.h"
#include "utils/PlatformUtils.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <xmmintrin.h>
#include <xxhash.h>

namespace Velmar {

/// Maps a pair of position index and normal index to its mesh vertex: an open-addressing table with
/// linear probing that is at most half full. It allocates with the first key.
class ObjVertexMap {
  public:
    static constexpr std::uint64_t initial_buckets = 131072;

    /// `hash_seed` is for nobody to foresee: a file whose pairs all met in one place of the table would be read in time
    /// in proportion to the square of its size.
    explicit ObjVertexMap(std::uint64_t hash_seed) : seed(hash_seed) {}
    ~ObjVertexMap() { sdkAlignedFree(buckets); }
    ObjVertexMap(const ObjVertexMap&) = delete;
    ObjVertexMap& operator=(const ObjVertexMap&) = delete;

    /// The vertex of the key, which is entered with `new_vertex` when it is new. No index may be 0xFFFFFFFF.
    /// Throws `BadAlloc`, and the table is then as it was.
    std::uint32_t findOrInsert(std::uint32_t position, std::uint32_t normal, std::uint32_t new_vertex) {
        if (buckets != nullptr) {
            const Bucket& bucket = probe(position, normal);
            if (!bucket.isFree()) return bucket.vertex;
        }
        if (entry_count + 1 >= bucket_count / 2) grow();
        probe(position, normal) = {position, normal, new_vertex};
        ++entry_count;
        return new_vertex;
    }

    std::uint64_t size() const { return entry_count; }
    std::uint64_t bucketCount() const { return bucket_count; }

  private:
    struct Bucket {
        std::uint32_t position;
        std::uint32_t normal;
        std::uint32_t vertex;

        bool isFree() const { return position == none && normal == none; }
    };
    static_assert(sizeof(Bucket) == 12);

    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr std::size_t alignment = 64;

    std::uint64_t hash(std::uint32_t position, std::uint32_t normal) const {
        const std::uint64_t key = std::uint64_t{normal} << 32 | position;
        return XXH3_64bits_withSeed(&key, sizeof key, seed);
    }

    /// The bucket of the key, or the free one where it belongs.
    Bucket& probe(std::uint32_t position, std::uint32_t normal) const {
        const std::uint64_t mask = bucket_count - 1;
        std::uint64_t at = hash(position, normal) & mask;
        while (!buckets[at].isFree() && (buckets[at].position != position || buckets[at].normal != normal))
            at = (at + 1) & mask;
        return buckets[at];
    }

    void grow() {
        const std::uint64_t new_count = bucket_count == 0 ? initial_buckets : bucket_count * 2;
        if (new_count > std::numeric_limits<std::size_t>::max() / sizeof(Bucket)) throw BadAlloc();
        const std::size_t bytes = new_count * sizeof(Bucket);
        Bucket* const old = std::exchange(buckets, static_cast<Bucket*>(bulkAlignedMalloc(bytes, alignment)));
        const std::uint64_t old_count = std::exchange(bucket_count, new_count);
        std::memset(static_cast<void*>(buckets), 0xFF, bytes);
        for (std::uint64_t i = 0; i < old_count; ++i)
            if (!old[i].isFree()) probe(old[i].position, old[i].normal) = old[i];
        sdkAlignedFree(old);
    }

    const std::uint64_t seed;
    Bucket* buckets = nullptr;
    std::uint64_t bucket_count = 0;
    std::uint64_t entry_count = 0;
};

/// The positions and normals of an OBJ file, and the mesh vertices of the pairs of them that faces name, in
/// the order of first use. Indices count from 0.
class ObjVertices {
  public:
    /// The second half of the key of a corner without a normal: it shares its vertex with normal 0.
    static constexpr std::uint32_t key_without_normal = 0;

    /// Vertices are added to `builder`. `text` is the text that is read.
    ObjVertices(MeshBuilder& builder, const TextInParts& text)
        : mesh(builder), positions(position_list, &text), normals(normal_list, &text), uses(use_list) {}

    void addPosition(const Vec3f& position) { positions.append(position); }
    void addNormal(const Vec3f& normal) { normals.append(normal); }

    std::size_t numPositions() const { return positions.size(); }
    std::size_t numNormals() const { return normals.size(); }

    /// Must be called before `prefetch` and `vertexFor` when positions have been added.
    void preparePositions() {
        if (uses.size() == positions.size()) [[likely]]
            return;
        uses.reserveMore(positions.size() - uses.size());
        while (uses.size() < positions.size())
            uses.append({no_normal_yet, 0});
    }

    /// Has the processor fetch what `vertexFor` looks up first.
    VELMAR_ALWAYS_INLINE void prefetch(std::uint32_t position_at) const {
        _mm_prefetch(reinterpret_cast<const char*>(uses.data() + position_at), _MM_HINT_T0);
    }

    /// The vertex of a position with a normal, or without one: then `normal_at` is `key_without_normal`. Both must
    /// exist. Throws `VelmarException` for a new vertex whose normal isn't finite.
    VELMAR_ALWAYS_INLINE std::uint32_t vertexFor(std::uint32_t position_at, std::uint32_t normal_at, bool has_normal) {
        const Use& use = uses.data()[position_at];
        if (use.first_normal == normal_at) [[likely]]
            return use.first_vertex;
        return findOrAddVertex(position_at, normal_at, has_normal);
    }

  private:
    static constexpr std::uint32_t no_normal_yet = 0xFFFFFFFF;

    /// A one-entry cache of a position in front of the vertex map: most positions have at most one normal. The
    /// positions are elsewhere because they are needed only once.
    struct Use {
        std::uint32_t first_normal;
        std::uint32_t first_vertex;
    };

    std::uint32_t findOrAddVertex(std::uint32_t position_at, std::uint32_t normal_at, bool has_normal) {
        Use& use = uses.data()[position_at];
        const Vec3f& position = positions.data()[position_at];
        if (use.first_normal == no_normal_yet) {
            addVertex(position, normal_at, has_normal);
            use = {normal_at, next_vertex};
            return next_vertex++;
        }
        const std::uint32_t vertex = vertex_map.findOrInsert(position_at, normal_at, next_vertex);
        if (vertex != next_vertex) return vertex;
        addVertex(position, normal_at, has_normal);
        return next_vertex++;
    }

    VELMAR_ALWAYS_INLINE void addVertex(const Vec3f& position, std::uint32_t normal_at, bool has_normal) {
        if (next_vertex == 0) [[unlikely]] {
            // Most files have as many vertices as positions before their first face.
            mesh.tryReserveVertices(positions.size());
            if (has_normal) mesh.tryReserveNormals(positions.size());
        }
        if (has_normal)
            mesh.addVertexWithNormal(position, normals.data()[normal_at]);
        else
            mesh.addVertex(position);
    }

    MeshBuilder& mesh;
    Vector<Vec3f> position_list;
    Vector<Vec3f> normal_list;
    Vector<Use> use_list;
    RecordAppender<Vec3f> positions;
    RecordAppender<Vec3f> normals;
    RecordAppender<Use> uses;
    ObjVertexMap vertex_map{PlatformUtils::getRandomNumber()};
    std::uint32_t next_vertex = 0;
};

} // namespace Velmar
