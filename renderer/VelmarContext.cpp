#include "renderer/VelmarContext.h"

#include "utils/System.h"

#include <cstddef>

namespace Velmar {

static_assert(offsetof(VelmarContext, sdk_dir) == 16);
static_assert(offsetof(VelmarContext, appdata_dir) == 56);
static_assert(offsetof(VelmarContext, dll_handle) == 96);
static_assert(offsetof(VelmarContext, create_instance) == 104);
static_assert(offsetof(VelmarContext, global_library_init) == 112);
static_assert(offsetof(VelmarContext, global_library_shutdown) == 120);
static_assert(sizeof(VelmarContext) == 128);

VelmarContext::~VelmarContext() {
    if (global_library_shutdown != nullptr) callLibraryInDestructor([this] { global_library_shutdown(); });
    unloadModule(dll_handle);
}

std::int32_t VelmarContext::createObject(const char* class_name, InterfaceRef& object) const {
    const String name(class_name);
    LibraryObject* made = nullptr;
    const std::int32_t result = callLibrary([&] { return create_instance(&name, &made); });
    object = InterfaceRef(made);
    return result;
}

} // namespace Velmar
