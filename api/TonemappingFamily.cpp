#include "api/Handles.h"

using namespace Velmar;

VelmarTonemapping* VelmarTonemapping_Create() {
    return toHandle<VelmarTonemapping>(new SceneNodeTonemapping);
}

void VelmarTonemapping_SetType(VelmarTonemapping* tonemapping, int32_t type) {
    fromHandle(tonemapping)->tone_mapper_kind = static_cast<uint32_t>(type);
}

void VelmarTonemapping_SetIso(VelmarTonemapping* tonemapping, double iso) {
    fromHandle(tonemapping)->film_iso = iso;
}

void VelmarTonemapping_EvAdjust(VelmarTonemapping* tonemapping, double ev_adjust) {
    fromHandle(tonemapping)->ev_adjust = ev_adjust;
}

void VelmarTonemapping_SetResponseFunctionPath(VelmarTonemapping* tonemapping, const char* path) {
    fromHandle(tonemapping)->response_function_path = String(path);
}
