#include "mesh/Mesh.h"

#include "velmarexceptions.h"

#include "mesh/MeshBuilder.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <xxhash.h>

namespace Velmar {

// The renderer library reads a mesh by these.
namespace {

constexpr std::size_t triangle_words = sizeof(MeshTriangle) / sizeof(std::uint32_t);
constexpr std::size_t quad_words = sizeof(MeshQuad) / sizeof(std::uint32_t);

/// Growing first leaves all vectors as they were when memory is exhausted.
template <class T>
T* appendUninitialized(Vector<T>& vector, std::size_t count) {
    const std::size_t old_size = vector.size();
    vector.resizeUninitialized(old_size + count);
    return vector.data() + old_size;
}

template <class T>
std::uint32_t greatestMaterialIndex(const Vector<T>& faces, std::uint32_t greatest) {
    for (const T& face : faces)
        greatest = std::max(greatest, face.material_index);
    return greatest;
}

struct HashStateDeleter {
    void operator()(XXH64_state_t* state) const { XXH64_freeState(state); }
};

class Hasher {
  public:
    Hasher() : state(XXH64_createState()) {
        if (state == nullptr) throw BadAlloc();
        XXH64_reset(state.get(), seed);
    }

    void add(const void* bytes, std::size_t size) {
        if (size != 0) XXH64_update(state.get(), bytes, size);
    }
    void add(std::uint32_t word) { add(&word, sizeof word); }

    template <class T>
    void add(const Vector<T>& records) {
        add(records.data(), records.size() * sizeof(T));
    }

    std::uint64_t digest() const { return XXH64_digest(state.get()); }

  private:
    static constexpr XXH64_hash_t seed = 1;

    std::unique_ptr<XXH64_state_t, HashStateDeleter> state;
};

} // namespace

void Mesh::raiseNumUVMappings(std::uint32_t n) {
    num_uv_mappings = std::max(num_uv_mappings, n);
}

void Mesh::addMaterialUsed(const String& name) {
    if (std::find(used_materials.begin(), used_materials.end(), name) == used_materials.end())
        used_materials.push_back(name);
}

void Mesh::addVertices(std::span<const Vec3f> positions) {
    verts.append(positions);
}

void Mesh::addVertexWithNormal(const Vec3f& position, const Vec3f& normal) {
    MeshBuilder(*this).addVertexWithNormal(position, normal);
}

void Mesh::addUVs(std::span<const Vec2f> pairs) {
    MeshBuilder(*this).addUVs(pairs);
}

void Mesh::addTriangle(const std::uint32_t (&vertex_indices)[3], const std::uint32_t (&uv_indices)[3],
                       std::uint32_t material_index) {
    MeshBuilder(*this).addTriangle(vertex_indices, uv_indices, material_index);
}

void Mesh::addQuad(const std::uint32_t (&vertex_indices)[4], const std::uint32_t (&uv_indices)[4],
                   std::uint32_t material_index) {
    MeshBuilder(*this).addQuad(vertex_indices, uv_indices, material_index);
}

void Mesh::addFaces(std::uint64_t count, const std::uint32_t* words) {
    // Counting first costs a look at one word in eight and saves the repeated growth of two vectors.
    std::size_t num_triangles = 0;
    const std::uint32_t* record = words;
    for (std::uint64_t i = 0; i < count; ++i) {
        const bool is_triangle = *record == 0;
        num_triangles += is_triangle ? 1 : 0;
        record += 1 + (is_triangle ? triangle_words : quad_words);
    }

    triangles.growFor(num_triangles);
    quads.growFor(count - num_triangles);
    MeshTriangle* triangle = appendUninitialized(triangles, num_triangles);
    MeshQuad* quad = appendUninitialized(quads, count - num_triangles);
    record = words;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (*record++ == 0) {
            std::memcpy(triangle++, record, sizeof *triangle);
            record += triangle_words;
        } else {
            std::memcpy(quad++, record, sizeof *quad);
            record += quad_words;
        }
    }
}

void Mesh::checkConsistency() const {
    if (num_uv_mappings != 0 && uv_pairs.size() % num_uv_mappings != 0)
        throw VelmarException(
            toVelmarString("Mesh uv_pairs.size() must be a multiple of num_uv_mappings.  uv_pairs.size(): " +
                           std::to_string(uv_pairs.size()) + ", num_uv_mappings: " + std::to_string(num_uv_mappings)));
    if (!normals.empty() && normals.size() != verts.size())
        throw VelmarException("Must be zero normals, or normals.size() must equal verts.size()");
}

std::uint32_t Mesh::build() {
    checkConsistency();

    // Locals, because the compiler can't know that the vertices aren't the box itself.
    Vec3f low = empty_box_min;
    Vec3f high = empty_box_max;
    for (const Vec3f& v : verts) {
        low = {std::min(low.x, v.x), std::min(low.y, v.y), std::min(low.z, v.z)};
        high = {std::max(high.x, v.x), std::max(high.y, v.y), std::max(high.z, v.z)};
    }
    aabb_min = low;
    aabb_max = high;

    num_materials_referenced = greatestMaterialIndex(quads, greatestMaterialIndex(triangles, 0)) + 1;
    return num_materials_referenced;
}

void Mesh::getBoundingBox(float* bounds) const {
    std::memcpy(bounds, &aabb_min, sizeof aabb_min);
    std::memcpy(bounds + 3, &aabb_max, sizeof aabb_max);
}

std::uint64_t Mesh::checksum() const {
    Hasher hasher;
    hasher.add(num_uv_mappings);
    for (const String& name : used_materials)
        hasher.add(name.data(), name.size());
    hasher.add(verts);
    hasher.add(normals);
    hasher.add(uv_layout);
    hasher.add(uv_pairs);
    hasher.add(triangles);
    hasher.add(quads);
    return hasher.digest();
}

} // namespace Velmar
