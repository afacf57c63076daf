// A renderer library of Microsoft's form that throws where and what the environment variable VELMAR_THROW says: a
// place, a colon and a kind. It shares no header with VelmarAPI.

#include "Runtime.h"

extern "C" {
__declspec(dllimport) unsigned GetEnvironmentVariableA(const char* name, char* buffer, unsigned size);

int DllMain(void*, unsigned, void*) {
    return 1;
}
}

/// A class of the library's own, which VelmarAPI doesn't know.
class Refusal {
  public:
    explicit Refusal(int code_) : code(code_) {}
    Refusal(const Refusal& other) : code(other.code) {}
    Refusal& operator=(const Refusal&) = delete;
    ~Refusal() {}

  private:
    int code;
};

namespace {

/// A standard exception at another place than its beginning.
class Tagged {
  public:
    virtual ~Tagged() {}
    uint64_t tag = 77;
};
class TaggedError : public Tagged, public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};
class VirtualError : public Tagged, public virtual std::exception {
  public:
    const char* what() const override { return "a virtual base"; }
};

struct HostMemory {
    void* (*allocate)(size_t size);
    void* (*allocate_aligned)(size_t size, size_t alignment);
    void (*release)(void* block);
    void (*release_aligned)(void* block);
} host_memory;

bool is(const char* wanted, const char* begin) {
    for (; *wanted != 0; ++wanted, ++begin)
        if (*wanted != *begin) return false;
    return *begin == 0;
}

/// Throws if this is the place.
void perhapsThrow(const char* place) {
    char text[256] = "";
    GetEnvironmentVariableA("VELMAR_THROW", text, sizeof text);
    char* kind = text;
    while (*kind != 0 && *kind != ':')
        ++kind;
    if (*kind == 0) return;
    *kind++ = 0;
    if (!is(place, text)) return;
    if (is("bad_alloc", kind)) throw std::bad_alloc();
    if (is("runtime_error", kind)) throw std::runtime_error("no licence today");
    if (is("nameless", kind)) throw std::exception();
    if (is("tagged", kind)) throw TaggedError("a tag before");
    if (is("virtual", kind)) throw VirtualError();
    if (is("exception", kind)) throw Velmar::Exception("a message that lies outside of its string");
    if (is("velmar_exception", kind)) throw Velmar::VelmarException("a message of the library's own making");
    if (is("refusal", kind)) throw Refusal(5);
    if (is("number", kind)) throw 42;
    if (is("exhausted", kind)) host_memory.allocate(SIZE_MAX / 2);
}

struct Object {
    Object(const char* name_) : refcount(0), destroyed(destroy), name(name_) {}

    virtual uint64_t slot0() { return 0; }
    virtual uint64_t initialise() {
        perhapsThrow(name);
        return 0;
    }
    virtual uint64_t slot2() { return 2; }
    virtual uint64_t slot3() { return 3; }
    virtual uint64_t slot4() { return 4; }
    virtual uint64_t slot5() { return 5; }
    virtual uint64_t slot6() { return 6; }
    virtual uint64_t slot7() { return 7; }
    virtual uint64_t slot8() { return 8; }
    virtual uint64_t initialiseScene() { return act("scene"); }
    virtual uint64_t slot10() { return 10; }
    virtual uint64_t start() { return act("start"); }
    virtual uint64_t pause() { return act("pause"); }
    virtual uint64_t resume() { return act("resume"); }
    virtual uint64_t stop() { return act("stop"); }
    virtual uint64_t update() { return act("update"); }

    uint64_t act(const char* place) {
        perhapsThrow(place);
        return 1;
    }

    static void destroy(Object* object) {
        const char* const name = object->name;
        free(object);
        if (is("VelmarInterface", name)) perhapsThrow("interface_end");
        if (is("ToneMapperDLLAPI", name)) perhapsThrow("tone_mapper_end");
    }

    int32_t refcount;
    void (*destroyed)(Object* object);
    // Directly after the head, where hosts look for it.
    uint64_t* link = shared;
    uint64_t shared[6]{};
    const char* name;
};

const char* const names[] = {"VelmarInterface", "ToneMapperDLLAPI", "DataManagerDLLAPI", "TextureManagerDLLAPI"};

} // namespace

#define ENTRY_POINT extern "C" __declspec(dllexport)

ENTRY_POINT int32_t velmarCreateInstance(const Velmar::String* class_name, Object** object) {
    perhapsThrow("create");
    for (const char* const name : names)
        if (strlen(name) == class_name->size() && memcmp(name, class_name->data(), class_name->size()) == 0)
            *object = new Object(name);
    return 0;
}

ENTRY_POINT int32_t velmarGlobalLibraryInit(const Velmar::String*, Velmar::String*) {
    perhapsThrow("global_init");
    return 0;
}

ENTRY_POINT void velmarGlobalLibraryShutdown() {
    perhapsThrow("shutdown");
}

ENTRY_POINT void setMemAllocFunctions(const HostMemory* functions) {
    host_memory = *functions;
    perhapsThrow("memory");
}
