// Turns bytes into a sequence of calls of the kit: with nulls, handles of other kinds, counts of any sign and failing
// allocations, but without handles of deleted objects. Whatever is called, the kit returns a status, and nothing
// crashes or leaks.

#include "velmarkit.h"

#include "tests/faults/FailingAllocation.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// Reads values off the front of the input; zeros when it is used up.
class Input {
  public:
    Input(const std::uint8_t* data_, std::size_t size_) : data(data_), size(size_) {}

    bool empty() const { return size == 0; }

    template <class T>
    T take() {
        T value{};
        const std::size_t count = std::min(sizeof value, size);
        std::memcpy(&value, data, count);
        data += count;
        size -= count;
        return value;
    }

    std::string text() {
        std::string result;
        for (int left = take<std::uint8_t>() % 24; left > 0 && !empty(); --left)
            result += take<char>();
        return result;
    }

  private:
    const std::uint8_t* data;
    std::size_t size;
};

enum Kind { scene, mesh, model, node, camera, settings, tonemapping, background, kind_count };

/// Everything that was made. What no other object holds in the end is deleted.
class Objects {
  public:
    ~Objects() {
        // Models before what they hold, so that it may go with them.
        for (const Kind kind : {scene, model, mesh, node, camera, settings, tonemapping, background})
            for (void* const object : of_kind[kind])
                if (std::find(gone.begin(), gone.end(), object) == gone.end()) VelmarKit_Node_Delete(object);
    }

    void add(Kind kind, void* object) {
        if (object != nullptr) of_kind[kind].push_back(object);
    }

    /// A handle of the kind, sometimes null or of another kind.
    template <class Handle>
    Handle* any(Kind kind, Input& input) {
        const auto choice = input.take<std::uint8_t>();
        if (choice == 0) return nullptr;
        const auto& all = of_kind[choice > 250 ? choice % kind_count : kind];
        return all.empty() ? nullptr : static_cast<Handle*>(all[choice % all.size()]);
    }

    /// Of an object that another one holds, which may end it.
    void giveAway(void* object) { gone.push_back(object); }

  private:
    std::vector<void*> of_kind[kind_count];
    std::vector<void*> gone;
};

/// Makes a call with one of its allocations failing, or none.
template <class Call>
std::int32_t attempt(Input& input, const Call& call) {
    const std::int64_t nth = input.take<std::uint8_t>() % 32;
    const Faults::FailingAllocation fault(nth > 16 ? 0 : nth, Faults::Lasting::once);
    return call();
}

void create(Input& input, Objects& objects) {
    const std::string name = input.text();
    const auto kind = static_cast<Kind>(input.take<std::uint8_t>() % kind_count);
    void* made = nullptr;
    VelmarMesh* const geometry = kind == model ? objects.any<VelmarMesh>(mesh, input) : nullptr;
    const std::int32_t status = attempt(input, [&] {
        switch (kind) {
        case scene:
            return VelmarKit_Scene_Create(reinterpret_cast<VelmarScene**>(&made));
        case mesh:
            return VelmarKit_Mesh_Create(name.c_str(), reinterpret_cast<VelmarMesh**>(&made));
        case model:
            return VelmarKit_Model_Create(name.c_str(), geometry, reinterpret_cast<VelmarModel**>(&made));
        case node:
            return VelmarKit_Material_CreateNode(name.c_str(), reinterpret_cast<VelmarMaterialNode**>(&made));
        case camera:
            return VelmarKit_Camera_Create(reinterpret_cast<VelmarCamera**>(&made));
        case settings:
            return VelmarKit_RenderSettings_Create(reinterpret_cast<VelmarRenderSettings**>(&made));
        case tonemapping:
            return VelmarKit_Tonemapping_Create(reinterpret_cast<VelmarTonemapping**>(&made));
        default:
            return VelmarKit_Background_CreateSunSky(0, 0, 1, name.c_str(),
                                                     reinterpret_cast<VelmarBackground**>(&made));
        }
    });
    if (status != VELMARKIT_SUCCESS) return;
    objects.add(kind, made);
    if (kind == model) objects.giveAway(geometry);
}

void addToScene(Input& input, Objects& objects) {
    auto* const root = objects.any<VelmarScene>(scene, input);
    auto* const one = objects.any<VelmarMesh>(mesh, input);
    auto* const other = objects.any<VelmarModel>(model, input);
    auto* const third = objects.any<VelmarCamera>(camera, input);
    const auto choice = input.take<std::uint8_t>() % 4;
    void* const added = choice == 0 ? static_cast<void*>(one) : choice == 1 ? static_cast<void*>(other) : third;
    const std::int32_t status = attempt(input, [&] {
        switch (choice) {
        case 0:
            return VelmarKit_Scene_AddMesh(root, one);
        case 1:
            return VelmarKit_Scene_AddModel(root, other);
        case 2:
            return VelmarKit_Scene_AddCamera(root, third);
        default:
            return VelmarKit_Scene_AddGroundPlane(root, 0, 1);
        }
    });
    if (status == VELMARKIT_SUCCESS && choice < 3) objects.giveAway(added);
}

void fill(Input& input, Objects& objects) {
    auto* const target = objects.any<VelmarMesh>(mesh, input);
    // In a block of its exact size: a sanitizer sees what is read beyond it.
    const std::int32_t count = input.take<std::int8_t>();
    const std::size_t floats = count > 0 ? static_cast<std::size_t>(count) * 3 : 0;
    std::vector<float> xyz(floats);
    for (float& number : xyz)
        number = input.take<float>();
    const std::vector<std::uint32_t> words(count > 0 ? static_cast<std::size_t>(count) * 10 : 0,
                                           count % 2 == 0 ? 0u : 1u);
    const std::vector<const float*> sets(count > 0 && count < 4 ? static_cast<std::size_t>(count) : 0, xyz.data());
    const std::string name = input.text();
    const auto choice = input.take<std::uint8_t>() % 7;
    attempt(input, [&] {
        switch (choice) {
        case 0:
            return VelmarKit_Mesh_AddVertices(target, count, xyz.data());
        case 1:
            return VelmarKit_Mesh_AddFaces(target, count, words.empty() ? nullptr : words.data());
        case 2:
            return VelmarKit_Mesh_AddTextureCoordinates(target, count, xyz.empty() ? nullptr : xyz.data());
        case 3:
            return VelmarKit_Mesh_SetNormals(target, count, xyz.data());
        case 4:
            return VelmarKit_Mesh_SetTextureCoordinates(target, static_cast<std::int32_t>(sets.size()), 1, sets.data());
        case 5:
            return VelmarKit_Mesh_AddMaterialUsed(target, name.c_str());
        default:
            return VelmarKit_Mesh_Build(target, nullptr);
        }
    });
}

void read(Input& input, Objects& objects) {
    const auto* const from = objects.any<VelmarMesh>(mesh, input);
    const auto* const lens = objects.any<VelmarCamera>(camera, input);
    const auto* const placed = objects.any<VelmarModel>(model, input);
    VelmarKitMeshCounts counts = {};
    const float* floats = nullptr;
    const std::uint32_t* words = nullptr;
    const char* text = nullptr;
    std::uint64_t count = 0;
    double numbers[9];
    VelmarKit_Mesh_GetCounts(from, &counts);
    if (VelmarKit_Mesh_GetVertices(from, &floats, &count) == 0 && count > 0)
        numbers[0] = static_cast<double>(floats[0]);
    VelmarKit_Mesh_GetTriangles(from, &words, &count);
    VelmarKit_Mesh_GetMaterialName(from, input.take<std::uint8_t>(), &text, &count);
    VelmarKit_Node_GetName(from, &text, &count);
    VelmarKit_Camera_GetUp(lens, numbers, numbers + 1, nullptr);
    VelmarKit_Model_GetTransformation(placed, numbers, nullptr, input.take<std::int8_t>());
    VelmarKit_Material_GetColour(objects.any<VelmarMaterialNode>(node, input), numbers, numbers + 1, nullptr);
    const auto* const light = objects.any<VelmarBackground>(background, input);
    VelmarKit_Background_GetUniform(light, numbers, nullptr, numbers + 2, numbers + 3);
    VelmarKit_Background_GetSunSky(light, numbers, nullptr, nullptr, &text, &count);
}

void change(Input& input, Objects& objects) {
    auto* const lens = objects.any<VelmarCamera>(camera, input);
    auto* const placed = objects.any<VelmarModel>(model, input);
    const float numbers[9] = {};
    const double x = input.take<double>();
    const std::int32_t index = input.take<std::int8_t>();
    attempt(input, [&] { return VelmarKit_Camera_LookAt(lens, x, 1, 2, 0, 0, 1); });
    attempt(input, [&] { return VelmarKit_Camera_SetFieldOfView(lens, x); });
    attempt(input,
            [&] { return VelmarKit_Model_SetTransformation(placed, numbers, index > 100 ? nullptr : numbers, index); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Faults::prepareRuntime();
    VelmarKit_SetLineCallback([](void*, std::int32_t, const char*) {}, nullptr);
    Input input(data, size);
    Objects objects;
    while (!input.empty()) {
        switch (input.take<std::uint8_t>() % 5) {
        case 0:
            create(input, objects);
            break;
        case 1:
            addToScene(input, objects);
            break;
        case 2:
            fill(input, objects);
            break;
        case 3:
            read(input, objects);
            break;
        default:
            change(input, objects);
            break;
        }
    }
    return 0;
}
