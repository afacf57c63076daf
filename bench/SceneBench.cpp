/// A scene of many models, each with a material of its own, built through the exported functions and written;
/// writing is compared with pugixml, which builds a tree and saves the same text, and gets its numbers from
/// double-conversion. The cost of a node should not depend on their number. Materials are written without models too.

#include "velmarapi.h"

#include "bench/support/ModelDocument.h"
#include "bench/support/PeakMemory.h"
#include "bench/support/SilentOutput.h"
#include "bench/support/TempFile.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <pugixml.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace BenchSupport;

namespace {

/// The values that differ between models.
struct Item {
    std::string name;
    double colour[3];
    float position[3];
};

/// Not a multiple of 90 degrees, so that all numbers of the rotation have many digits.
constexpr float rotation[9] = {0.8F, -0.6F, 0, 0.6F, 0.8F, 0, 0, 0, 1};
constexpr float triangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
constexpr std::uint32_t face[8] = {0, 0, 1, 2, 0, 0, 0, 0};

/// What there is of each item.
enum class Nodes { material_and_model, material };

/// The number of models that are built in each measurement, in one scene or several. All scenes are kept until the end:
/// otherwise small scenes would reuse memory that is in the cache, and only large ones would need new memory.
constexpr std::int64_t models_in_all = 1'000'000;

std::vector<Item> makeItems(std::int64_t count) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> hundredths(0, 100);
    std::uniform_real_distribution<float> place(-100.0F, 100.0F);
    std::vector<Item> items(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].name = "part " + std::to_string(i);
        for (double& component : items[i].colour)
            component = hundredths(random) / 100.0;
        for (float& coordinate : items[i].position)
            coordinate = place(random);
    }
    return items;
}

struct DeleteScene {
    void operator()(VelmarScene* scene) const { VelmarScene_Delete(scene); }
};
using ScenePointer = std::unique_ptr<VelmarScene, DeleteScene>;

ScenePointer buildScene(const std::vector<Item>& items, Nodes nodes) {
    ScenePointer owner(VelmarScene_Create());
    VelmarScene* const scene = owner.get();
    VelmarMesh* const mesh = VelmarMesh_Create("Triangle");
    VelmarScene_AddMesh(scene, mesh);
    VelmarMesh_AddVertices(mesh, 3, triangle);
    VelmarMesh_AddFaces(mesh, 1, face);
    VelmarMesh_Build(mesh);
    for (const Item& item : items) {
        VelmarMaterialNode* material = VelmarMaterial_CreateNode(item.name.c_str());
        VelmarScene_AddMaterial(scene, material);
        VelmarMaterial_AddToNode(
            material, VelmarMaterial_CreateDiffuse(item.name.c_str(), item.colour[0], item.colour[1], item.colour[2]));
        if (nodes == Nodes::material) continue;
        VelmarModel* const model = VelmarModel_Create(item.name.c_str(), mesh);
        VelmarScene_AddModel(scene, model);
        VelmarModel_SetMaterials(model, 1, &material);
        VelmarModel_SetTransformation(model, rotation, item.position, 0);
    }
    return owner;
}

void setNumbers(pugi::xml_node node, std::initializer_list<double> values, bool space_at_end) {
    char text[512];
    char* end = text;
    for (const double value : values) {
        const PeerNumberText number(value);
        end = std::copy(number.view().begin(), number.view().end(), end);
        *end++ = ' ';
    }
    if (!space_at_end) --end;
    node.text().set(text, static_cast<std::size_t>(end - text));
}

void addIdentity(pugi::xml_node node, unsigned uid, const std::string& name) {
    node.append_child("uid").text().set(uid);
    node.append_child("name").text().set(name.c_str(), name.size());
}

void addMaterial(pugi::xml_node scene, unsigned uid, const Item& item) {
    pugi::xml_node node = scene.append_child("material");
    addIdentity(node, uid, item.name);
    pugi::xml_node rgb =
        node.append_child("diffuse").append_child("albedo").append_child("constant").append_child("rgb");
    setNumbers(rgb.append_child("rgb"), {item.colour[0], item.colour[1], item.colour[2]}, false);
    setNumbers(rgb.append_child("gamma"), {2.2}, false);
}

void addModel(pugi::xml_node scene, unsigned uid, const Item& item) {
    pugi::xml_node node = scene.append_child("model2");
    addIdentity(node, uid, item.name);
    node.append_child("geometry_uid").text().set(1U);
    setNumbers(node.append_child("rotation").append_child("matrix"),
               {rotation[0], rotation[1], rotation[2], rotation[3], rotation[4], rotation[5], rotation[6], rotation[7],
                rotation[8]},
               true);
    setNumbers(node.append_child("pos"), {item.position[0], item.position[1], item.position[2]}, false);
    node.append_child("materials").append_child("uid").text().set(uid - 1);
}

/// All nodes but the mesh, which is one of many.
void writeByPugixml(const std::vector<Item>& items, Nodes nodes, const std::string& path) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "utf-8";
    pugi::xml_node scene = document.append_child("scene");
    unsigned uid = 2;
    for (const Item& item : items) {
        addMaterial(scene, uid++, item);
        if (nodes == Nodes::material_and_model) addModel(scene, uid++, item);
    }
    if (!document.save_file(path.c_str(), "\t")) throw std::runtime_error("pugixml couldn't save " + path);
}

/// The text from the first material on, without white space between elements.
std::string readItems(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    text.erase(0, text.find("<material>"));
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }), text.end());
    return text;
}

/// The scene's document with its folder of meshes, in a folder that is removed with the object.
class SceneFile {
  public:
    SceneFile() : folder("scene") { std::filesystem::create_directory(folder.path()); }
    ~SceneFile() { std::filesystem::remove_all(folder.path()); }
    SceneFile(const SceneFile&) = delete;
    SceneFile& operator=(const SceneFile&) = delete;

    std::string path() const { return folder.path() + "/scene.xml"; }

  private:
    TempFile folder;
};

void report(benchmark::State& state, const PeakMemory& memory, std::int64_t nodes) {
    state.counters["nodes/s"] =
        benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/node"] = static_cast<double>(memory.rise()) / static_cast<double>(nodes);
}

std::int64_t countNodes(std::int64_t items, Nodes nodes) {
    return nodes == Nodes::material_and_model ? 2 * items : items;
}

void velmarSceneBuild(benchmark::State& state) {
    const std::vector<Item> items = makeItems(state.range(0));
    const SilentOutput silence;
    const PeakMemory memory;
    std::vector<ScenePointer> scenes(static_cast<std::size_t>(models_in_all / state.range(0)));
    for ([[maybe_unused]] auto step : state) {
        for (ScenePointer& scene : scenes)
            scene = buildScene(items, Nodes::material_and_model);
        state.PauseTiming();
        for (ScenePointer& scene : scenes)
            scene.reset();
        // Otherwise the next iteration would reuse memory that this one has accessed.
        malloc_trim(0);
        state.ResumeTiming();
    }
    report(state, memory, countNodes(models_in_all, Nodes::material_and_model));
}

template <Nodes nodes>
void velmarWrite(benchmark::State& state) {
    const std::vector<Item> items = makeItems(state.range(0));
    const SceneFile file;
    const SilentOutput silence;
    const ScenePointer scene = buildScene(items, nodes);
    const TempFile peer_file("peer.xml");
    // A comparison is valid only if the output is the same.
    VelmarScene_WriteToXML(scene.get(), file.path().c_str());
    writeByPugixml(items, nodes, peer_file.path());
    if (readItems(file.path()) != readItems(peer_file.path())) throw std::runtime_error("the two documents differ");

    const PeakMemory memory;
    for ([[maybe_unused]] auto step : state)
        VelmarScene_WriteToXML(scene.get(), file.path().c_str());
    report(state, memory, countNodes(state.range(0), nodes));
}

template <Nodes nodes>
void pugixmlWrite(benchmark::State& state) {
    const std::vector<Item> items = makeItems(state.range(0));
    const TempFile file("peer.xml");
    const PeakMemory memory;
    for ([[maybe_unused]] auto step : state)
        writeByPugixml(items, nodes, file.path());
    report(state, memory, countNodes(state.range(0), nodes));
}

void sizes(benchmark::internal::Benchmark* scene) {
    scene->RangeMultiplier(10)->Range(1'000, 1'000'000)->Unit(benchmark::kMillisecond);
}

void largeSize(benchmark::internal::Benchmark* scene) {
    scene->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(velmarSceneBuild)->Apply(sizes);
BENCHMARK(velmarWrite<Nodes::material_and_model>)->Name("velmarSceneWrite")->Apply(sizes);
BENCHMARK(pugixmlWrite<Nodes::material_and_model>)->Name("pugixmlSceneWrite")->Apply(sizes);
BENCHMARK(velmarWrite<Nodes::material>)->Name("velmarMaterialsWrite")->Apply(largeSize);
BENCHMARK(pugixmlWrite<Nodes::material>)->Name("pugixmlMaterialsWrite")->Apply(largeSize);

} // namespace
