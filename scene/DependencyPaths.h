#pragma once

#include "scene/SceneTables.h"

namespace Velmar {

/// The new path of `old_path`, found by exact comparison of bytes.
/// Throws `VelmarException` when `path_map` has none.
String mapDependencyPath(const PathMap& path_map, const String& old_path);

} // namespace Velmar
