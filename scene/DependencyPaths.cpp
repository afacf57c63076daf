#include "scene/DependencyPaths.h"

#include "velmarexceptions.h"

namespace Velmar {

String mapDependencyPath(const PathMap& path_map, const String& old_path) {
    const String* const new_path = path_map.find(old_path);
    if (new_path == nullptr)
        throw VelmarException(String("While updating dependencies: Missing mapping for old path '") + old_path + "'.");
    return *new_path;
}

} // namespace Velmar
