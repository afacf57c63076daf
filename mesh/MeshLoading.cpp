#include "mesh/MeshLoading.h"

#include "velmarexceptions.h"

#include "mesh/MeshReaders.h"
#include "mesh/VmmeshFile.h"
#include "utils/FileUtils.h"

#include <bit>
#include <cstddef>
#include <limits>
#include <new>
#include <span>
#include <string>

namespace Velmar {

struct MeshCacheLayout {
    static_assert(offsetof(MeshCache, buckets) == 0);
    static_assert(offsetof(MeshCache, bucket_count) == 8);
    static_assert(offsetof(MeshCache, empty_key) == 16);
    static_assert(offsetof(MeshCache, entry_count) == 64);
    static_assert(offsetof(MeshCache, mask) == 72);
};

namespace {

constexpr std::uint64_t initial_buckets = 32;
constexpr std::size_t bucket_alignment = 64;

std::uint64_t fnv1a(const void* data, std::size_t size) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const unsigned char byte : std::span(static_cast<const unsigned char*>(data), size)) {
        hash ^= byte;
        hash *= 0x100000001B3;
    }
    return hash;
}

} // namespace

void loadMesh(std::string_view path, Mesh& mesh, float scale) {
    const std::string system_path = FileUtils::toBackslashes(path);
    const std::string extension = FileUtils::toLowerCase(FileUtils::getExtension(system_path));
    try {
        if (extension == "vmmesh") {
            readFromFile(toVelmarString(system_path), mesh);
        } else if (extension == "obj") {
            MTLLibrary dropped;
            loadOBJ(system_path, mesh, scale, false, dropped);
        } else if (extension == "ply") {
            loadPLY(system_path, mesh, scale);
        } else if (extension == "stl") {
            loadSTL(system_path, mesh, scale);
        } else {
            throw Velmar::Exception("Unsupported mesh format '" + extension + "'.");
        }
    } catch (const VelmarException& e) {
        // The quote after the path is missing: hosts know the message without it.
        throw Velmar::Exception("Error while reading mesh '" + std::string(path) + ": " + toStdString(e.getMessage()));
    }
}

MeshCache::MeshCache()
    : buckets(allocateBuckets(initial_buckets)), bucket_count(initial_buckets), mask(initial_buckets - 1) {}

MeshCache::~MeshCache() {
    freeBuckets(buckets, bucket_count);
}

Mesh* MeshCache::find(const String& path, double scale) const {
    return probe(path, scale).mesh.getPointer();
}

void MeshCache::insert(const String& path, double scale, const Reference<Mesh>& mesh) {
    if (equal(empty_key, path, scale) || !isFree(probe(path, scale))) return;
    if (entry_count + 1 >= bucket_count / 2) grow();
    const String stored_path(path);
    Entry& place = probe(path, scale);
    place.key.path = stored_path;
    place.key.scale = scale;
    place.mesh = mesh;
    ++entry_count;
}

std::uint64_t MeshCache::hash(const String& path, double scale) {
    const auto scale_bytes = std::bit_cast<std::uint64_t>(scale);
    return fnv1a(path.data(), path.size()) ^ fnv1a(&scale_bytes, sizeof scale_bytes);
}

bool MeshCache::equal(const Key& key, const String& path, double scale) {
    return key.path == path && !(key.scale < scale) && !(key.scale > scale);
}

MeshCache::Entry* MeshCache::allocateBuckets(std::uint64_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(Entry)) throw BadAlloc();
    auto* const fresh = static_cast<Entry*>(sdkAlignedMalloc(count * sizeof(Entry), bucket_alignment));
    for (std::uint64_t i = 0; i < count; ++i)
        new (static_cast<void*>(fresh + i)) Entry();
    return fresh;
}

void MeshCache::freeBuckets(Entry* buckets, std::uint64_t count) {
    for (std::uint64_t i = 0; i < count; ++i)
        buckets[i].~Entry();
    sdkAlignedFree(buckets);
}

MeshCache::Entry& MeshCache::probe(const String& path, double scale) const {
    std::uint64_t bucket = hash(path, scale) & mask;
    while (!isFree(buckets[bucket]) && !equal(buckets[bucket].key, path, scale))
        bucket = (bucket + 1) & mask;
    return buckets[bucket];
}

void MeshCache::grow() {
    Entry* const old_buckets = buckets;
    const std::uint64_t old_count = bucket_count;
    useBuckets(allocateBuckets(old_count * 2), old_count * 2);
    try {
        for (std::uint64_t i = 0; i < old_count; ++i) {
            const Entry& entry = old_buckets[i];
            if (isFree(entry)) continue;
            Entry& place = probe(entry.key.path, entry.key.scale);
            place.key = entry.key;
            place.mesh = entry.mesh;
        }
    } catch (...) {
        freeBuckets(buckets, bucket_count);
        useBuckets(old_buckets, old_count);
        throw;
    }
    freeBuckets(old_buckets, old_count);
}

void MeshCache::useBuckets(Entry* used, std::uint64_t count) {
    buckets = used;
    bucket_count = count;
    mask = count - 1;
}

} // namespace Velmar
