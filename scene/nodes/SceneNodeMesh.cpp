#include "scene/nodes/SceneNodeMesh.h"

#include "velmarexceptions.h"

#include "mesh/MeshLoading.h"
#include "mesh/VmmeshFile.h"
#include "scene/ClassSupport.h"
#include "scene/TraversalState.h"
#include "scene/XMLPrimitives.h"
#include "utils/FileUtils.h"

namespace Velmar {

namespace {

constexpr std::string_view file_name_prefix = "mesh_";
constexpr std::string_view file_name_extension = ".vmmesh";

/// A NaN counts as the default and isn't written.
bool differs(double value, double default_value) {
    return value < default_value || value > default_value;
}

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
    writeOpenTag(stream, depth, "mesh");
    writeNodeIdentity(stream, depth + 1, *this);
    writeSettings(stream, depth + 1);

    std::string file_path;
    try {
        file_path = writeMeshFile(options);
    } catch (const Exception& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    } catch (const FileUtils::FileUtilsExcep& exception) {
        throw VelmarException(toVelmarString(exception.getMessage()));
    }
    writeOpenTag(stream, depth + 1, "external");
    writePathElement(stream, depth + 2, "path", nameInDocument(file_path, options), options);
    writeCloseTag(stream, depth + 1, "external");
    writeCloseTag(stream, depth, "mesh");
}

void SceneNodeMesh::writeSettings(OStream& stream, std::uint32_t depth) const {
    // What is left out is what readers take for granted, which isn't in every case what the constructor sets.
    if (!normal_smoothing) writeBoolElement(stream, depth, "normal_smoothing", normal_smoothing);
    if (max_num_subdivisions != 0) writeInt32Element(stream, depth, "max_num_subdivisions", max_num_subdivisions);
    if (num_smoothings != 2) writeInt32Element(stream, depth, "num_smoothings", num_smoothings);
    if (differs(subdivide_pixel_threshold, 0.0))
        writeDoubleElement(stream, depth, "subdivide_pixel_threshold", subdivide_pixel_threshold);
    if (!subdivision_smoothing) writeBoolElement(stream, depth, "subdivision_smoothing", subdivision_smoothing);
    if (differs(subdivide_curvature_threshold, 0.0))
        writeDoubleElement(stream, depth, "subdivide_curvature_threshold", subdivide_curvature_threshold);
    if (view_dependent_subdivision)
        writeBoolElement(stream, depth, "view_dependent_subdivision", view_dependent_subdivision);
    if (differs(displacement_error_threshold, 0.0))
        writeDoubleElement(stream, depth, "displacement_error_threshold", displacement_error_threshold);
    if (differs(scale, 1.0)) writeDoubleElement(stream, depth, "scale", scale);
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
