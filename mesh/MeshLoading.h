#pragma once

#include "reference.h"
#include "velmarmemory.h"
#include "velmarstring.h"

#include "mesh/Mesh.h"

#include <cstdint>
#include <string_view>

namespace Velmar {

/// Reads a mesh file of any format into `mesh`, normally a new one, and leaves it built. The extension of `path`
/// (UTF-8) alone decides: "vmmesh", "obj", "ply" or "stl" in any case of letters. `/` in the path is taken as `\`.
/// `scale` is multiplied into the positions of all but vmmesh files; the material libraries of OBJ files aren't read.
/// Throws `Velmar::Exception`, whose message names the file when it was the mesh or its own format that failed. The
/// mesh then holds part of the file and is to be discarded.
void loadMesh(std::string_view path, Mesh& mesh, float scale);

/// Keeps one pass over a scene from reading a mesh file twice: an open-addressing table from a file's path and scale to
/// the mesh read from it. It belongs to one pass; not for use by two threads at once.
class MeshCache final : public SdkAllocated {
  public:
    MeshCache();
    ~MeshCache();
    MeshCache(const MeshCache&) = delete;
    MeshCache& operator=(const MeshCache&) = delete;

    /// The mesh entered for `path` and `scale`, or null.
    Mesh* find(const String& path, double scale) const;

    /// Enters `mesh` unless the key is there. The table doubles when more than half of it would be taken. No mesh is
    /// kept for the empty path with scale -1, the key of free places. Throws `BadAlloc`, and the table is then as it
    /// was.
    void insert(const String& path, double scale, const Reference<Mesh>& mesh);

    std::uint64_t size() const { return entry_count; }
    std::uint64_t bucketCount() const { return bucket_count; }

  private:
    friend struct MeshCacheLayout;

    struct Key {
        String path;
        double scale = -1.0;
    };
    struct Entry {
        Key key;
        Reference<Mesh> mesh;
    };
    static_assert(sizeof(Entry) == 56);

    static std::uint64_t hash(const String& path, double scale);
    static bool equal(const Key& key, const String& path, double scale);
    static Entry* allocateBuckets(std::uint64_t count);
    static void freeBuckets(Entry* buckets, std::uint64_t count);

    bool isFree(const Entry& entry) const { return equal(entry.key, empty_key.path, empty_key.scale); }
    /// The entry of the key, or the free place where it belongs.
    Entry& probe(const String& path, double scale) const;
    void grow();
    void useBuckets(Entry* used, std::uint64_t count);

    Entry* buckets;
    std::uint64_t bucket_count;
    const Key empty_key{};
    std::uint64_t entry_count = 0;
    std::uint64_t mask;
};

} // namespace Velmar
