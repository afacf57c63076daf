#include "scene/SceneXMLWriter.h"

#include "velmarexceptions.h"

#include "utils/FileUtils.h"
#include "utils/OFStream.h"

namespace Velmar {

void writeSceneFile(const SceneNodeRoot& root, const SceneWriteRequest& request) {
    OFStream stream(request.path);
    stream.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");

    XMLWriteOptions options;
    options.scene_path = request.path;
    options.scene_dir = toVelmarString(FileUtils::getDirectory(request.path.view()));
    options.meshes_dir = request.meshes_dir;
    options.resolve_relative_paths = request.resolve_relative_paths;
    options.progress_listener = request.progress_listener;

    try {
        root.writeXML(stream, 0, options);
    } catch (const VelmarException& exception) {
        throw VelmarException(exception.getMessage());
    } catch (...) {
        throw VelmarException("An unhandled error has occured.");
    }
}

void writeSceneXML(const SceneNodeRoot& root, const String& path, bool resolve_relative_paths,
                   ProgressListener* progress_listener) {
    SceneWriteRequest request;
    request.path = path;
    request.resolve_relative_paths = resolve_relative_paths;
    request.progress_listener = progress_listener;
    writeSceneFile(root, request);
}

} // namespace Velmar
