#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"
#include "mesh/PlyLoader.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <rply.h>
#include <string>

using namespace BenchSupport;

namespace {

constexpr std::uint32_t cells = 710;

template <class T>
void append(std::string& bytes, T value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string binaryText() {
    constexpr std::uint32_t side = cells + 1;
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(side * side) +
                        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                        std::to_string(2 * cells * cells) + "\nproperty list uchar int vertex_indices\nend_header\n";
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const float x = static_cast<float>(i % side) * 0.1f;
        const float y = static_cast<float>(i / side) * 0.1f;
        for (const float number : {x, y, std::sin(x) * std::cos(y)})
            append(bytes, number);
    }
    const auto face = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        append(bytes, std::uint8_t{3});
        for (const std::uint32_t index : {a, b, c})
            append(bytes, index);
    };
    for (std::uint32_t row = 0; row < cells; ++row)
        for (std::uint32_t column = 0; column < cells; ++column) {
            const std::uint32_t corner = row * side + column;
            face(corner, corner + 1, corner + side + 1);
            face(corner, corner + side + 1, corner + side);
        }
    return bytes;
}

const ScratchFile& model() {
    static const ScratchFile file("velmar_bench.ply", binaryText());
    return file;
}

void readPly(benchmark::State& state) {
    const std::string& path = model().path();
    for (auto _ : state) {
        Velmar::Mesh mesh;
        Velmar::loadPLY(path, mesh, 1.0f);
        benchmark::DoNotOptimize(mesh.triangles.data());
    }
}

int doNothing(p_ply_argument) {
    return 1;
}

/// The same file and the same callbacks, which look at nothing.
void bareRPly(benchmark::State& state) {
    const std::string& path = model().path();
    for (auto _ : state) {
        const p_ply ply = ply_open(path.c_str(), nullptr, 0, nullptr);
        ply_read_header(ply);
        for (const char* axis : {"x", "y", "z"})
            ply_set_read_cb(ply, "vertex", axis, doNothing, nullptr, 0);
        ply_set_read_cb(ply, "face", "vertex_indices", doNothing, nullptr, 0);
        benchmark::DoNotOptimize(ply_read(ply));
        ply_close(ply);
    }
}

BENCHMARK(readPly)->Unit(benchmark::kMillisecond);
BENCHMARK(bareRPly)->Unit(benchmark::kMillisecond);

} // namespace
