#pragma once

#include "scene/MaterialParams.h"

namespace Velmar {

class SceneNodeMaterial;

/// The same colour everywhere, with gamma 2.2.
Reference<WavelengthDependentParam> constantColour(double r, double g, double b);

/// The same value at every wavelength and everywhere.
Reference<WavelengthDependentParam> constantNumber(double value);

/// A material node with a light grey diffuse material.
Reference<SceneNodeMaterial> greyMaterialNode(const char* name);

} // namespace Velmar
