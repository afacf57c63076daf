// A renderer library of Microsoft's form throws wherever it is called, into a host of that form. What is checked of the
// library under test: what reaches the host, and that everything that it had taken is given back on the way.
//
// Rendering.exe gcc   the library throws in the form of its own compiler, which isn't this program's

#include "Check.h"
#include "FailingMemory.h"
#include "velmarapi.h"

extern "C" {
__declspec(dllimport) int SetEnvironmentVariableA(const char* name, const char* value);
__declspec(dllimport) char* GetCommandLineA();
__declspec(dllimport) void* GetModuleHandleA(const char* name);
__declspec(dllimport) void SetStdHandle(unsigned which, void* handle);
}

/// The library's own.
class Refusal {
  public:
    Refusal(const Refusal& other) : code(other.code) {}
    ~Refusal() {}

    int code;
};

namespace {

/// Whether our own failures can be caught here.
bool of_this_form = true;

void throwAt(const char* place_and_kind) {
    SetEnvironmentVariableA("VELMAR_THROW", place_and_kind);
}

int64_t countOf(const void* object) {
    int64_t count = 0;
    memcpy(&count, static_cast<const char*>(object) + 8, sizeof count);
    return count;
}

/// What a call threw, as a text.
char caught_text[256];

template <class Call>
const char* thrownBy(Call call) {
    int destroyed = 0;
    const char* caught = "nothing";
    try {
        const Witness witness(destroyed);
        call();
    } catch (const Refusal& refusal) {
        caught = refusal.code == 5 ? "refusal" : "another refusal";
    } catch (int number) {
        caught = number == 42 ? "number" : "another number";
    } catch (const Velmar::VelmarException& exception) {
        memcpy(caught_text, exception.getMessage().data(), exception.getMessage().size());
        caught_text[exception.getMessage().size()] = 0;
        caught = caught_text;
    } catch (const Velmar::Exception& exception) {
        caught = strcpy(caught_text, exception.getMessage().c_str());
    } catch (const std::exception& exception) {
        caught = strcpy(caught_text, exception.what());
    }
    CHECK(destroyed == 1);
    return caught;
}

struct Case {
    const char* place_and_kind;
    const char* caught;
};

// What leaves any place as it was thrown, by kind.
constexpr Case kinds[] = {
    {":refusal", "refusal"},
    {":number", "number"},
    {":runtime_error", "no licence today"},
    {":bad_alloc", "bad allocation"},
    {":tagged", "a tag before"},
    {":virtual", "a virtual base"},
    {":exception", "a message that lies outside of its string"},
    {":velmar_exception", "a message of the library's own making"},
};

char place_and_kind[100];

const char* at(const char* place, const char* kind) {
    strcpy(place_and_kind, place);
    strcpy(place_and_kind + strlen(place), kind);
    return place_and_kind;
}

void initializing(const char* place) {
    for (const Case& each : kinds) {
        VelmarContext* const context = VelmarContext_Create();
        throwAt(at(place, each.place_and_kind));
        int result = -5;
        const char* const caught = thrownBy([&] { result = VelmarContext_Initialize(context); });
        const bool is_standard = strcmp(each.caught, "no licence today") == 0 ||
                                 strcmp(each.caught, "bad allocation") == 0 ||
                                 strcmp(each.caught, "a tag before") == 0 || strcmp(each.caught, "a virtual base") == 0;
        // Standard exceptions are printed, and the call succeeds.
        CHECK(strcmp(caught, is_standard ? "nothing" : each.caught) == 0, place_and_kind);
        CHECK(result == (is_standard ? 0 : -5), place_and_kind);
        throwAt("");
        VelmarContext_Delete(context);
    }
}

VelmarContext* initialized() {
    throwAt("");
    VelmarContext* const context = VelmarContext_Create();
    CHECK(VelmarContext_Initialize(context) == 0);
    return context;
}

void creating(const char* place) {
    for (const Case& each : kinds) {
        VelmarContext* const context = initialized();
        const int64_t blocks = liveBlocks();
        throwAt(at(place, each.place_and_kind));
        CHECK(strcmp(thrownBy([=] { VelmarRenderer_Create(context); }), each.caught) == 0, place_and_kind);
        throwAt("");
        CHECK(liveBlocks() <= blocks, place_and_kind);
    }
}

VelmarScene* smallScene() {
    VelmarScene* const scene = VelmarScene_Create();
    VelmarRenderSettings* const settings = VelmarRenderSettings_Create();
    VelmarRenderSettings_Width(settings, 8);
    VelmarRenderSettings_Height(settings, 8);
    VelmarRenderSettings_SuperSampleFactor(settings, 1);
    VelmarScene_AddRenderSettings(scene, settings);
    return scene;
}

void initializingWithScene(const char* place) {
    for (const Case& each : kinds) {
        VelmarContext* const context = initialized();
        VelmarRenderer* const renderer = VelmarRenderer_Create(context);
        VelmarScene* const scene = smallScene();
        const int64_t blocks = liveBlocks();
        throwAt(at(place, each.place_and_kind));
        // The data manager's own rule: this one becomes a failure of the library's.
        const bool of_data_manager =
            strcmp(place, "DataManagerDLLAPI") == 0 || strcmp(place, "TextureManagerDLLAPI") == 0;
        const bool is_ours = of_data_manager && strcmp(each.place_and_kind, ":exception") == 0;
        if (is_ours && !of_this_form) continue;
        CHECK(strcmp(thrownBy([=] { VelmarRenderer_InitializeWithScene(renderer, context, scene); }), each.caught) == 0,
              place_and_kind);
        CHECK(countOf(context) == 1, place_and_kind);
        throwAt("");
        // What the renderer holds of a failed call is freed with it.
        if (strcmp(place, "scene") != 0) {
            CHECK(countOf(scene) == 0, place_and_kind);
            CHECK(liveBlocks() == blocks, place_and_kind);
            VelmarScene_Delete(scene);
        }
        VelmarRenderer_Delete(renderer);
    }
}

VelmarRenderer* withScene() {
    VelmarContext* const context = initialized();
    VelmarRenderer* const renderer = VelmarRenderer_Create(context);
    VelmarRenderer_InitializeWithScene(renderer, context, smallScene());
    return renderer;
}

template <class Call>
void rendering(const char* place, Call call) {
    VelmarRenderer* const renderer = withScene();
    for (const Case& each : kinds) {
        throwAt(at(place, each.place_and_kind));
        CHECK(strcmp(thrownBy([=] { call(renderer); }), each.caught) == 0, place_and_kind);
    }
    if (of_this_form) {
        // The memory functions are the library's under test; its exception passes the renderer library.
        throwAt(at(place, ":exhausted"));
        CHECK(strcmp(thrownBy([=] { call(renderer); }), "bad allocation") == 0, place_and_kind);
    }
    throwAt("");
    VelmarRenderer_Delete(renderer);
}

void ending(const char* place) {
    for (const Case& each : kinds) {
        VelmarRenderer* const renderer = withScene();
        throwAt(at(place, each.place_and_kind));
        CHECK(strcmp(thrownBy([=] { VelmarRenderer_Delete(renderer); }), each.caught) == 0, place_and_kind);
        throwAt("");
    }
}

} // namespace

void run() {
    const char* const line = GetCommandLineA();
    of_this_form = strcmp(line + strlen(line) - 4, " gcc") != 0;
    watchMemory("VelmarAPI.dll");

    initializing("global_init");
    initializing("memory");
    creating("create");
    creating("VelmarInterface");
    initializingWithScene("create");
    initializingWithScene("ToneMapperDLLAPI");
    initializingWithScene("DataManagerDLLAPI");
    initializingWithScene("TextureManagerDLLAPI");
    initializingWithScene("scene");
    rendering("start", VelmarRenderer_Start);
    rendering("pause", VelmarRenderer_Pause);
    rendering("resume", VelmarRenderer_Resume);
    rendering("stop", VelmarRenderer_Stop);
    rendering("update", [](VelmarRenderer* renderer) { VelmarRenderer_UpdateScene(renderer, 1, 2.0); });
    ending("interface_end");
    ending("tone_mapper_end");
    ending("shutdown");

    if (of_this_form) {
        VelmarContext* const context = initialized();
        VelmarRenderer* const renderer = VelmarRenderer_Create(context);
        VelmarScene* const scene = VelmarScene_Create();
        CHECK(strcmp(thrownBy([=] { VelmarRenderer_InitializeWithScene(renderer, context, scene); }),
                     "no render settings node found.") == 0);
    }
    if (failures == 0) puts("what the renderer library throws is caught");
}
