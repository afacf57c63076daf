#include "velmarvec.h"

#include "bench/support/MeshReading.h"
#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "utils/MappedFile.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using namespace BenchSupport;

namespace {

/// 100 MB as a binary file.
constexpr std::uint32_t num_triangles = 2000000;
constexpr std::size_t header_size = 84;
constexpr std::size_t record_size = 50;

void cornersOf(std::uint32_t triangle, float (&numbers)[12]) {
    const float x = static_cast<float>(triangle % 1000) * 0.1f;
    const float y = static_cast<float>(triangle / 1000) * 0.1f;
    const float z = std::sin(x) * std::cos(y);
    const float values[12] = {0.0f, 0.6f, 0.8f, x, y, z, x + 0.1f, y, z + 0.01f, x, y + 0.1f, z - 0.01f};
    std::memcpy(numbers, values, sizeof numbers);
}

std::string binaryText() {
    std::string bytes(header_size, 'h');
    std::memcpy(bytes.data() + 80, &num_triangles, sizeof num_triangles);
    for (std::uint32_t i = 0; i < num_triangles; ++i) {
        float numbers[12];
        cornersOf(i, numbers);
        bytes.append(reinterpret_cast<const char*>(numbers), sizeof numbers);
        bytes.append(2, '\0');
    }
    return bytes;
}

std::string asciiText() {
    std::string text = "solid bench\n";
    for (std::uint32_t i = 0; i < num_triangles; ++i) {
        float n[12];
        cornersOf(i, n);
        char facet[512];
        const int length =
            std::snprintf(facet, sizeof facet,
                          "facet normal %.6e %.6e %.6e\n outer loop\n  vertex %.6e %.6e %.6e\n  vertex %.6e %.6e %.6e\n"
                          "  vertex %.6e %.6e %.6e\n endloop\nendfacet\n",
                          n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9], n[10], n[11]);
        text.append(facet, static_cast<std::size_t>(length));
    }
    return text + "endsolid bench\n";
}

const ScratchFile& binaryFile() {
    static const ScratchFile file("velmar_bench_binary.stl", binaryText());
    return file;
}

const ScratchFile& asciiFile() {
    static const ScratchFile file("velmar_bench_ascii.stl", asciiText());
    return file;
}

using ModelFile = const ScratchFile& (*)();

void velmarStl(benchmark::State& state, ModelFile file) {
    readByVelmar(state, file().path(),
                 [](const std::string& path, Velmar::Mesh& mesh) { Velmar::loadSTL(path, mesh, 1.0f); });
}

void assimpStl(benchmark::State& state, ModelFile file) {
    readByAssimp(state, file().path());
}

/// Copies only the vertices, 36 bytes at a time, into an array of the right size.
void copyStl(benchmark::State& state, ModelFile model) {
    const std::string& path = model().path();
    for (auto _ : state) {
        const MappedFile file(path);
        std::vector<Velmar::Vec3f> verts(3 * num_triangles);
        for (std::uint32_t i = 0; i < num_triangles; ++i)
            std::memcpy(&verts[3 * i], file.getData() + header_size + i * record_size + 12, 36);
        benchmark::DoNotOptimize(verts.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * MappedFile(path).getSize()));
}

BENCHMARK_CAPTURE(velmarStl, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(copyStl, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpStl, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarStl, ascii, asciiFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpStl, ascii, asciiFile)->Unit(benchmark::kMillisecond);

} // namespace
