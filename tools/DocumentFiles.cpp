#include "tools/DocumentFiles.h"

#include "scene/SceneNodeTonemapping.h"
#include "scene/XMLPrimitives.h"
#include "scene/nodes/SceneNodeMesh.h"
#include "scene/nodes/SceneNodeModel.h"
#include "scene/nodes/SceneNodeSphere.h"
#include "scene/reading/ForeignParts.h"
#include "tools/Console.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/OFStream.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

using namespace Velmar;

namespace {

/// Without links in what exists, so that `..` leads where the system goes.
std::filesystem::path getRealPath(const std::string& path) {
    const std::string absolute = System::getAbsolutePath(path);
    const std::filesystem::path native(std::u8string(absolute.begin(), absolute.end()));
    std::error_code error;
    std::filesystem::path real = std::filesystem::weakly_canonical(native, error);
    return (error ? native : real).lexically_normal();
}

std::string toText(const std::filesystem::path& path) {
    const std::u8string text = path.generic_u8string();
    return FileUtils::toBackslashes(std::string(text.begin(), text.end()));
}

/// On another drive there is no way from the folder.
std::filesystem::path seenFrom(const std::filesystem::path& folder, const std::filesystem::path& file) {
    const std::filesystem::path relative = file.lexically_relative(folder);
    return relative.empty() ? file : relative;
}

/// As long as it lives, a node reports its own files alone. Nodes that it refers to are in the scene and report theirs,
/// which a pass through the references would do once for each of these.
class WithoutReferences {
  public:
    explicit WithoutReferences(SceneNode& node) {
        if (node.getType() == NodeType::Object) {
            model = static_cast<SceneNodeModel*>(&node);
            std::swap(model->geometry, geometry);
            model->materials.swap(materials);
        } else if (node.getType() == NodeType::Sphere) {
            sphere = static_cast<SceneNodeSphere*>(&node);
            std::swap(sphere->material, material);
        }
    }
    ~WithoutReferences() {
        if (model != nullptr) {
            std::swap(model->geometry, geometry);
            model->materials.swap(materials);
        }
        if (sphere != nullptr) std::swap(sphere->material, material);
    }
    WithoutReferences(const WithoutReferences&) = delete;
    WithoutReferences& operator=(const WithoutReferences&) = delete;

  private:
    SceneNodeModel* model = nullptr;
    SceneNodeSphere* sphere = nullptr;
    Reference<SceneNode> geometry;
    Vector<Reference<SceneNodeMaterial>> materials;
    Reference<SceneNodeMaterial> material;
};

void runPass(SceneNodeRoot& scene, TraversalState& state) {
    for (const Reference<SceneNode>& child : scene.children()) {
        child->traverse(state);
        traverseForeignParts(*child, state);
    }
}

} // namespace

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

std::string DocumentFiles::locate(const std::string& name) const {
    const std::string found = find(name);
    return found.empty() && !name.empty() ? getPlaces(name).front() : found;
}

bool isAbsolutePath(std::string_view path) {
    return FileUtils::join("folder", path) == path;
}

std::string getNameInDocument(const std::string& document, const std::string& file) {
    return toText(seenFrom(getRealPath(document).parent_path(), getRealPath(file)));
}

std::vector<std::string> getFileNames(SceneNodeRoot& scene) {
    std::vector<std::string> names;
    std::set<std::string> known{""};
    TraversalState state(TraversalKind::GetDependencies, String(), String());
    for (const Reference<SceneNode>& child : scene.children()) {
        const WithoutReferences alone(*child);
        child->traverse(state);
        traverseForeignParts(*child, state);
        for (const String& name : state.dependencies)
            if (known.insert(toStdString(name)).second) names.push_back(toStdString(name));
        state.dependencies.clear();
    }
    return names;
}

void renameFiles(SceneNodeRoot& scene, const std::map<std::string, std::string>& new_names) {
    TraversalState state(TraversalKind::UpdateDependencies, String(), String());
    // An element without a path has none afterwards.
    state.path_map.insert(String(), String());
    for (const auto& [name, new_name] : new_names)
        if (!name.empty()) state.path_map.insert(toVelmarString(name), toVelmarString(new_name));
    runPass(scene, state);
}

void rebaseFiles(SceneNodeRoot& scene, const std::string& from, const std::string& to) {
    const DocumentFiles files(from);
    const std::filesystem::path folder = getRealPath(System::followLinks(to)).parent_path();
    const bool same_folder = getRealPath(from).parent_path() == folder;
    std::map<std::string, std::string> new_names;
    for (const std::string& name : getFileNames(scene)) {
        std::string& new_name = new_names[name] = name;
        if (same_folder || isAbsolutePath(name)) continue;
        new_name = toText(seenFrom(folder, getRealPath(files.locate(name))));
    }
    renameFiles(scene, new_names);
}

void writeDocument(const SceneNodeRoot& scene, OutputFile& file) {
    try {
        XMLWriteOptions options;
        options.resolve_relative_paths = false;
        OFStream stream(toVelmarString(file.getPartialPath()));
        stream.write("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");
        scene.writeXML(stream, 0, options);
        stream.flush();
        if (stream.failed()) throw Failure("the document wasn't written whole; is the disk full?");
    } catch (...) {
        throw file.makeFailure();
    }
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

void loadDocumentFiles(SceneNodeRoot& scene, const std::string& path) {
    const DocumentFiles files(path);
    // One state, so that a file that several nodes name is read once.
    TraversalState state(TraversalKind::LoadMeshes, toVelmarString(path), String());
    for (const Reference<SceneNode>& child : scene.children()) {
        if (child->getType() == NodeType::ToneMapping) {
            String& response = static_cast<SceneNodeTonemapping&>(*child).response_function_path;
            const std::string file = files.locate(toStdString(response));
            // Else it is one of the renderer.
            if (FileUtils::fileExists(file)) response = toVelmarString(file);
        }
        if (child->getType() != NodeType::Mesh) continue;
        auto& node = static_cast<SceneNodeMesh&>(*child);
        const std::string file = files.locate(toStdString(node.path));
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
