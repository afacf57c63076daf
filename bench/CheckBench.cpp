/// Checking a document of many models and comparing two of them, as `velmar check` and `velmar diff` do, compared with
/// reading one.

#include "bench/support/ModelDocument.h"
#include "scene/reading/SceneXMLReader.h"
#include "tools/Console.h"
#include "tools/DocumentCheck.h"
#include "tools/DocumentDiff.h"

#include <benchmark/benchmark.h>
#include <cstddef>
#include <stdexcept>

using BenchSupport::ModelDocument;

namespace {

constexpr double moved = 50.0;
constexpr double as_they_are = 100.0;
constexpr double all_in_one_place = 0.0;

void documentReading(benchmark::State& state) {
    const ModelDocument document(state.range(0));
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(Velmar::readSceneXML(Velmar::toVelmarString(document.file.path())).getPointer());
}

void documentCheck(benchmark::State& state) {
    const ModelDocument document(state.range(0));
    for ([[maybe_unused]] auto step : state)
        // Of the mesh file, which isn't there.
        if (checkDocument(document.file.path(), 100, true).errors != 1) throw std::runtime_error("another finding");
}

void compare(benchmark::State& state, double spread_of_a, double spread_of_b, std::size_t expected) {
    const ModelDocument first(state.range(0), spread_of_a, "a.xml");
    const ModelDocument second(state.range(0), spread_of_b, "b.xml");
    for ([[maybe_unused]] auto step : state) {
        FileContents::Places places;
        Progress progress(true);
        ComparedDocument a(first.file.path(), places, progress);
        ComparedDocument b(second.file.path(), places, progress);
        if (compareDocuments(a, b, 0).size() != expected) throw std::runtime_error("another number of changes");
    }
}

void documentDiffOfTheSame(benchmark::State& state) {
    compare(state, as_they_are, as_they_are, 0);
}

void documentDiffOfEqualModels(benchmark::State& state) {
    compare(state, all_in_one_place, all_in_one_place, 0);
}

void documentDiffOfMovedModels(benchmark::State& state) {
    compare(state, as_they_are, moved, static_cast<std::size_t>(state.range(0)));
}

BENCHMARK(documentReading)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(documentCheck)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(documentDiffOfTheSame)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(documentDiffOfEqualModels)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(documentDiffOfMovedModels)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
