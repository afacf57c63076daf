#include "bench/support/MeshReading.h"
#include "bench/support/ObjModel.h"
#include "mesh/Mesh.h"
#include "mesh/MeshReaders.h"

#include <benchmark/benchmark.h>
#include <string>
#include <tiny_obj_loader.h>
#include <vector>

using namespace BenchSupport;

namespace {

/// 710 by 710 cells: a little more than a million triangles.
constexpr std::uint32_t cells = 710;
/// Small enough to count instructions, which takes fifty times as long.
constexpr std::uint32_t few_cells = 100;

template <ObjCorners corners, std::uint32_t model_cells>
const ScratchFile& model() {
    static const ScratchFile file("velmar_bench_" + std::to_string(static_cast<int>(corners)) + "_" +
                                      std::to_string(model_cells) + ".obj",
                                  makeObjText(model_cells, corners));
    return file;
}

using ModelFile = const ScratchFile& (*)();
constexpr ModelFile of_positions = model<ObjCorners::positions_only, cells>;
constexpr ModelFile of_all = model<ObjCorners::positions_uvs_normals, cells>;
constexpr ModelFile few_of_positions = model<ObjCorners::positions_only, few_cells>;
constexpr ModelFile few_of_all = model<ObjCorners::positions_uvs_normals, few_cells>;

void velmarObj(benchmark::State& state, ModelFile file) {
    readByVelmar(state, file().path(), [](const std::string& path, Velmar::Mesh& mesh) {
        Velmar::MTLLibrary library;
        Velmar::loadOBJ(path, mesh, 1.0f, false, library);
    });
}

void tinyObj(benchmark::State& state, ModelFile file) {
    const std::string& path = file().path();
    std::size_t triangles = 0;
    for (auto _ : state) {
        tinyobj::attrib_t attributes;
        std::vector<tinyobj::shape_t> shapes;
        std::vector<tinyobj::material_t> materials;
        std::string warnings;
        std::string errors;
        if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path.c_str()))
            state.SkipWithError(errors.c_str());
        triangles = shapes.at(0).mesh.num_face_vertices.size();
    }
    state.counters["triangles"] = static_cast<double>(triangles);
}

void assimpObj(benchmark::State& state, ModelFile file) {
    readByAssimp(state, file().path());
}

BENCHMARK_CAPTURE(velmarObj, v, of_positions)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(tinyObj, v, of_positions)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpObj, v, of_positions)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarObj, v_vt_vn, of_all)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(tinyObj, v_vt_vn, of_all)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(assimpObj, v_vt_vn, of_all)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarObj, small_v, few_of_positions)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarObj, small_v_vt_vn, few_of_all)->Unit(benchmark::kMillisecond);

} // namespace
