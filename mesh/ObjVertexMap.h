#pragma once

#include "velmarbulkmemory.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <xxhash.h>

namespace Velmar {

/// From a pair of position index and normal index to the mesh vertex that stands for it: an open-addressing table with
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

} // namespace Velmar
