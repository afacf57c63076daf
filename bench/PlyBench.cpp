#include "bench/support/MeshReading.h"
#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"
#include "mesh/PlyInput.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <rply.h>
#include <string>

using namespace BenchSupport;

namespace {

/// 710 by 710 cells: a little more than a million triangles.
constexpr std::uint32_t many_cells = 710;
/// Small enough to count instructions.
constexpr std::uint32_t few_cells = 100;

template <class T>
void append(std::string& bytes, T value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string header(const std::string& format, std::uint32_t cells) {
    const std::uint32_t side = cells + 1;
    return "ply\nformat " + format + " 1.0\nelement vertex " + std::to_string(side * side) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + std::to_string(2 * cells * cells) +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

/// A wavy square: calls `add_vertex` with three numbers for each vertex, then `add_face` with three indices for each
/// face.
template <class AddVertex, class AddFace>
void visitModel(std::uint32_t cells, AddVertex add_vertex, AddFace add_face) {
    const std::uint32_t side = cells + 1;
    for (std::uint32_t i = 0; i < side * side; ++i) {
        const float x = static_cast<float>(i % side) * 0.1f;
        const float y = static_cast<float>(i / side) * 0.1f;
        add_vertex(x, y, std::sin(x) * std::cos(y));
    }
    for (std::uint32_t row = 0; row < cells; ++row)
        for (std::uint32_t column = 0; column < cells; ++column) {
            const std::uint32_t corner = row * side + column;
            add_face(corner, corner + 1, corner + side + 1);
            add_face(corner, corner + side + 1, corner + side);
        }
}

std::string binaryText(std::uint32_t cells) {
    std::string bytes = header("binary_little_endian", cells);
    visitModel(
        cells,
        [&](float x, float y, float z) {
            for (const float number : {x, y, z})
                append(bytes, number);
        },
        [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            append(bytes, std::uint8_t{3});
            for (const std::uint32_t index : {a, b, c})
                append(bytes, index);
        });
    return bytes;
}

std::string asciiText(std::uint32_t cells) {
    std::string text = header("ascii", cells);
    char line[128];
    visitModel(
        cells,
        [&](float x, float y, float z) {
            std::snprintf(line, sizeof line, "%.6f %.6f %.6f\n", static_cast<double>(x), static_cast<double>(y),
                          static_cast<double>(z));
            text += line;
        },
        [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
            std::snprintf(line, sizeof line, "3 %u %u %u\n", a, b, c);
            text += line;
        });
    return text;
}

const ScratchFile& binaryFile() {
    static const ScratchFile file("velmar_bench_binary.ply", binaryText(many_cells));
    return file;
}

const ScratchFile& asciiFile() {
    static const ScratchFile file("velmar_bench_ascii.ply", asciiText(many_cells));
    return file;
}

const ScratchFile& smallFile() {
    static const ScratchFile file("velmar_bench_small.ply", binaryText(few_cells));
    return file;
}

using ModelFile = const ScratchFile& (*)();

void velmarPly(benchmark::State& state, ModelFile file) {
    readByVelmar(state, file().path(),
                 [](const std::string& path, Velmar::Mesh& mesh) { Velmar::loadPLY(path, mesh, 1.0f); });
}

int doNothing(p_ply_argument) {
    return 1;
}

int keepNumber(p_ply_argument argument) {
    void* last_number = nullptr;
    ply_get_argument_user_data(argument, &last_number, nullptr);
    *static_cast<double*>(last_number) = ply_get_argument_value(argument);
    return 1;
}

/// A file read as RPly itself does.
class StdioStream final : public Velmar::PlyStream {
  public:
    explicit StdioStream(const std::string& path) : file(std::fopen(path.c_str(), "rb")) {}
    ~StdioStream() override { std::fclose(file); }

    std::size_t read(char* to, std::size_t size) noexcept override { return std::fread(to, 1, size, file); }

  private:
    std::FILE* file;
};

void readByRPly(benchmark::State& state, ModelFile file, p_ply_read_cb callback) {
    const std::string& path = file().path();
    double last_number = 0;
    for (auto _ : state) {
        StdioStream stream(path);
        const Velmar::PlyHandle ply = Velmar::openPly(stream, nullptr, nullptr);
        ply_read_header(ply.get());
        for (const char* axis : {"x", "y", "z"})
            ply_set_read_cb(ply.get(), "vertex", axis, callback, &last_number, 0);
        ply_set_read_cb(ply.get(), "face", "vertex_indices", callback, &last_number, 0);
        benchmark::DoNotOptimize(ply_read(ply.get()));
    }
}

/// The same file with empty callbacks.
void barePly(benchmark::State& state, ModelFile file) {
    readByRPly(state, file, doNothing);
}

/// The minimum that a reader by RPly must do: each callback asks for its state and the number.
void leastPly(benchmark::State& state, ModelFile file) {
    readByRPly(state, file, keepNumber);
}

void assimpPly(benchmark::State& state, ModelFile file) {
    readByAssimp(state, file().path());
}

BENCHMARK_CAPTURE(velmarPly, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(barePly, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(leastPly, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpPly, binary, binaryFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarPly, ascii, asciiFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(barePly, ascii, asciiFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(leastPly, ascii, asciiFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpPly, ascii, asciiFile)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarPly, small, smallFile)->Unit(benchmark::kMillisecond);

} // namespace
