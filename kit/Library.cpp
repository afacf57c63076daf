#include "kit/Failures.h"
#include "kit/velmarkit.h"

#include "utils/Lines.h"

#include <string>

using namespace Velmar;
using namespace Velmar::Kit;

namespace {

/// Who receives the lines that the library reports; null for the standard streams.
struct Receiver {
    VelmarKitLineCallback callback = nullptr;
    void* user = nullptr;
};

Receiver receiver;

void receive(LineStream stream, std::string_view line) {
    if (line.substr(0, 9) == "Failed to") noteFailureLine();
    if (receiver.callback == nullptr) return printToStream(stream, {line});
    receiver.callback(receiver.user, stream == LineStream::error ? 1 : 0, std::string(line).c_str());
}

/// From the loading of the kit on.
[[maybe_unused]] const bool is_receiving = [] {
    setLineSink(receive);
    return true;
}();

} // namespace

extern "C" {

const char* VelmarKit_LastError() {
    return lastText();
}

const char* VelmarKit_Version() {
    return VELMAR_VERSION;
}

const char* VelmarKit_StatusName(int32_t status) {
    switch (status) {
    case VELMARKIT_SUCCESS:
        return "success";
    case VELMARKIT_BAD_ARGUMENT:
        return "bad argument";
    case VELMARKIT_OUT_OF_MEMORY:
        return "out of memory";
    case VELMARKIT_FILE_ERROR:
        return "file error";
    case VELMARKIT_MESH_ERROR:
        return "mesh error";
    case VELMARKIT_DOCUMENT_ERROR:
        return "document error";
    case VELMARKIT_RENDERER_ERROR:
        return "renderer error";
    case VELMARKIT_INTERNAL_ERROR:
        return "internal error";
    default:
        return "unknown status";
    }
}

int32_t VelmarKit_SetLineCallback(VelmarKitLineCallback callback, void* user) {
    receiver = {callback, user};
    return VELMARKIT_SUCCESS;
}

} // extern "C"
