#include "velmarstring.h"

#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"
#include "mesh/VmmeshReader.h"
#include "mesh/VmmeshWriter.h"
#include "utils/MappedFile.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>
#include <zstd.h>

using namespace Velmar;

namespace {

constexpr std::uint32_t cells = 710;

/// A million triangles. Their order is that of a grid with each triangle exchanged for one nearby, so that the
/// differences between them are as uneven as those of scanned and modelled surfaces; a plain grid packs to nothing.
const Mesh& wavySquare() {
    static const Mesh* const mesh = [] {
        static Mesh filled;
        const std::uint32_t side = cells + 1;
        for (std::uint32_t row = 0; row < side; ++row)
            for (std::uint32_t column = 0; column < side; ++column) {
                const float x = static_cast<float>(column) * 0.1f;
                const float y = static_cast<float>(row) * 0.1f;
                filled.addVertexWithNormal({x, y, std::sin(x) * std::cos(y)}, {std::cos(x), std::sin(y), 1.0f});
            }
        for (std::uint32_t row = 0; row < cells; ++row)
            for (std::uint32_t column = 0; column < cells; ++column) {
                const std::uint32_t corner = row * side + column;
                filled.addTriangle({corner, corner + 1, corner + side + 1}, {0, 0, 0}, 0);
                filled.addTriangle({corner, corner + side + 1, corner + side}, {0, 0, 0}, 0);
            }
        std::minstd_rand random;
        for (std::size_t i = 0; i + 64 < filled.triangles.size(); ++i)
            std::swap(filled.triangles[i], filled.triangles[i + random() % 64]);
        filled.build();
        return &filled;
    }();
    return *mesh;
}

std::string scratchPath(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

std::string fileFor(bool compressed) {
    const std::string path = scratchPath(compressed ? "velmar_bench_z.vmmesh" : "velmar_bench.vmmesh");
    writeToFile(toVelmarString(path), wavySquare(), compressed);
    return path;
}

/// The bytes of a plain file, and so nearly those that are compressed.
std::vector<char> plainBytes() {
    const std::string path = fileFor(false);
    const MappedFile file(path);
    return {file.getText().begin(), file.getText().end()};
}

void countBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void writeVmmesh(benchmark::State& state, bool compressed) {
    const std::size_t bytes = plainBytes().size();
    const String path = toVelmarString(scratchPath("velmar_bench_out.vmmesh"));
    for (auto _ : state)
        writeToFile(path, wavySquare(), compressed);
    countBytes(state, bytes);
}

void bareFwrite(benchmark::State& state) {
    const std::vector<char> bytes = plainBytes();
    const std::string path = scratchPath("velmar_bench_out.vmmesh");
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        benchmark::DoNotOptimize(std::fwrite(bytes.data(), 1, bytes.size(), file));
        std::fclose(file);
    }
    countBytes(state, bytes.size());
}

void readVmmesh(benchmark::State& state, bool compressed) {
    const std::size_t bytes = plainBytes().size();
    const String path = toVelmarString(fileFor(compressed));
    for (auto _ : state) {
        Mesh mesh;
        readFromFile(path, mesh);
        benchmark::DoNotOptimize(mesh.triangles.data());
    }
    countBytes(state, bytes);
}

/// The same bytes from a mapping into fresh memory of the C runtime.
void bareMemcpy(benchmark::State& state) {
    const std::string path = fileFor(false);
    std::size_t size = 0;
    for (auto _ : state) {
        const MappedFile file(path);
        size = static_cast<std::size_t>(file.getSize());
        const std::unique_ptr<char[]> copy(new char[size]);
        std::memcpy(copy.get(), file.getData(), size);
        benchmark::DoNotOptimize(copy.get());
        benchmark::ClobberMemory();
    }
    countBytes(state, size);
}

/// The body of a compressed file, as the writer hands it to zstd: taken from the file itself.
std::vector<char> innerBlock() {
    const MappedFile file(fileFor(true));
    constexpr std::size_t frame_offset = 16 + 3 * 4 + 8;
    const char* const frame = file.getText().data() + frame_offset;
    const std::size_t frame_size = static_cast<std::size_t>(file.getSize()) - frame_offset;
    std::vector<char> inner(ZSTD_getFrameContentSize(frame, frame_size));
    ZSTD_decompress(inner.data(), inner.size(), frame, frame_size);
    return inner;
}

void zstdCompress(benchmark::State& state) {
    const std::vector<char> inner = innerBlock();
    const std::string path = scratchPath("velmar_bench_out.vmmesh");
    for (auto _ : state) {
        const std::size_t room = ZSTD_compressBound(inner.size());
        const std::unique_ptr<char[]> frame(new char[room]);
        benchmark::DoNotOptimize(ZSTD_compress(frame.get(), room, inner.data(), inner.size(), 1));
    }
    countBytes(state, plainBytes().size());
}

void zstdDecompress(benchmark::State& state) {
    const MappedFile file(fileFor(true));
    constexpr std::size_t frame_offset = 16 + 3 * 4 + 8;
    const char* const frame = file.getText().data() + frame_offset;
    const std::size_t frame_size = static_cast<std::size_t>(file.getSize()) - frame_offset;
    for (auto _ : state) {
        const std::size_t size = ZSTD_getFrameContentSize(frame, frame_size);
        const std::unique_ptr<char[]> inner(new char[size]);
        benchmark::DoNotOptimize(ZSTD_decompress(inner.get(), size, frame, frame_size));
    }
    countBytes(state, plainBytes().size());
}

/// Lets every large block be fresh memory, for us and our peers, as it is to a host that reads one file. Otherwise the
/// runtime learns from the first blocks to keep some for the next, and what is measured hangs on the order of the runs.
[[maybe_unused]] const int fresh_memory = mallopt(M_MMAP_THRESHOLD, 128 * 1024);

// A peer bears the rest of our name, and the table sets the two side by side.
BENCHMARK_CAPTURE(writeVmmesh, plain, false)->Name("velmarWrite/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(bareFwrite)->Name("fwriteWrite/plain")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readVmmesh, plain, false)->Name("velmarRead/plain")->Unit(benchmark::kMillisecond);
BENCHMARK(bareMemcpy)->Name("memcpyRead/plain")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(writeVmmesh, compressed, true)->Name("velmarWrite/compressed")->Unit(benchmark::kMillisecond);
BENCHMARK(zstdCompress)->Name("zstdWrite/compressed")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readVmmesh, compressed, true)->Name("velmarRead/compressed")->Unit(benchmark::kMillisecond);
BENCHMARK(zstdDecompress)->Name("zstdRead/compressed")->Unit(benchmark::kMillisecond);

} // namespace
