#include "scene/nodes/SceneNodeMesh.h"

#include "velmarexceptions.h"

#include "mesh/MeshLoading.h"
#include "mesh/VmmeshFile.h"
#include "scene/ClassSupport.h"
#include "scene/TraversalState.h"
#include "scene/nodes/NodeElements.h"
#include "utils/FileUtils.h"

namespace Velmar {

namespace {

constexpr std::string_view file_name_prefix = "mesh_";
constexpr std::string_view file_name_extension = ".vmmesh";

void ensureDirectory(const std::string& path) {
    if (FileUtils::fileExists(path)) return;
    try {
        FileUtils::createDir(path);
    } catch (const FileUtils::FileUtilsExcep&) {
        // Another program may have made it since.
        if (!FileUtils::fileExists(path)) throw;
    }
}

/// The path of a mesh file as a document has it.
std::string nameInDocument(const std::string& file_path, const XMLWriteOptions& options) {
    if (options.write_mode != XMLWriteOptions::mesh_paths_next_to_document) return file_path;
    const auto nameOf = [](std::string_view path) { return path.substr(path.find_last_of("/\\") + 1); };
    return FileUtils::join(nameOf(options.meshes_dir.view()), nameOf(file_path));
}

} // namespace

SceneNodeMesh::SceneNodeMesh() : Destroyable(NodeType::Mesh) {
    name = "Mesh";
}

Reference<SceneNode>* SceneNodeMesh::cloneInto(Reference<SceneNode>* result) const {
    return constructResult(result, nullptr);
}

void SceneNodeMesh::writeXML(OStream& stream, std::uint32_t depth, const XMLWriteOptions& options) const {
    writeOpenTag(stream, depth, element_of<SceneNodeMesh>);
    ElementWriter inside(stream, depth + 1, &options);
    describeSettings(inside, *this);

    String file_path;
    try {
        // A mesh that a document only names, and that wasn't loaded, stays where it is.
        const bool is_only_named = !mesh && !path.empty();
        file_path = is_only_named ? path : toVelmarString(nameInDocument(writeMeshFile(options), options));
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    } catch (const FileUtils::FileUtilsExcep& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    }
    describeFile(inside, file_path);
    writeCloseTag(stream, depth, element_of<SceneNodeMesh>);
}

std::string SceneNodeMesh::writeMeshFile(const XMLWriteOptions& options) const {
    std::string file_path = getMeshFilePath(options.scene_path, options.scene_dir, options.meshes_dir);
    ensureDirectory(FileUtils::getDirectory(file_path));
    if (!FileUtils::fileExists(file_path)) writeToFileAtomically(toVelmarString(file_path), *mesh, true);
    return file_path;
}

std::string SceneNodeMesh::getMeshFilePath(const String& scene_path, const String& scene_dir,
                                           const String& meshes_dir) const {
    std::string directory = toStdString(meshes_dir);
    if (directory.empty())
        directory = FileUtils::join(scene_dir.view(), FileUtils::removeExtension(scene_path.view()) + "_meshes");
    return FileUtils::join(directory, getMeshFileName(mesh->checksum()));
}

std::string SceneNodeMesh::getMeshFileName(std::uint64_t checksum) {
    return std::string(file_name_prefix) + std::to_string(checksum) + std::string(file_name_extension);
}

bool SceneNodeMesh::isMeshFileName(std::string_view name) {
    if (!name.starts_with(file_name_prefix) || !name.ends_with(file_name_extension)) return false;
    name.remove_prefix(file_name_prefix.size());
    name.remove_suffix(file_name_extension.size());
    return !name.empty() && name.find_first_not_of("0123456789") == std::string_view::npos;
}

void SceneNodeMesh::traverse(TraversalState& state) {
    switch (state.kind) {
    case TraversalKind::GetDependencies:
        state.dependencies.push_back(
            state.mesh_dependencies_as_paths
                ? path
                : toVelmarString(getMeshFilePath(state.scene_path, state.scene_dir, state.meshes_dir)));
        break;
    case TraversalKind::UpdateDependencies:
        path = mapDependencyPath(state.path_map, path);
        break;
    case TraversalKind::LoadMeshes:
        if (!mesh) loadMeshFile(state);
        break;
    default:
        traverseOwnUID(state);
        break;
    }
}

void SceneNodeMesh::loadMeshFile(TraversalState& state) {
    try {
        const std::string full_path = FileUtils::join(state.scene_dir.view(), path.view());
        const BorrowedString key(full_path);
        if (state.mesh_cache == nullptr) state.mesh_cache = new MeshCache;
        mesh = state.mesh_cache->find(key, scale);
        if (mesh) return;
        // Held before it is loaded: a node whose file is bad isn't tried again by a later pass.
        mesh = new Mesh;
        loadMesh(full_path, *mesh, static_cast<float>(scale));
        state.mesh_cache->insert(key, scale, mesh);
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    }
}

} // namespace Velmar
