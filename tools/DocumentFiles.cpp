#include "tools/DocumentFiles.h"

#include "scene/nodes/SceneNodeMesh.h"
#include "tools/Console.h"
#include "tools/System.h"
#include "utils/FileUtils.h"

#include <utility>

using namespace Velmar;

DocumentFiles::DocumentFiles(const std::string& path) : folder(Text::folderOf(path)) {
    const std::string real_path = System::followLinks(path);
    real_folder = real_path == path ? folder : Text::folderOf(real_path);
}

std::string DocumentFiles::find(const std::string& name) const {
    if (name.empty()) return {};
    std::string path = name;
    FileUtils::replaceChar(path, '\\', '/');
    if (isAbsolutePath(path)) return path;
    // A document behind a link was written where it is.
    for (const std::string& place : {folder + path, real_folder + path, path})
        if (FileUtils::fileExists(place)) return place;
    return folder + path;
}

bool isAbsolutePath(std::string_view path) {
    return FileUtils::join("folder", path) == path;
}

Reference<SceneNodeRoot> readDocument(const std::string& path, SceneReadRequest request) {
    try {
        request.path = toVelmarString(path);
        return readSceneXML(request);
    } catch (const SceneDocumentError& error) {
        throw Failure(error.getMessage());
    } catch (...) {
        throw makeFailureOf(path);
    }
}

void loadDocumentMeshes(SceneNodeRoot& scene, const std::string& path) {
    const DocumentFiles files(path);
    // One state, so that a file that several nodes name is read once.
    TraversalState state(TraversalKind::LoadMeshes, toVelmarString(path), String());
    for (const Reference<SceneNode>& child : scene.children()) {
        if (child->getType() != NodeType::Mesh) continue;
        auto& node = static_cast<SceneNodeMesh&>(*child);
        const std::string file = files.find(toStdString(node.path));
        node.path = toVelmarString(file);
        try {
            node.traverse(state);
        } catch (...) {
            throw Failure(path + ": mesh '" + toStdString(node.getName()) + "': " + makeFailureOf(file).what());
        }
    }
}

VelmarScene* releaseScene(Reference<SceneNodeRoot>& scene) {
    SceneNodeRoot* const root = scene.getPointer();
    root->increment();
    scene = nullptr;
    // Counted by nothing, like a scene that a host creates.
    root->decrement();
    return reinterpret_cast<VelmarScene*>(root);
}
