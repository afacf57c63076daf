#include "tools/DocumentFiles.h"

#include "scene/nodes/SceneNodeMesh.h"
#include "tools/Console.h"
#include "tools/System.h"
#include "utils/FileUtils.h"

#include <algorithm>

using namespace Velmar;

DocumentFiles::DocumentFiles(const std::string& path) : folder(Text::folderOf(path)) {
    const std::string real_path = System::followLinks(path);
    real_folder = real_path == path ? folder : Text::folderOf(real_path);
}

std::vector<std::string> DocumentFiles::getPlaces(std::string name) const {
    FileUtils::replaceChar(name, '\\', '/');
    if (isAbsolutePath(name)) return {name};
    std::vector<std::string> places = {folder + name};
    // A document that a link names was written where it is.
    for (const std::string& other : {real_folder + name, name})
        if (std::find(places.begin(), places.end(), other) == places.end()) places.push_back(other);
    return places;
}

std::string DocumentFiles::find(const std::string& name) const {
    if (name.empty()) return {};
    for (const std::string& place : getPlaces(name))
        if (FileUtils::fileExists(place)) return place;
    return {};
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
        std::string file = files.find(toStdString(node.path));
        if (file.empty()) file = files.getPlaces(toStdString(node.path)).front();
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
