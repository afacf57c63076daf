#pragma once

#include "kit/velmarkit.h"

namespace Velmar::Kit {

/// Who receives the lines that the library reports; null for the standard streams.
void setLineCallback(VelmarKitLineCallback callback, void* user);

} // namespace Velmar::Kit
