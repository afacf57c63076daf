#include "api/MaterialValues.h"

#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/Spectra.h"

namespace Velmar {

Reference<WavelengthDependentParam> constantColour(double r, double g, double b) {
    constexpr double gamma = 2.2;
    const Reference<Spectrum> spectrum(new RGBSpectrum({r, g, b}, gamma));
    return new ConstantWavelengthDependentParam(spectrum);
}

Reference<WavelengthDependentParam> constantNumber(double value) {
    const Reference<Spectrum> spectrum(new UniformSpectrum(value));
    return new ConstantWavelengthDependentParam(spectrum);
}

Reference<SceneNodeMaterial> greyMaterialNode(const char* name) {
    const Reference<SceneNodeMaterial> node(new SceneNodeMaterial);
    const Reference<DiffuseMaterial> material(new DiffuseMaterial);
    material->albedo = constantColour(0.8, 0.8, 0.8);
    node->material = material.getPointer();
    node->setName(name);
    return node;
}

} // namespace Velmar
