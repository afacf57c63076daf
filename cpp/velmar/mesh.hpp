#pragma once

/// Meshes.

#include "settings.hpp"

#include <algorithm>

namespace velmar {

/// A mesh: vertices, faces, texture coordinates and normals under a name.
///
///     velmar::Mesh mesh("Triangle");
///     mesh.addVertices(corners);       // 3 floats for each
///     mesh.addTriangles(indices);      // 3 numbers for each
///     mesh.build();
class Mesh : public MeshSettings {
  public:
    /// The number of elements; see velmarkit.h.
    using Counts = VelmarKitMeshCounts;
    struct Bounds {
        std::array<float, 3> min;
        std::array<float, 3> max;
    };

    explicit Mesh(const std::string& name) : MeshSettings(created(VelmarKit_Mesh_Create, detail::textOf(name))) {}

    /// Loads an obj, ply, stl or vmmesh file. The mesh is named after it.
    /// @param scale multiplies the positions, except those of vmmesh files.
    static Mesh load(const std::string& path, float scale = 1) {
        return Mesh(created(VelmarKit_Mesh_LoadFile, detail::textOf(path), scale));
    }

    // ---- filling: in any order, with `build` at the end ----

    /// Appends vertices.
    /// @param xyz 3 numbers for each, in metres.
    void addVertices(std::span<const float> xyz) {
        call(VelmarKit_Mesh_AddVertices, countOfRows(xyz, 3, "xyz"), xyz.data());
    }

    /// Appends triangles.
    /// @param vertices            3 indices for each.
    /// @param material            the index of their material.
    /// @param texture_coordinates 3 indices for each; if empty, a mesh with texture coordinates has one entry for each
    ///                            vertex. They are added before the faces then.
    void addTriangles(std::span<const std::uint32_t> vertices, std::uint32_t material = 0,
                      std::span<const std::uint32_t> texture_coordinates = {}) {
        addPolygons<3>(vertices, material, texture_coordinates);
    }
    /// Appends quads; as `addTriangles` with 4 indices for each.
    void addQuads(std::span<const std::uint32_t> vertices, std::uint32_t material = 0,
                  std::span<const std::uint32_t> texture_coordinates = {}) {
        addPolygons<4>(vertices, material, texture_coordinates);
    }

    /// Appends faces as records of VelmarMesh_AddFaces, which begin with their kind: 8 words for a triangle, 10 for a
    /// quad.
    void addFaces(std::span<const std::uint32_t> words) {
        std::size_t count = 0;
        std::size_t at = 0;
        for (; at < words.size(); ++count)
            at += words[at] == 0 ? 8 : 10;
        if (at != words.size()) throw BadArgumentError("words end within a face");
        call(VelmarKit_Mesh_AddFaces, detail::countOf(count), words.data());
    }

    /// Replaces the texture coordinates by one set.
    /// @param uv 2 numbers for each.
    void setTextureCoordinates(std::span<const float> uv) {
        const std::span<const float> sets[] = {uv};
        setTextureCoordinateSets(sets);
    }
    /// Replaces the texture coordinates by several sets of one size.
    void setTextureCoordinateSets(std::span<const std::span<const float>> sets) {
        const std::size_t size = sets.empty() ? 0 : sets[0].size();
        for (const std::span<const float> set : sets)
            if (set.size() != size) throw BadArgumentError("sets of texture coordinates differ in size");
        const std::int32_t count = sets.empty() ? 0 : countOfRows(sets[0], 2, "a set of texture coordinates");
        const auto pointers = detail::allocating([&] {
            std::vector<const float*> result;
            for (const std::span<const float> set : sets)
                result.push_back(set.data());
            return result;
        });
        call(VelmarKit_Mesh_SetTextureCoordinates, detail::countOf(pointers.size()), count, pointers.data());
    }

    /// Replaces the normals; none removes them.
    /// @param xyz 3 numbers for each vertex.
    void setNormals(std::span<const float> xyz) {
        call(VelmarKit_Mesh_SetNormals, countOfRows(xyz, 3, "xyz"), xyz.data());
    }

    /// Appends the name of a material, unless the mesh has it. The first is that of material 0.
    void addMaterialName(const std::string& name) { call(VelmarKit_Mesh_AddMaterialUsed, detail::textOf(name)); }

    /// Finishes a filled mesh. Returns how many materials it uses.
    std::uint32_t build() {
        std::uint32_t materials = 0;
        call(VelmarKit_Mesh_Build, &materials);
        return materials;
    }

    // ---- files ----

    /// Writes a vmmesh file. After a failure, a file that was there is as before.
    void write(const std::string& path) const { call(VelmarKit_Mesh_WriteToFile, detail::textOf(path)); }
    /// Writes readable text.
    void writeText(const std::string& path) const { call(VelmarKit_write_mesh_to_file, detail::textOf(path)); }

    // ---- reading: the mesh's own memory, valid until the mesh is changed or destroyed ----

    Counts counts() const { return get(VelmarKit_Mesh_GetCounts); }
    /// 3 numbers for each.
    std::span<const float> vertices() const { return view(VelmarKit_Mesh_GetVertices, 3); }
    /// 3 numbers for each vertex, or none.
    std::span<const float> normals() const { return view(VelmarKit_Mesh_GetNormals, 3); }
    /// 2 numbers for each. Entry i of set s is pair i * sets + s.
    std::span<const float> textureCoordinates() const { return view(VelmarKit_Mesh_GetTextureCoordinates, 2); }
    /// 7 numbers for each: 3 vertices, 3 texture coordinates, the material.
    std::span<const std::uint32_t> triangles() const { return view(VelmarKit_Mesh_GetTriangles, 7); }
    /// 9 numbers for each: 4 vertices, 4 texture coordinates, the material.
    std::span<const std::uint32_t> quads() const { return view(VelmarKit_Mesh_GetQuads, 9); }

    /// The bounding box of a built mesh. Without vertices, its minimum is +infinity and its maximum -infinity.
    Bounds bounds() const {
        float numbers[6] = {};
        call(VelmarKit_Mesh_GetBounds, numbers);
        return {{numbers[0], numbers[1], numbers[2]}, {numbers[3], numbers[4], numbers[5]}};
    }

    /// The names of materials that the faces use.
    std::vector<std::string> materialNames() const {
        const std::uint32_t count = counts().materials;
        return detail::allocating([&] {
            std::vector<std::string> names;
            for (std::uint32_t i = 0; i < count; ++i) {
                const char* text = nullptr;
                std::uint64_t size = 0;
                call(VelmarKit_Mesh_GetMaterialName, i, &text, &size);
                names.emplace_back(text, static_cast<std::size_t>(size));
            }
            return names;
        });
    }

  private:
    friend class Model;
    friend class Scene;
    using MeshSettings::MeshSettings;

    template <class Number>
    static std::int32_t countOfRows(std::span<const Number> numbers, std::size_t columns, const char* what) {
        if (numbers.size() % columns != 0)
            throw BadArgumentError(detail::allocating([&] {
                return std::string(what) + " must have a multiple of " + std::to_string(columns) + " numbers, not " +
                       std::to_string(numbers.size());
            }));
        return detail::countOf(numbers.size() / columns);
    }

    template <class Number>
    std::span<const Number> view(std::int32_t (*function)(const VelmarMesh*, const Number**, std::uint64_t*),
                                 std::size_t columns) const {
        const Number* numbers = nullptr;
        std::uint64_t count = 0;
        detail::check(function(handle(), &numbers, &count));
        return {numbers, static_cast<std::size_t>(count) * columns};
    }

    template <std::size_t corners>
    void addPolygons(std::span<const std::uint32_t> vertices, std::uint32_t material,
                     std::span<const std::uint32_t> texture_coordinates) {
        const std::int32_t count = countOfRows(vertices, corners, "vertices");
        if (texture_coordinates.empty() && counts().uv_sets > 0) texture_coordinates = vertices;
        if (!texture_coordinates.empty() && texture_coordinates.size() != vertices.size())
            throw BadArgumentError("there must be as many indices of texture coordinates as of vertices");
        constexpr std::size_t size = 2 + 2 * corners;
        const auto words = detail::allocating([&] {
            std::vector<std::uint32_t> result(static_cast<std::size_t>(count) * size);
            for (std::size_t face = 0; face < static_cast<std::size_t>(count); ++face) {
                std::uint32_t* const word = result.data() + face * size;
                word[0] = corners - 3;
                std::copy_n(vertices.data() + face * corners, corners, word + 1);
                if (!texture_coordinates.empty())
                    std::copy_n(texture_coordinates.data() + face * corners, corners, word + 1 + corners);
                word[size - 1] = material;
            }
            return result;
        });
        call(VelmarKit_Mesh_AddFaces, count, words.data());
    }
};

} // namespace velmar
