/// Calls of the companion library beside the same calls of the library itself: what the status, the checks and the
/// guard cost. The difference of two times is the price of one call.

#include "velmarkit.h"

#include <benchmark/benchmark.h>

namespace {

void kitSetter_Velmar(benchmark::State& state) {
    VelmarCamera* const camera = VelmarCamera_Create();
    double x = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(VelmarKit_Camera_SetForwards(camera, x, 1, 0));
        x += 1;
    }
    VelmarKit_Node_Delete(camera);
}
BENCHMARK(kitSetter_Velmar);

void kitSetter_Bare(benchmark::State& state) {
    VelmarCamera* const camera = VelmarCamera_Create();
    double x = 0;
    for (auto _ : state) {
        VelmarCamera_SetForwards(camera, x, 1, 0);
        x += 1;
    }
    VelmarKit_Node_Delete(camera);
}
BENCHMARK(kitSetter_Bare);

void kitBuild_Velmar(benchmark::State& state) {
    VelmarMesh* const mesh = VelmarMesh_Create("Mesh");
    std::uint32_t materials = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(VelmarKit_Mesh_Build(mesh, &materials));
    VelmarMesh_Delete(mesh);
}
BENCHMARK(kitBuild_Velmar);

void kitBuild_Bare(benchmark::State& state) {
    VelmarMesh* const mesh = VelmarMesh_Create("Mesh");
    for (auto _ : state)
        benchmark::DoNotOptimize(VelmarMesh_Build(mesh));
    VelmarMesh_Delete(mesh);
}
BENCHMARK(kitBuild_Bare);

void kitGetter_Velmar(benchmark::State& state) {
    VelmarCamera* const camera = VelmarCamera_Create();
    double x = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(VelmarKit_Camera_GetSensorWidth(camera, &x));
    VelmarKit_Node_Delete(camera);
}
BENCHMARK(kitGetter_Velmar);

} // namespace
