#include "kit/Checks.h"
#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include "renderer/LibraryCall.h"
#include "renderer/LibraryObject.h"
#include "utils/PlatformUtils.h"

#include <string>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

void initialise(Velmar::VelmarContext& context, const char* folder) {
    String error;
    const String appdata_dir = toVelmarString(PlatformUtils::getAppDataDirectory());
    if (context.loadSDK(folder, appdata_dir, error) != Velmar::VelmarContext::loaded)
        throw KitFailure{VELMARKIT_RENDERER_ERROR, toStdString(error)};
}

} // namespace

extern "C" {

/// Calls `function` with the arguments that were kept.
uint64_t velmarKitCall(LibraryObject::Operation function, const uint64_t* registers, const uint64_t* stack);

/// The part of VelmarKit_Renderer_UpdateScene that needs no knowledge of the arguments. The first register holds the
/// renderer.
int32_t velmarKitUpdateScene(uint64_t* registers, const uint64_t* stack) {
    return guarded(Subject::renderer, [=] {
        constexpr auto update = static_cast<std::size_t>(LibrarySlot::update_scene);
        auto* const renderer = reinterpret_cast<VelmarRenderer*>(registers[0]);
        LibraryObject* const object = objectOf(renderer, "renderer").getImpl().getLibraryObject();
        registers[0] = reinterpret_cast<uint64_t>(object);
        callLibrary([=] { return velmarKitCall(object->operations[update], registers, stack); });
    });
}

int32_t VelmarKit_Context_Initialize(::VelmarContext* context, int* result) {
    return guarded(Subject::context, [&] {
        checkHandle(context, "context");
        initialise(*fromHandle(context), "vs2017_64");
        store(result, 0);
    });
}

int32_t VelmarKit_Context_InitializeFrom(::VelmarContext* context, const char* folder) {
    return guarded(Subject::context, [&] {
        checkHandle(context, "context");
        checkPath(folder, "folder");
        initialise(*fromHandle(context), folder);
    });
}

int32_t VelmarKit_Renderer_Create(::VelmarContext* context, VelmarRenderer** result) {
    return guarded(Subject::renderer, [&] {
        checkContext(context);
        checkPointer(result, "result");
        // A renderer takes its context with it; what can't be used must not.
        const HeldForCall held(fromHandle(context));
        takeFailureLine();
        VelmarRenderer* renderer = nullptr;
        try {
            renderer = callLibrary([=] { return VelmarRenderer_Create(context); });
        } catch (const KitFailure&) {
            // An assertion: the library returned no object at all.
        }
        if (takeFailureLine() || renderer == nullptr) {
            if (renderer != nullptr) fromHandle(renderer)->destroy(1);
            throw KitFailure{VELMARKIT_RENDERER_ERROR,
                             "The renderer library failed to create or initialise its renderer."};
        }
        *result = renderer;
    });
}

} // extern "C"
