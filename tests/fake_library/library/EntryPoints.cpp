// The entry points, compiled once for each library: FAKE_LIBRARY_FAULT names what it gets wrong, and
// FAKE_LIBRARY_WITHOUT_… the entry point that it lacks.

#include "Fault.h"
#include "Objects.h"
#include "OwnNode.h"
#include "Record.h"
#include "Sdk.h"
#include "Watch.h"

#ifdef _MSC_VER
#define ENTRY_POINT extern "C" __declspec(dllexport)
#else
#define ENTRY_POINT extern "C" __attribute__((visibility("default")))
#endif

namespace FakeSdk {

HostMemory host_memory;
const Fault fault = Fault::FAKE_LIBRARY_FAULT;

} // namespace FakeSdk

using namespace FakeSdk;

#ifndef FAKE_LIBRARY_WITHOUT_CREATE_INSTANCE
ENTRY_POINT int32_t velmarCreateInstance(const String* class_name, LibraryObject** object) {
    Record() << "create " << *class_name;
    const bool is_interface = *class_name == String("VelmarInterface");
    *object = fault == Fault::create_nothing && is_interface ? nullptr : makeObject(*class_name);
    return fault == Fault::create_interface && is_interface ? 5 : *object == nullptr ? 1 : 0;
}
#endif

#ifndef FAKE_LIBRARY_WITHOUT_GLOBAL_INIT
ENTRY_POINT int32_t velmarGlobalLibraryInit(const String* dir, String* error) {
    openRecord();
    Record() << "global init in " << *dir << ", error text empty " << (error->size == 0);
    if (fault != Fault::global_init) return 0;
    // The host's memory isn't known yet: what fits in the text itself.
    *error = String("no licence found");
    return 7;
}
#endif

#ifndef FAKE_LIBRARY_WITHOUT_GLOBAL_SHUTDOWN
ENTRY_POINT void velmarGlobalLibraryShutdown() {
    Record() << "global shutdown";
}
#endif

#ifndef FAKE_LIBRARY_WITHOUT_MEM_ALLOC_FUNCTIONS
ENTRY_POINT void setMemAllocFunctions(const HostMemory* functions) {
    host_memory = *functions;
    Record() << "memory functions set";
    if (fault == Fault::out_of_memory) host_memory.malloc(SIZE_MAX / 2);
}
#endif

/// For the test: a node of the library's own, for the host's scene.
ENTRY_POINT void* fakeLibraryMakeNode() {
    return new OwnNode;
}

/// For the test: settings of a layer with the library's own table.
ENTRY_POINT void* fakeLibraryMakeLayerSetting() {
    LayerSetting* const setting = new OwnLayerSetting;
    setting->name = String("first");
    return setting;
}

/// For the test: counts the calls of an object of the host.
ENTRY_POINT uint32_t* fakeLibraryWatch(void* object) {
    return watchObject(object);
}
