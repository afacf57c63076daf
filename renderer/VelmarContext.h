#pragma once

#include "velmarmemory.h"
#include "velmarstring.h"
#include "velmarthreadsaferefcounted.h"

#include "renderer/LibraryObject.h"

#include <cstddef>
#include <cstdint>

namespace Velmar {

/// The allocation entry points in the order in which the library takes them. It copies the table.
struct MemAllocFunctions {
    void* (*malloc)(std::size_t) = sdkMalloc;
    void* (*aligned_malloc)(std::size_t, std::size_t) = sdkAlignedMalloc;
    void (*free)(void*) = sdkFree;
    void (*aligned_free)(void*) = sdkAlignedFree;
};

static_assert(sizeof(MemAllocFunctions) == 32);

/// What libraries are given. Changed, if at all, before the first is loaded.
extern MemAllocFunctions mem_alloc_functions;

/// The loaded renderer library. Everything that holds one of the library's objects holds the context too, so that the
/// library is unloaded last.
class VelmarContext : public Destroyable<VelmarContext, ThreadSafeRefCounted> {
  public:
    using CreateInstance = std::int32_t (*)(const String* class_name, LibraryObject** object);
    using GlobalLibraryInit = std::int32_t (*)(const String* dir, String* error);
    using GlobalLibraryShutdown = void (*)();

    enum LoadResult : std::uint32_t {
        loaded = 0,
        /// An entry point is missing, or the library's own set-up failed.
        unusable = 1,
        /// There is no library in the directory.
        not_found = 20,
        /// There is a file, but the system can't load it.
        not_loadable = 22,
    };

    VelmarContext() = default;
    /// Shuts the library down if its shutdown was bound, whether or not its set-up succeeded, and then unloads it.
    ~VelmarContext();

    /// Looks in `new_sdk_dir` for the full renderer library and then for the render-only one, loads the first that is
    /// there, binds its entry points and sets it up. What a failure leaves loaded or bound stays so till the context
    /// ends. A second call loads again over the same fields. On failure `error` holds the reason, otherwise nothing.
    /// The directories are kept for the library's objects.
    LoadResult loadSDK(const String& new_sdk_dir, const String& new_appdata_dir, String& error);

    /// Has the library make an object of the class `class_name` for `object`, which becomes empty when it made none.
    /// Returns the library's code, 0 for success. The library must be bound.
    std::int32_t createObject(const char* class_name, InterfaceRef& object) const;

    String sdk_dir;
    String appdata_dir;
    void* dll_handle = nullptr;
    CreateInstance create_instance = nullptr;
    GlobalLibraryInit global_library_init = nullptr;
    GlobalLibraryShutdown global_library_shutdown = nullptr;
};

static_assert(offsetof(VelmarContext, sdk_dir) == 16);
static_assert(offsetof(VelmarContext, appdata_dir) == 56);
static_assert(offsetof(VelmarContext, dll_handle) == 96);
static_assert(offsetof(VelmarContext, create_instance) == 104);
static_assert(offsetof(VelmarContext, global_library_init) == 112);
static_assert(offsetof(VelmarContext, global_library_shutdown) == 120);
static_assert(sizeof(VelmarContext) == 128);

} // namespace Velmar
