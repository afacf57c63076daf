/// Measures the preview renderer against Embree alone, and against its own limits.
///
/// Usage: preview_bench [ROUNDS [NAME]]
///
/// Prints a Markdown table of the shortest times of ROUNDS (5) rounds, or the row NAME of it alone: rays, threads,
/// memory, start, instances. The scene is the bunny of Debian's package glmark2-data.

#include "preview/RenderJob.h"

#include "bench/support/BenchMesh.h"
#include "bench/support/PeakMemory.h"
#include "mesh/MeshReaders.h"
#include "renderer/ImageBuffers.h"
#include "scene/Rotations.h"
#include "scene/SceneNodeRoot.h"
#include "tests/preview/PreviewScene.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <numeric>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace Preview;
using TestSupport::PreviewScene;
using Velmar::Mesh;
using Velmar::Reference;

namespace {

constexpr const char* bunny_file = "/usr/share/glmark2/models/bunny.obj";
constexpr double infinite = std::numeric_limits<double>::infinity();

using Clock = std::chrono::steady_clock;

/// Processor time in seconds, of which other programs take none.
double processorSeconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double threadSeconds() {
    return processorSeconds(CLOCK_THREAD_CPUTIME_ID);
}

double secondsSince(Clock::time_point begun) {
    return std::chrono::duration<double>(Clock::now() - begun).count();
}

Velmar::SceneNodeMesh* addMesh(PreviewScene& scene, const Reference<Mesh>& mesh) {
    auto* const node = new Velmar::SceneNodeMesh;
    node->mesh = mesh;
    node->normal_smoothing = true;
    scene.add(node);
    return node;
}

Reference<Mesh> loadBunny() {
    Reference<Mesh> mesh(new Mesh);
    Velmar::MTLLibrary library;
    Velmar::loadOBJ(bunny_file, *mesh, 1.0f, false, library);
    return mesh;
}

/// A model of the mesh, upright in front of the camera, as large as the picture is high.
Velmar::SceneNodeModel* addUpright(PreviewScene& scene, Velmar::SceneNodeMesh* node,
                                   Velmar::SceneNodeMaterial* material) {
    const Mesh& mesh = *node->mesh;
    Velmar::SceneNodeModel* const model = scene.addModel(node, material);
    auto* const rotation = new Velmar::MatrixRotation;
    // Its up is y, the scene's z.
    const double upright[9] = {1, 0, 0, 0, 0, -1, 0, 1, 0};
    std::copy(std::begin(upright), std::end(upright), std::begin(rotation->matrix));
    model->rotation = rotation;
    const auto middle = [](float low, float high) { return 0.5 * (double{low} + double{high}); };
    const double size = double{mesh.aabb_max.y} - double{mesh.aabb_min.y};
    model->keyframes[0].pos = {-middle(mesh.aabb_min.x, mesh.aabb_max.x),
                               2.0 * size + middle(mesh.aabb_min.z, mesh.aabb_max.z),
                               -middle(mesh.aabb_min.y, mesh.aabb_max.y)};
    return model;
}

void row(const char* name, const std::string& measured, const std::string& compared, double ratio, const char* aim) {
    std::printf("| %s | %s | %s | %.2f | %s |\n", name, measured.c_str(), compared.c_str(), ratio, aim);
    std::fflush(stdout);
}

std::string text(const char* format, double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

/// Waits until the job's progress is as wanted, and returns when that was.
template <class Wanted>
double waitFor(const RenderJob& job, Clock::time_point begun, Wanted wanted) {
    while (!wanted(job.getProgress()))
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    return secondsSince(begun);
}

bool isFinished(const VelmarPreviewProgress& progress) {
    return progress.state >= VELMAR_PREVIEW_FINISHED;
}

/// One ray for each pixel: Embree alone with the rays at hand, and the preview, which makes them, finds out what they
/// hit, shades it and merges the result into the store.
void measureRays(int rounds) {
    PreviewScene scene(1280, 720);
    scene.settings->max_depth.set(0);
    addUpright(scene, addMesh(scene, loadBunny()), scene.addEmitter(1.0, 0.5));
    scene.setUniformBackground(0.2);
    const Reference<Velmar::RenderBuffer> buffer(new Velmar::RenderBuffer(scene.root));
    const std::atomic<bool> cancelled = false;
    const SceneNodes nodes(*scene.root);
    World world(1);
    const std::shared_ptr<const PreparedRender> render = PreparedRender::make(nodes, *buffer, world, 0, cancelled);
    const ImageStore& store = render->getStore();

    const Camera camera(*nodes.camera, store.getWidth(), store.getHeight(), false);
    std::vector<RTCRayHit> rays;
    std::vector<std::size_t> ends;
    for (const PixelBox& tile : render->getTiles()) {
        for (std::uint32_t y = tile.y1; y < tile.y2; ++y) {
            for (std::uint32_t x = tile.x1; x < tile.x2; ++x) {
                Sampler sampler(0, y * store.getLayerWidth() + x, 0);
                const Vec2 inside = sampler.next2();
                float weight = 0.0f;
                const auto margin = static_cast<float>(store.getMargin());
                const Ray ray = camera.sampleRay(static_cast<float>(x) + inside.x - margin,
                                                 static_cast<float>(y) + inside.y - margin, false, sampler, weight);
                RTCRayHit& hit = rays.emplace_back();
                hit.ray.org_x = ray.origin.x, hit.ray.org_y = ray.origin.y, hit.ray.org_z = ray.origin.z;
                hit.ray.dir_x = ray.direction.x, hit.ray.dir_y = ray.direction.y, hit.ray.dir_z = ray.direction.z;
                hit.ray.tfar = std::numeric_limits<float>::infinity();
                hit.ray.mask = 0xFFFFFFFFu;
                hit.hit.geomID = hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
            }
        }
        ends.push_back(rays.size());
    }
    // The shortest time of each tile counts: it is short enough not to be interrupted in every round.
    std::vector<double> bare_times(ends.size(), infinite);
    std::vector<double> whole_times(ends.size(), infinite);
    std::size_t hits = 0;
    std::vector<float> values = render->makeTileValues();
    for (int i = 0; i < 4 * rounds; ++i) {
        hits = 0;
        for (std::size_t tile = 0; tile < ends.size(); ++tile) {
            double begun = threadSeconds();
            for (std::size_t at = tile == 0 ? 0 : ends[tile - 1]; at < ends[tile]; ++at) {
                RTCIntersectContext context;
                rtcInitIntersectContext(&context);
                RTCRayHit hit = rays[at];
                rtcIntersect1(world.getScene(), &context, &hit);
                hits += hit.hit.geomID != RTC_INVALID_GEOMETRY_ID ? 1 : 0;
            }
            bare_times[tile] = std::min(bare_times[tile], threadSeconds() - begun);
            begun = threadSeconds();
            render->renderTile(render->getTiles()[tile], 1, values, cancelled);
            whole_times[tile] = std::min(whole_times[tile], threadSeconds() - begun);
        }
    }
    const double bare = std::accumulate(bare_times.begin(), bare_times.end(), 0.0);
    const double whole = std::accumulate(whole_times.begin(), whole_times.end(), 0.0);
    const double million = static_cast<double>(rays.size()) * 1e-6;
    row("rays", text("%.2f M/s", million / whole), text("%.2f M/s, rtcIntersect1", million / bare), bare / whole,
        ">= 0.6");
    std::fprintf(stderr, "%.0f %% of the rays hit something\n",
                 100.0 * static_cast<double>(hits) / static_cast<double>(rays.size()));
}

/// A sunny scene with light that is reflected.
void makeSunny(PreviewScene& scene) {
    addUpright(scene, addMesh(scene, loadBunny()), scene.addMaterial(0.7));
    scene.addFloor(0, 1, -1, 20, scene.addMaterial(0.5));
    scene.setSunSky({1, -1, 1});
}

void measureThreads(int rounds) {
    PreviewScene scene(640, 360);
    makeSunny(scene);
    scene.settings->halt_samples_per_pixel.set(8);
    double seconds[2] = {infinite, infinite};
    for (int i = 0; i < rounds; ++i) {
        for (const unsigned threads : {1u, 2u}) {
            const Reference<Velmar::RenderBuffer> buffer(new Velmar::RenderBuffer(scene.root));
            RenderJob job(*scene.root, *buffer);
            job.setImagePath("");
            job.setOption(VELMAR_PREVIEW_THREADS, threads);
            job.start();
            waitFor(job, {}, [](const auto& now) { return now.state >= VELMAR_PREVIEW_RENDERING; });
            const Clock::time_point begun = Clock::now();
            seconds[threads - 1] = std::min(seconds[threads - 1], waitFor(job, begun, isFinished));
        }
    }
    row("threads", text("%.0f ms with 2", 1000 * seconds[1]), text("%.0f ms with 1", 1000 * seconds[0]),
        seconds[0] / seconds[1], ">= 1.8");
}

/// What Embree keeps for the triangles of a mesh alone, in bytes.
std::size_t measureStructure(const Mesh& mesh) {
    // Embree may read a little more than the last vertex.
    std::vector<Velmar::Vec3f> vertices(mesh.verts.begin(), mesh.verts.end());
    vertices.emplace_back();
    const BenchSupport::PeakMemory memory;
    const RTCDevice device = rtcNewDevice("threads=1");
    const RTCScene scene = rtcNewScene(device);
    rtcSetSceneFlags(scene, static_cast<RTCSceneFlags>(RTC_SCENE_FLAG_ROBUST | RTC_SCENE_FLAG_COMPACT));
    const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, vertices.data(), 0,
                               sizeof(Velmar::Vec3f), mesh.verts.size());
    rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.triangles.data(), 0,
                               sizeof(Velmar::MeshTriangle), mesh.triangles.size());
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene);
    const std::size_t bytes = memory.present();
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
    return bytes;
}

void measureMemory() {
    // Loads it once, so that its readers' memory isn't counted.
    const Mesh& refined = BenchSupport::refinedBunny();
    const auto embree = static_cast<double>(measureStructure(refined));
    const BenchSupport::PeakMemory memory;
    PreviewScene scene(64, 64);
    Reference<Mesh> mesh(new Mesh);
    mesh->verts = refined.verts;
    mesh->normals = refined.normals;
    mesh->uv_pairs = refined.uv_pairs;
    mesh->triangles = refined.triangles;
    mesh->quads = refined.quads;
    mesh->aabb_min = refined.aabb_min;
    mesh->aabb_max = refined.aabb_max;
    const std::size_t scene_bytes = memory.rise();
    Velmar::SceneNodeMesh* const node = addMesh(scene, mesh);
    node->normal_smoothing = false;
    scene.addModel(node, scene.addMaterial(0.5), {0, 5, 0});
    scene.setUniformBackground(1.0);
    scene.settings->halt_samples_per_pixel.set(1);
    const Reference<Velmar::RenderBuffer> buffer(new Velmar::RenderBuffer(scene.root));
    RenderJob job(*scene.root, *buffer);
    job.setImagePath("");
    job.start();
    waitFor(job, {}, isFinished);
    const auto peak = static_cast<double>(memory.rise());
    constexpr double mebi = 0x100000;
    row("memory", text("%.0f MiB", peak / mebi),
        text("%.0f MiB scene", static_cast<double>(scene_bytes) / mebi) + text(" + %.0f MiB Embree", embree / mebi),
        peak / (static_cast<double>(scene_bytes) + embree), "<= 1.3");
}

void measureStart(int rounds) {
    PreviewScene scene(1280, 720);
    makeSunny(scene);
    scene.settings->halt_samples_per_pixel.has_value = false;
    const std::string path = (std::filesystem::temp_directory_path() / "velmar_preview_bench.png").string();
    double seconds = infinite;
    double work = infinite;
    for (int i = 0; i < rounds; ++i) {
        const Reference<Velmar::RenderBuffer> buffer(new Velmar::RenderBuffer(scene.root));
        RenderJob job(*scene.root, *buffer);
        job.setImagePath(path);
        job.setOption(VELMAR_PREVIEW_THREADS, 2);
        const Clock::time_point begun = Clock::now();
        const double work_before = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
        job.start();
        seconds = std::min(seconds, waitFor(job, begun, [](const auto& now) { return now.pictures > 0; }));
        work = std::min(work, processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - work_before);
    }
    std::filesystem::remove(path);
    row("start", text("%.0f ms to the first picture", 1000 * seconds) + text(", half its work %.0f ms", 500 * work),
        "500 ms", seconds / 0.5, "<= 1");
}

void measureInstances(int rounds) {
    PreviewScene scene(640, 360);
    Velmar::SceneNodeMesh* const mesh = addMesh(scene, loadBunny());
    Velmar::SceneNodeMaterial* const material = scene.addMaterial(0.5);
    constexpr int edge = 1000;
    const double step = 1.5 * (double{mesh->mesh->aabb_max.x} - double{mesh->mesh->aabb_min.x});
    for (int y = 0; y < edge; ++y)
        for (int x = 0; x < edge; ++x)
            scene.addModel(mesh, material, {(x - edge / 2) * step, (y + 5) * step, -step});
    scene.setUniformBackground(1.0);
    scene.settings->halt_samples_per_pixel.set(1);
    double seconds = infinite;
    double work = infinite;
    std::uint64_t bytes = 0;
    for (int i = 0; i < rounds; ++i) {
        const Reference<Velmar::RenderBuffer> buffer(new Velmar::RenderBuffer(scene.root));
        RenderJob job(*scene.root, *buffer);
        job.setImagePath("");
        job.setOption(VELMAR_PREVIEW_THREADS, 2);
        const Clock::time_point begun = Clock::now();
        const double work_before = processorSeconds(CLOCK_PROCESS_CPUTIME_ID);
        job.start();
        const double taken = waitFor(job, begun, [](const auto& now) { return now.state >= VELMAR_PREVIEW_RENDERING; });
        seconds = std::min(seconds, taken);
        work = std::min(work, processorSeconds(CLOCK_PROCESS_CPUTIME_ID) - work_before);
        bytes = job.getProgress().memory;
    }
    row("instances", text("%.2f s for 1,000,000 bunnies", seconds) + text(", processor time %.2f s", work), "10 s",
        seconds / 10.0, "<= 1");
    std::fprintf(stderr, "Embree: %.0f bytes for each instance\n", static_cast<double>(bytes) / (edge * edge));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 5;
    const std::string_view name = argc > 2 ? argv[2] : "";
    if (!std::filesystem::exists(bunny_file)) {
        std::fprintf(stderr, "%s isn't there: install glmark2-data\n", bunny_file);
        return 1;
    }
    std::printf("| measure | preview | compared with | ratio | aim |\n|---|---|---|---|---|\n");
    if (name.empty() || name == "rays") measureRays(rounds);
    if (name.empty() || name == "threads") measureThreads(rounds);
    if (name.empty() || name == "memory") measureMemory();
    if (name.empty() || name == "start") measureStart(rounds);
    if (name.empty() || name == "instances") measureInstances(std::min(rounds, 2));
    return 0;
}
