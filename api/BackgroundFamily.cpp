#include "api/Handles.h"
#include "api/MaterialValues.h"
#include "scene/Material.h"

using namespace Velmar;

namespace {

/// The argument of `VelmarBackground_Delete`.
struct HolderRecord {
    Reference<Velmar::ThreadSafeRefCounted> held;
};

static_assert(sizeof(HolderRecord) == 8);

} // namespace

VelmarBackground* VelmarBackground_CreateUniform(double r, double g, double b, double s) {
    NewObject<SceneNodeBackgroundSettings> node(new SceneNodeBackgroundSettings);
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = constantNumber(0.0);
    material->emission = constantColour(r, g, b);
    material->base_emission = constantNumber(s);
    node->background_material = material.getPointer();
    return toHandle<VelmarBackground>(node.release());
}

VelmarBackground* VelmarBackground_CreateSunSky(double x, double y, double z, const char* model) {
    NewObject<SceneNodeBackgroundSettings> node(new SceneNodeBackgroundSettings);
    const Reference<SunSkyMaterial> material(new SunSkyMaterial);
    material->model = String(model);
    material->sundir = {x, y, z};
    node->background_material = material.getPointer();
    return toHandle<VelmarBackground>(node.release());
}

void VelmarBackground_Delete(void* record) {
    if (record == nullptr) return;
    auto* const holder = static_cast<HolderRecord*>(record);
    holder->~HolderRecord();
    sdkFree(holder);
}
