#include "kit/Failures.h"
#include "kit/Lines.h"
#include "kit/velmarkit.h"

using namespace Velmar::Kit;

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
    setLineCallback(callback, user);
    return VELMARKIT_SUCCESS;
}

} // extern "C"
