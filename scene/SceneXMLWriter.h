#pragma once

#include "scene/SceneNodeRoot.h"
#include "scene/XMLPrimitives.h"

namespace Velmar {

/// What is asked of `writeSceneFile`.
struct SceneWriteRequest {
    /// The file to write, UTF-8.
    String path;
    /// The folder of the mesh files; empty for the one next to the scene.
    String meshes_dir;
    /// Whether relative paths are written joined to the scene's directory.
    bool resolve_relative_paths = true;
    /// Not owned; null for none.
    ProgressListener* progress_listener = nullptr;
};

/// Writes the scene as an XML document and its meshes as vmmesh files. An existing document is overwritten. The memory
/// used doesn't depend on the size of the scene.
/// A document that can't be opened or written isn't reported. Throws `VelmarException` with the message of a node that
/// failed to write itself; what was written till then stays in the file.
void writeSceneFile(const SceneNodeRoot& root, const SceneWriteRequest& request);

/// `writeSceneFile` with the meshes in the folder next to the document.
void writeSceneXML(const SceneNodeRoot& root, const String& path, bool resolve_relative_paths,
                   ProgressListener* progress_listener);

} // namespace Velmar
