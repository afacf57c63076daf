#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include <cmath>
#include <span>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

const Mesh& meshOf(const VelmarMesh* mesh) {
    return *objectOf(mesh, "mesh").mesh;
}

/// Gives the host an array of the mesh as plain numbers.
template <class Number, class Element>
void lend(const Vector<Element>& elements, const Number** numbers, uint64_t* count) {
    static_assert(sizeof(Element) % sizeof(Number) == 0);
    store(numbers, elements.empty() ? nullptr : reinterpret_cast<const Number*>(elements.data()));
    store(count, elements.size());
}

void checkFinite(std::span<const float> numbers, const char* what) {
    for (const float number : numbers)
        if (!std::isfinite(number)) refuse(what, " holds a number that isn't finite");
}

} // namespace

extern "C" {

int32_t VelmarKit_Mesh_GetCounts(const VelmarMesh* mesh, VelmarKitMeshCounts* counts) {
    return guarded(Subject::mesh, [&] {
        const Mesh& data = meshOf(mesh);
        checkPointer(counts, "counts");
        *counts = {data.verts.size(),
                   data.normals.size(),
                   data.triangles.size(),
                   data.quads.size(),
                   data.uv_pairs.size(),
                   data.num_uv_mappings,
                   static_cast<uint32_t>(data.used_materials.size())};
    });
}

int32_t VelmarKit_Mesh_SetNormals(VelmarMesh* mesh, int32_t count, const float* xyz) {
    return guarded(Subject::mesh, [&] {
        Mesh& data = *objectOf(mesh, "mesh").mesh;
        checkArray(count, xyz, "xyz");
        const auto size = static_cast<std::size_t>(count);
        if (count != 0 && size != data.verts.size()) refuse("count", " isn't the number of vertices");
        checkFinite({xyz, 3 * size}, "xyz");
        Vector<Vec3f> normals;
        normals.append({reinterpret_cast<const Vec3f*>(xyz), size});
        data.normals.swap(normals);
    });
}

int32_t VelmarKit_Mesh_GetVertices(const VelmarMesh* mesh, const float** xyz, uint64_t* count) {
    return guarded(Subject::mesh, [&] { lend(meshOf(mesh).verts, xyz, count); });
}

int32_t VelmarKit_Mesh_GetNormals(const VelmarMesh* mesh, const float** xyz, uint64_t* count) {
    return guarded(Subject::mesh, [&] { lend(meshOf(mesh).normals, xyz, count); });
}

int32_t VelmarKit_Mesh_GetTextureCoordinates(const VelmarMesh* mesh, const float** uv, uint64_t* pairs) {
    return guarded(Subject::mesh, [&] { lend(meshOf(mesh).uv_pairs, uv, pairs); });
}

int32_t VelmarKit_Mesh_GetTriangles(const VelmarMesh* mesh, const uint32_t** words, uint64_t* count) {
    return guarded(Subject::mesh, [&] { lend(meshOf(mesh).triangles, words, count); });
}

int32_t VelmarKit_Mesh_GetQuads(const VelmarMesh* mesh, const uint32_t** words, uint64_t* count) {
    return guarded(Subject::mesh, [&] { lend(meshOf(mesh).quads, words, count); });
}

int32_t VelmarKit_Mesh_GetBounds(const VelmarMesh* mesh, float bounds[6]) {
    return guarded(Subject::mesh, [&] {
        const Mesh& data = meshOf(mesh);
        checkPointer(bounds, "bounds");
        data.getBoundingBox(bounds);
    });
}

int32_t VelmarKit_Mesh_GetMaterialName(const VelmarMesh* mesh, uint32_t index, const char** name, uint64_t* size) {
    return guarded(Subject::mesh, [&] {
        const Mesh& data = meshOf(mesh);
        if (index >= data.used_materials.size()) refuse("index", " isn't below the number of materials");
        const String& text = data.used_materials[index];
        store(name, text.data());
        store(size, text.size());
    });
}

int32_t VelmarKit_Mesh_SetTextureCoordinates(VelmarMesh* mesh, int32_t num_sets, int32_t count,
                                             const float* const* sets) {
    return guarded(Subject::mesh, [&] {
        Mesh& data = *objectOf(mesh, "mesh").mesh;
        if (num_sets < 0) refuse("num_sets", " is negative");
        if (count < 0) refuse("count", " is negative");
        if (num_sets > 0) checkPointer(sets, "sets");
        const auto set_count = static_cast<std::size_t>(num_sets);
        const auto entries = static_cast<std::size_t>(count);
        for (std::size_t set = 0; set < set_count; ++set)
            if (count > 0) checkPointer(sets[set], "a set");
        Vector<Vec2f> pairs;
        pairs.resizeUninitialized(set_count * entries);
        for (std::size_t set = 0; set < set_count; ++set)
            for (std::size_t entry = 0; entry < entries; ++entry)
                pairs.data()[entry * set_count + set] = {sets[set][2 * entry], sets[set][2 * entry + 1]};
        data.uv_pairs.swap(pairs);
        data.num_uv_mappings = static_cast<uint32_t>(set_count);
    });
}

} // extern "C"
