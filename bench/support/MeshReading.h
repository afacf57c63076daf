#pragma once

#include "bench/support/PeakMemory.h"
#include "mesh/Mesh.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace BenchSupport {

inline double toMiB(std::uint64_t bytes) {
    return static_cast<double>(bytes) / 0x100000;
}

inline std::size_t bytesIn(const Velmar::Mesh& mesh) {
    return (mesh.verts.size() + mesh.normals.size()) * sizeof(Velmar::Vec3f) +
           mesh.uv_pairs.size() * sizeof(Velmar::Vec2f) + mesh.triangles.size() * sizeof(Velmar::MeshTriangle) +
           mesh.quads.size() * sizeof(Velmar::MeshQuad);
}

/// Measures `load(path, mesh)`. The peak memory is that of one call and includes the pages of a mapped file.
template <class Load>
void readByVelmar(benchmark::State& state, const std::string& path, Load load) {
    {
        const PeakMemory peak;
        Velmar::Mesh mesh;
        load(path, mesh);
        state.counters["peak_MiB"] = toMiB(peak.rise());
        state.counters["mesh_MiB"] = toMiB(bytesIn(mesh));
        state.counters["triangles"] = static_cast<double>(mesh.triangles.size());
    }
    const std::uintmax_t file_size = std::filesystem::file_size(path);
    state.counters["file_MiB"] = toMiB(file_size);
    for (auto _ : state) {
        Velmar::Mesh mesh;
        load(path, mesh);
        benchmark::DoNotOptimize(mesh.triangles.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file_size));
}

/// Reads the same file by assimp without post-processing.
inline void readByAssimp(benchmark::State& state, const std::string& path) {
    std::size_t triangles = 0;
    for (auto _ : state) {
        Assimp::Importer importer;
        const aiScene* const scene = importer.ReadFile(path, 0);
        if (scene == nullptr || scene->mNumMeshes == 0) {
            state.SkipWithError(importer.GetErrorString());
            return;
        }
        triangles = scene->mMeshes[0]->mNumFaces;
    }
    state.counters["triangles"] = static_cast<double>(triangles);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

} // namespace BenchSupport
