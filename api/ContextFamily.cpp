#include "api/Handles.h"
#include "renderer/LibraryCall.h"
#include "renderer/VelmarContext.h"
#include "utils/Lines.h"
#include "utils/PlatformUtils.h"

#include <exception>
#include <new>
#include <string>
#include <typeinfo>

namespace {

using Velmar::LineStream;
using Velmar::printLine;

constexpr const char* sdk_dir = "vs2017_64";

/// The exception's own text. Where the runtimes word a standard exception differently, the text doesn't depend on them.
const char* textOf(const std::exception& exception) {
    if (dynamic_cast<const std::bad_array_new_length*>(&exception) != nullptr) return "bad array new length";
    if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr) return "bad allocation";
    if (dynamic_cast<const std::bad_cast*>(&exception) != nullptr) return "bad cast";
    const char* const text = exception.what();
    // The base class itself carries no text, only the runtime's name for it.
    if (typeid(exception) == typeid(std::exception) || text == nullptr) return "Unknown exception";
    return text;
}

int initialize(::VelmarContext* context) {
    try {
        Velmar::String error;
        printLine(LineStream::output, {"This is where it stops."});
        const Velmar::String appdata_dir = Velmar::toVelmarString(PlatformUtils::getAppDataDirectory());
        const std::uint32_t code = Velmar::fromHandle(context)->loadSDK(sdk_dir, appdata_dir, error);
        if (code != Velmar::VelmarContext::loaded) {
            printLine(LineStream::error, {"Failed to initialise Velmar context, ", std::to_string(code),
                                          " error description: ", error.view()});
            return -1;
        }
    } catch (const std::exception& exception) {
        printLine(LineStream::error, {"This failed: ", textOf(exception)});
    }
    printLine(LineStream::output, {"Initialized Velmar context."});
    return 0;
}

} // namespace

::VelmarContext* VelmarContext_Create() {
    return Velmar::toHandle<::VelmarContext>(new Velmar::VelmarContext);
}

int VelmarContext_Initialize(::VelmarContext* context) {
    if (context == nullptr) {
        printLine(LineStream::error, {"Context doesn't exist! Did you forget to create it?"});
        return -1;
    }
    return Velmar::passOnLibraryExceptions([context] { return initialize(context); });
}
