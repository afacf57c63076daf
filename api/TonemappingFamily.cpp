#include "api/Handles.h"

#include <cstddef>

using namespace Velmar;

VelmarTonemapping* VelmarTonemapping_Create() {
    return toHandle<VelmarTonemapping>(new SceneNodeTonemapping);
}

void VelmarTonemapping_SetType(VelmarTonemapping* tonemapping, int32_t type) {
    fromHandle(tonemapping)->tone_mapper_kind = static_cast<uint32_t>(type);
}

// This one and the next three serve cameras too, under names of their own.
void VelmarTonemapping_SetScale(VelmarTonemapping* tonemapping, double scale) {
    storeField(tonemapping, offsetof(SceneNodeTonemapping, scale), scale);
}

void VelmarTonemapping_SetPreScale(VelmarTonemapping* tonemapping, double pre_scale) {
    storeField(tonemapping, offsetof(SceneNodeTonemapping, pre_scale), pre_scale);
}

void VelmarTonemapping_SetPostScale(VelmarTonemapping* tonemapping, double post_scale) {
    storeField(tonemapping, offsetof(SceneNodeTonemapping, post_scale), post_scale);
}

void VelmarTonemapping_SetBurn(VelmarTonemapping* tonemapping, double burn) {
    storeField(tonemapping, offsetof(SceneNodeTonemapping, burn), burn);
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
