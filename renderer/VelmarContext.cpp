#include "renderer/VelmarContext.h"

#include "utils/FileUtils.h"
#include "utils/PlatformUtils.h"
#include "utils/System.h"

#include <array>
#include <string>
#include <string_view>

namespace Velmar {

namespace {

/// The names of the renderer library, without their ending. The full library takes precedence over the render-only one.
constexpr std::array<std::string_view, 2> sdk_candidates{"velmar_sdk", "velmar_rt_sdk"};

/// Stores the entry point at once: what is bound before a failure stays bound. Returns whether it is there.
template <class Function>
bool bind(void* module, const char* name, Function& function, String& error) {
    function = reinterpret_cast<Function>(findSymbol(module, name));
    if (function != nullptr) return true;
    error = toVelmarString(std::string("unable to get address of procedure '") + name + "'");
    return false;
}

} // namespace

MemAllocFunctions mem_alloc_functions;

VelmarContext::~VelmarContext() {
    if (global_library_shutdown != nullptr) callLibraryInDestructor([this] { global_library_shutdown(); });
    unloadModule(dll_handle);
}

VelmarContext::LoadResult VelmarContext::loadSDK(const String& new_sdk_dir, const String& new_appdata_dir,
                                                 String& error) {
    error = String();
    sdk_dir = new_sdk_dir;
    appdata_dir = new_appdata_dir;
    PlatformUtils::initClock();

    setModuleSearchDirectory(sdk_dir.view());

    bool found = false;
    std::uint32_t last_error = 0;
    for (const std::string_view candidate : sdk_candidates) {
        const std::string path = toStdString(sdk_dir).append("/").append(candidate).append(module_extension);
        found = FileUtils::fileExists(path, &last_error);
        if (!found) continue;
        std::string reason;
        dll_handle = loadModule(path, reason);
        if (dll_handle == nullptr) {
            error = toVelmarString(reason);
            return not_loadable;
        }
        break;
    }
    if (!found) {
        error = toVelmarString("Failed to load Velmar SDK DLL from '" + toStdString(sdk_dir) +
                               "' (Error code: " + std::to_string(static_cast<std::int32_t>(last_error)) + ")");
        return not_found;
    }

    if (!bind(dll_handle, "velmarCreateInstance", create_instance, error) ||
        !bind(dll_handle, "velmarGlobalLibraryInit", global_library_init, error) ||
        !bind(dll_handle, "velmarGlobalLibraryShutdown", global_library_shutdown, error))
        return unusable;

    String init_error;
    if (callLibrary([&] { return global_library_init(&sdk_dir, &init_error); }) != 0) {
        error = init_error;
        return unusable;
    }

    void (*set_mem_alloc_functions)(const MemAllocFunctions*) = nullptr;
    if (!bind(dll_handle, "setMemAllocFunctions", set_mem_alloc_functions, error)) return unusable;
    const MemAllocFunctions functions = mem_alloc_functions;
    callLibrary([&] { set_mem_alloc_functions(&functions); });
    return loaded;
}

std::int32_t VelmarContext::createObject(const char* class_name, InterfaceRef& object) const {
    const String name(class_name);
    LibraryObject* made = nullptr;
    const std::int32_t result = callLibrary([&] { return create_instance(&name, &made); });
    object = InterfaceRef(made);
    return result;
}

} // namespace Velmar
