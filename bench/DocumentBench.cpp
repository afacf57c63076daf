/// Writing a document of many small nodes with three doubles each, compared with pugixml, which builds a tree and saves
/// the same text. It gets its numbers from double-conversion.

#include "bench/support/ModelDocument.h"
#include "bench/support/PeakMemory.h"
#include "bench/support/TempFile.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/SceneXMLWriter.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace BenchSupport;
using namespace Velmar;

namespace {

struct Values {
    double pre_scale, post_scale, burn;
};

/// Typical numbers: half have a few digits, half all seventeen.
std::vector<Values> makeValues(std::int64_t count) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> full(0.0, 100.0);
    std::uniform_int_distribution<int> hundredths(1, 10000);
    const auto next = [&] { return (random() & 1U) != 0 ? full(random) : hundredths(random) / 100.0; };
    std::vector<Values> values(static_cast<std::size_t>(count));
    for (Values& v : values)
        v = {next(), next(), next()};
    return values;
}

/// The scene is built before the measurement: only writing is compared.
Reference<SceneNodeRoot> makeScene(const std::vector<Values>& values) {
    Reference<SceneNodeRoot> root(new SceneNodeRoot);
    for (const Values& v : values) {
        const Reference<SceneNodeTonemapping> node(new SceneNodeTonemapping);
        node->tone_mapper_kind = SceneNodeTonemapping::reinhard;
        node->pre_scale = v.pre_scale;
        node->post_scale = v.post_scale;
        node->burn = v.burn;
        root->addChildNode(Reference<SceneNode>(node.getPointer()));
    }
    return root;
}

void writeByVelmar(const SceneNodeRoot& root, const std::string& path) {
    SceneWriteRequest request;
    request.path = String(path.c_str());
    writeSceneFile(root, request);
}

void setNumber(pugi::xml_node node, double value) {
    const PeerNumberText number(value);
    node.text().set(number.view().data(), number.view().size());
}

void writeByPugixml(const std::vector<Values>& values, const std::string& path) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "utf-8";
    pugi::xml_node scene = document.append_child("scene");
    unsigned uid = 0;
    for (const Values& v : values) {
        pugi::xml_node node = scene.append_child("tonemapping");
        node.append_child("uid").text().set(++uid);
        node.append_child("name").text().set("Tone Mapping");
        pugi::xml_node kind = node.append_child("reinhard");
        setNumber(kind.append_child("pre_scale"), v.pre_scale);
        setNumber(kind.append_child("post_scale"), v.post_scale);
        setNumber(kind.append_child("burn"), v.burn);
    }
    if (!document.save_file(path.c_str(), "\t")) throw std::runtime_error("pugixml couldn't save " + path);
}

std::string readLines(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string lines(std::istreambuf_iterator<char>(file), {});
    // pugixml writes no empty lines between nodes.
    lines.erase(std::unique(lines.begin(), lines.end(), [](char a, char b) { return a == '\n' && b == '\n'; }),
                lines.end());
    return lines;
}

/// A comparison is valid only if the output is the same.
void requireSameText(const SceneNodeRoot& root, const std::vector<Values>& values) {
    const BenchSupport::TempFile ours("ours.xml");
    const BenchSupport::TempFile theirs("theirs.xml");
    writeByVelmar(root, ours.path());
    writeByPugixml(values, theirs.path());
    if (readLines(ours.path()) != readLines(theirs.path())) throw std::runtime_error("the two documents differ");
}

void report(benchmark::State& state, const BenchSupport::PeakMemory& memory) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["peak_MiB"] = static_cast<double>(memory.rise()) / (1 << 20);
}

void velmarDocument(benchmark::State& state) {
    const std::vector<Values> values = makeValues(state.range(0));
    const Reference<SceneNodeRoot> root = makeScene(values);
    requireSameText(*root, values);
    const BenchSupport::TempFile file("velmar.xml");
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state)
        writeByVelmar(*root, file.path());
    report(state, memory);
}

void pugixmlDocument(benchmark::State& state) {
    const std::vector<Values> values = makeValues(state.range(0));
    const BenchSupport::TempFile file("pugixml.xml");
    const BenchSupport::PeakMemory memory;
    for ([[maybe_unused]] auto step : state)
        writeByPugixml(values, file.path());
    report(state, memory);
}

BENCHMARK(velmarDocument)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(pugixmlDocument)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

} // namespace
