/// Reading a document of many models that share a mesh, compared with pugixml, which parses the same text into its tree
/// and reads nothing from it.

#include "bench/support/PeakMemory.h"
#include "bench/support/TempFile.h"
#include "scene/SceneXMLWriter.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/reading/SceneXMLReader.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <pugixml.hpp>
#include <random>
#include <stdexcept>
#include <string>

using namespace Velmar;

namespace {

Reference<SceneNodeRoot> makeScene(std::int64_t count) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> position(-100.0, 100.0);
    Reference<SceneNodeRoot> root(new SceneNodeRoot);
    const Reference<SceneNodeMaterial> material(new SceneNodeMaterial);
    root->addChildNode(material);
    const Reference<SceneNodeMesh> mesh(new SceneNodeMesh);
    mesh->path = "meshes\\tree.vmmesh";
    root->addChildNode(mesh);
    Vector<Reference<SceneNodeMaterial>> materials;
    materials.push_back(material);
    for (std::int64_t i = 0; i < count; ++i) {
        const Reference<SceneNodeModel> model(new SceneNodeModel);
        model->rotation = new MatrixRotation;
        model->setGeometry(Reference<SceneNode>(mesh));
        model->setMaterials(materials);
        KeyFrame frame;
        frame.pos = {position(random), position(random), 0.5};
        // Exactly, as hosts make them.
        model->keyframes.reserve(1);
        model->keyframes.push_back(frame);
        root->addChildNode(model);
    }
    return root;
}

/// The document of `count` models, and the memory of the scene that it was written from.
class Document {
  public:
    explicit Document(std::int64_t count) : file("models.xml") {
        const BenchSupport::PeakMemory memory;
        const Reference<SceneNodeRoot> root = makeScene(count);
        scene_bytes = static_cast<double>(memory.rise());
        SceneWriteRequest request;
        request.path = toVelmarString(file.path());
        request.resolve_relative_paths = false;
        writeSceneFile(*root, request);
    }

    BenchSupport::TempFile file;
    double scene_bytes = 0.0;
};

void report(benchmark::State& state, const Document& document, double peak) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["peak_MiB"] = peak / (1 << 20);
    state.counters["of_scene"] = peak / document.scene_bytes;
}

void velmarReading(benchmark::State& state) {
    const Document document(state.range(0));
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state) {
        const Reference<SceneNodeRoot> root = readSceneXML(toVelmarString(document.file.path()));
        if (root->children().size() != static_cast<std::size_t>(state.range(0)) + 2)
            throw std::runtime_error("not all nodes were read");
        state.PauseTiming();
        benchmark::DoNotOptimize(root.getPointer());
        state.ResumeTiming();
    }
    report(state, document, static_cast<double>(memory.rise()));
}

void pugixmlParsing(benchmark::State& state) {
    const Document document(state.range(0));
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state) {
        pugi::xml_document tree;
        if (!tree.load_file(document.file.path().c_str())) throw std::runtime_error("pugixml can't parse it");
        benchmark::DoNotOptimize(tree.first_child());
    }
    report(state, document, static_cast<double>(memory.rise()));
}

BENCHMARK(velmarReading)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(pugixmlParsing)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
