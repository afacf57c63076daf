#include "velmarstring.h"

#include "bench/support/BenchMesh.h"
#include "mesh/Mesh.h"
#include "mesh/VmmeshFile.h"
#include "utils/MappedFile.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>
#include <zstd.h>

using namespace Velmar;

namespace {

/// A mesh by a function, so that only the measured ones are created.
using MeshSource = const Mesh& (*)();

std::string scratchPath(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

std::string fileFor(const Mesh& mesh, bool compressed) {
    const std::string path = scratchPath(compressed ? "velmar_bench_z.vmmesh" : "velmar_bench.vmmesh");
    writeToFile(toVelmarString(path), mesh, compressed);
    return path;
}

/// The bytes of a plain file, nearly those that are compressed.
std::vector<char> plainBytes(const Mesh& mesh) {
    const std::string path = fileFor(mesh, false);
    const MappedFile file(path);
    return {file.getText().begin(), file.getText().end()};
}

void countBytes(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void writeVmmesh(benchmark::State& state, MeshSource source, bool compressed) {
    const Mesh& mesh = source();
    const std::size_t bytes = plainBytes(mesh).size();
    const String path = toVelmarString(scratchPath("velmar_bench_out.vmmesh"));
    for (auto _ : state)
        writeToFile(path, mesh, compressed);
    countBytes(state, bytes);
}

void writeByFwrite(const std::string& path, const char* bytes, std::size_t size) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    benchmark::DoNotOptimize(std::fwrite(bytes, 1, size, file));
    std::fclose(file);
}

void bareFwrite(benchmark::State& state, MeshSource source) {
    const std::vector<char> bytes = plainBytes(source());
    const std::string path = scratchPath("velmar_bench_out.vmmesh");
    for (auto _ : state)
        writeByFwrite(path, bytes.data(), bytes.size());
    countBytes(state, bytes.size());
}

void readVmmesh(benchmark::State& state, MeshSource source, bool compressed) {
    const std::size_t bytes = plainBytes(source()).size();
    const String path = toVelmarString(fileFor(source(), compressed));
    for (auto _ : state) {
        Mesh mesh;
        readFromFile(path, mesh);
        benchmark::DoNotOptimize(mesh.triangles.data());
    }
    countBytes(state, bytes);
}

/// Copies the same bytes from a mapping into new memory of the C runtime.
void bareMemcpy(benchmark::State& state, MeshSource source) {
    const std::string path = fileFor(source(), false);
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

/// The input of zstd for a compressed file, decompressed from the file itself.
std::vector<char> innerBlock(const Mesh& mesh) {
    const MappedFile file(fileFor(mesh, true));
    constexpr std::size_t frame_offset = 16 + 3 * 4 + 8;
    const char* const frame = file.getText().data() + frame_offset;
    const std::size_t frame_size = static_cast<std::size_t>(file.getSize()) - frame_offset;
    std::vector<char> inner(ZSTD_getFrameContentSize(frame, frame_size));
    ZSTD_decompress(inner.data(), inner.size(), frame, frame_size);
    return inner;
}

/// Compresses a block that is filled already, or, as the writer must, fills a new one first. `use` gets the frame and
/// its size.
template <class Use>
void zstdCompress(benchmark::State& state, MeshSource source, bool fills_block, Use use) {
    const std::vector<char> inner = innerBlock(source());
    for (auto _ : state) {
        const std::unique_ptr<char[]> filled(fills_block ? new char[inner.size()] : nullptr);
        if (fills_block) std::memcpy(filled.get(), inner.data(), inner.size());
        const std::size_t room = ZSTD_compressBound(inner.size());
        const std::unique_ptr<char[]> frame(new char[room]);
        const char* const block = fills_block ? filled.get() : inner.data();
        use(frame.get(), ZSTD_compress(frame.get(), room, block, inner.size(), 1));
    }
    countBytes(state, plainBytes(source()).size());
}

void zstdCompressToMemory(benchmark::State& state, MeshSource source) {
    zstdCompress(state, source, false, [](const char*, std::size_t size) { benchmark::DoNotOptimize(size); });
}

void zstdCompressToFile(benchmark::State& state, MeshSource source, bool fills_block) {
    const std::string path = scratchPath("velmar_bench_out.vmmesh");
    zstdCompress(state, source, fills_block,
                 [&](const char* frame, std::size_t size) { writeByFwrite(path, frame, size); });
}

void zstdDecompress(benchmark::State& state, MeshSource source) {
    const MappedFile file(fileFor(source(), true));
    constexpr std::size_t frame_offset = 16 + 3 * 4 + 8;
    const char* const frame = file.getText().data() + frame_offset;
    const std::size_t frame_size = static_cast<std::size_t>(file.getSize()) - frame_offset;
    for (auto _ : state) {
        const std::size_t size = ZSTD_getFrameContentSize(frame, frame_size);
        const std::unique_ptr<char[]> inner(new char[size]);
        benchmark::DoNotOptimize(ZSTD_decompress(inner.get(), size, frame, frame_size));
    }
    countBytes(state, plainBytes(source()).size());
}

/// Makes every large block new memory, for us and the compared code, as in a host that reads one file. Otherwise the
/// runtime would keep freed blocks, and the times would depend on the order of the runs.
[[maybe_unused]] const int fresh_memory = mallopt(M_MMAP_THRESHOLD, 128 * 1024);

void measure(const std::string& name, MeshSource source) {
    // The report compares benchmarks whose names share the rest of ours.
    using State = benchmark::State;
    const auto add = [&](const std::string& what, auto run) {
        benchmark::RegisterBenchmark((what + "/" + name).c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("velmarPlainWrite", [=](State& state) { writeVmmesh(state, source, false); });
    add("fwritePlainWrite", [=](State& state) { bareFwrite(state, source); });
    add("velmarPlainRead", [=](State& state) { readVmmesh(state, source, false); });
    add("memcpyPlainRead", [=](State& state) { bareMemcpy(state, source); });
    add("velmarCompressedWrite", [=](State& state) { writeVmmesh(state, source, true); });
    add("zstdCompressedWrite", [=](State& state) { zstdCompressToMemory(state, source); });
    add("zstdFileCompressedWrite", [=](State& state) { zstdCompressToFile(state, source, false); });
    add("zstdFilledFileCompressedWrite", [=](State& state) { zstdCompressToFile(state, source, true); });
    add("velmarCompressedRead", [=](State& state) { readVmmesh(state, source, true); });
    add("zstdCompressedRead", [=](State& state) { zstdDecompress(state, source); });
}

[[maybe_unused]] const bool measured = [] {
    measure("bunny", BenchSupport::refinedBunny);
    measure("square", BenchSupport::wavySquare);
    return true;
}();

} // namespace
