#include "velmarapi.h"
#include "velmarvec.h"

#include "mesh/Mesh.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace Velmar;

namespace {

constexpr int num_vertices = 500000;
constexpr int num_faces = 1000000;

std::vector<float> positions() {
    std::vector<float> numbers(3 * static_cast<std::size_t>(num_vertices));
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<float>(i);
    return numbers;
}

/// Triangles in the form of the flat interface: the kind, then the record.
std::vector<unsigned> triangleWords() {
    std::vector<unsigned> words;
    for (unsigned i = 0; i < num_faces; ++i)
        for (const unsigned word : {0u, i, i + 1, i + 2, 0u, 0u, 0u, 0u})
            words.push_back(word);
    return words;
}

void velmarMesh(benchmark::State& state) {
    const std::vector<float> xyz = positions();
    const std::vector<unsigned> words = triangleWords();
    for (auto _ : state) {
        auto* const mesh = VelmarMesh_Create("bench");
        VelmarMesh_AddVertices(mesh, num_vertices, xyz.data());
        VelmarMesh_AddFaces(mesh, num_faces, words.data());
        VelmarMesh_Delete(mesh);
    }
}

void stdVectorPushBack(benchmark::State& state) {
    const std::vector<float> xyz = positions();
    const std::vector<unsigned> words = triangleWords();
    for (auto _ : state) {
        std::vector<Vec3f> verts;
        for (std::size_t i = 0; i < xyz.size(); i += 3)
            verts.push_back({xyz[i], xyz[i + 1], xyz[i + 2]});
        std::vector<MeshTriangle> triangles;
        for (std::size_t i = 0; i < words.size(); i += 8) {
            MeshTriangle triangle;
            std::memcpy(&triangle, &words[i + 1], sizeof triangle);
            triangles.push_back(triangle);
        }
        benchmark::DoNotOptimize(verts.data());
        benchmark::DoNotOptimize(triangles.data());
    }
}

BENCHMARK(velmarMesh)->Name("velmarFill")->Unit(benchmark::kMillisecond);
BENCHMARK(stdVectorPushBack)->Name("vectorFill")->Unit(benchmark::kMillisecond);

} // namespace
