#include "bench/support/ObjModel.h"
#include "bench/support/PeakMemory.h"
#include "mesh/Mesh.h"
#include "mesh/MtlLoader.h"
#include "mesh/ObjLoader.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>
#include <tiny_obj_loader.h>
#include <vector>

using namespace BenchSupport;

namespace {

/// 710 by 710 cells: a little more than a million triangles.
constexpr std::uint32_t cells = 710;

const ScratchFile& model(ObjCorners corners) {
    static const ScratchFile plain("velmar_bench_v.obj", makeObjText(cells, ObjCorners::positions_only));
    static const ScratchFile full("velmar_bench_v_vt_vn.obj", makeObjText(cells, ObjCorners::positions_uvs_normals));
    return corners == ObjCorners::positions_only ? plain : full;
}

void countTriangles(benchmark::State& state, std::size_t triangles) {
    state.counters["triangles"] = static_cast<double>(triangles);
    state.counters["triangles/s"] =
        benchmark::Counter(static_cast<double>(triangles), benchmark::Counter::kIsIterationInvariantRate);
}

void velmarObj(benchmark::State& state, ObjCorners corners) {
    const std::string& path = model(corners).path();
    std::size_t triangles = 0;
    std::size_t mesh_bytes = 0;
    const PeakMemory peak;
    for (auto _ : state) {
        Velmar::Mesh mesh;
        Velmar::MTLLibrary library;
        Velmar::loadOBJ(path, mesh, 1.0f, false, library);
        triangles = mesh.triangles.size();
        mesh_bytes = (mesh.verts.size() + mesh.normals.size()) * sizeof(Velmar::Vec3f) +
                     mesh.uv_pairs.size() * sizeof(Velmar::Vec2f) + triangles * sizeof(Velmar::MeshTriangle);
    }
    countTriangles(state, triangles);
    // The file itself is mapped and counts while it is read.
    state.counters["peak_MiB"] = static_cast<double>(peak.rise()) / 0x100000;
    state.counters["mesh_MiB"] = static_cast<double>(mesh_bytes) / 0x100000;
    state.counters["file_MiB"] = static_cast<double>(std::filesystem::file_size(path)) / 0x100000;
}

void tinyObj(benchmark::State& state, ObjCorners corners) {
    const std::string& path = model(corners).path();
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
    countTriangles(state, triangles);
}

BENCHMARK_CAPTURE(velmarObj, v, ObjCorners::positions_only)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(tinyObj, v, ObjCorners::positions_only)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(velmarObj, v_vt_vn, ObjCorners::positions_uvs_normals)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(tinyObj, v_vt_vn, ObjCorners::positions_uvs_normals)->Unit(benchmark::kMillisecond);

} // namespace
