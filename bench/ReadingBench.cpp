/// Reading a document of many models that share a mesh, compared with pugixml, which parses the same text into its tree
/// and reads nothing from it. The end of scene and tree isn't timed.

#include "bench/support/ModelDocument.h"
#include "scene/reading/SceneXMLReader.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <pugixml.hpp>
#include <stdexcept>

using namespace Velmar;
using BenchSupport::ModelDocument;

namespace {

void report(benchmark::State& state, const ModelDocument& document, double peak) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["peak_MiB"] = peak / (1 << 20);
    state.counters["of_scene"] = peak / document.scene_bytes;
}

void velmarReading(benchmark::State& state) {
    const ModelDocument document(state.range(0));
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state) {
        Reference<SceneNodeRoot> root = readSceneXML(toVelmarString(document.file.path()));
        if (root->children().size() != static_cast<std::size_t>(state.range(0)) + 2)
            throw std::runtime_error("not all nodes were read");
        state.PauseTiming();
        root = nullptr;
        state.ResumeTiming();
    }
    report(state, document, static_cast<double>(memory.rise()));
}

void pugixmlParsing(benchmark::State& state) {
    const ModelDocument document(state.range(0));
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state) {
        pugi::xml_document tree;
        if (!tree.load_file(document.file.path().c_str())) throw std::runtime_error("pugixml can't parse it");
        benchmark::DoNotOptimize(tree.first_child());
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
    report(state, document, static_cast<double>(memory.rise()));
}

BENCHMARK(velmarReading)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(pugixmlParsing)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
