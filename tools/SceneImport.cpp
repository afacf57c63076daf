#include "tools/SceneImport.h"

#include "import/MeshImport.h"
#include "import/ValidText.h"

#include "mesh/MeshBuilder.h"
#include "tools/Console.h"
#include "utils/System.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <memory>
#include <numbers>
#include <set>
#include <span>

#ifdef VELMAR_WITH_ASSIMP
#include <assimp/cimport.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif

namespace {

/// The usual ones; the library knows more.
constexpr std::string_view scene_formats[] = {"glb", "gltf", "fbx", "dae", "zae", "3ds",  "blend", "x",   "x3d",
                                              "3mf", "ase",  "lwo", "ac",  "b3d", "ms3d", "off",   "wrl", "m3d"};

} // namespace

bool isSceneFormat(std::string_view format) {
    return std::find(std::begin(scene_formats), std::end(scene_formats), format) != std::end(scene_formats);
}

#ifndef VELMAR_WITH_ASSIMP

ImportedScene importScene(const std::string& path, const std::string&) {
    throw Failure(path + ": scenes of this format aren't read by this build of velmar, which is without the library "
                         "assimp; .obj, .ply, .stl and .vmmesh files are");
}

#else

namespace {

using Velmar::Mesh;
using Velmar::Vec3d;

/// The functions of the library, loaded at run time.
class AssimpLibrary {
  public:
    AssimpLibrary() {
        // The name carries the version of the headers: records are passed.
        constexpr const char* name = "libassimp.so.5";
        std::string error;
        module = Velmar::loadModule(name, error);
        if (module == nullptr) throw Failure("the library assimp is needed to read this format: " + error);
        bind(import_file, "aiImportFile");
        bind(release_import, "aiReleaseImport");
        bind(get_error, "aiGetErrorString");
        bind(get_colour, "aiGetMaterialColor");
        bind(get_string, "aiGetMaterialString");
    }
    ~AssimpLibrary() { Velmar::unloadModule(module); }
    AssimpLibrary(const AssimpLibrary&) = delete;
    AssimpLibrary& operator=(const AssimpLibrary&) = delete;

    decltype(&aiImportFile) import_file = nullptr;
    decltype(&aiReleaseImport) release_import = nullptr;
    decltype(&aiGetErrorString) get_error = nullptr;
    decltype(&aiGetMaterialColor) get_colour = nullptr;
    decltype(&aiGetMaterialString) get_string = nullptr;

  private:
    template <class Function>
    void bind(Function& function, const char* name) {
        function = reinterpret_cast<Function>(Velmar::findSymbol(module, name));
        if (function == nullptr) throw Failure("the library assimp lacks " + std::string(name));
    }

    void* module = nullptr;
};

std::string toText(const aiString& text) {
    return Velmar::toValidText({text.data, text.length});
}

Placement toPlacement(const aiMatrix4x4& m) {
    Placement placement;
    const double matrix[9] = {m.a1, m.a2, m.a3, m.b1, m.b2, m.b3, m.c1, m.c2, m.c3};
    std::copy(std::begin(matrix), std::end(matrix), placement.matrix);
    placement.position = {m.a4, m.b4, m.c4};
    return placement;
}

/// What a scene has no place for, counted.
class LeftOut {
  public:
    void add(std::uint64_t count, const char* one, const char* many) {
        if (count != 0) text += (text.empty() ? "" : ", ") + Text::count(count, one, many);
    }

    std::string text;
};

class SceneReader {
  public:
    SceneReader(const AssimpLibrary& library, const aiScene& read_scene, const std::string& path,
                const Placement& upright)
        : assimp(library), scene(read_scene), name(Velmar::toValidText(Text::fileStem(path))),
          is_gltf(Velmar::getMeshFormat(path).starts_with("gl")), root(upright) {}

    ImportedScene read() {
        // Not by recursion: nodes may be nested deeper than a stack reaches.
        std::vector<std::pair<const aiNode*, Placement>> pending = {{scene.mRootNode, root}};
        while (!pending.empty()) {
            const auto [node, parent] = pending.back();
            pending.pop_back();
            const Placement placement = parent.after(toPlacement(node->mTransformation));
            nodes.try_emplace(std::string(node->mName.data, node->mName.length), placement);
            for (unsigned i = 0; i < node->mNumMeshes; ++i)
                addModel(*node, node->mMeshes[i], placement);
            for (unsigned i = node->mNumChildren; i > 0; --i)
                pending.emplace_back(node->mChildren[i - 1], placement);
        }
        if (scene.mNumCameras != 0) addCamera(*scene.mCameras[0]);
        noteLeftOut();
        return std::move(result);
    }

  private:
    static constexpr std::size_t no_geometry = static_cast<std::size_t>(-1);

    void addModel(const aiNode& node, unsigned mesh_index, const Placement& placement) {
        const auto [known, is_new] = geometries.try_emplace(mesh_index, no_geometry);
        const aiMesh& mesh = *scene.mMeshes[mesh_index];
        if (is_new) known->second = addGeometry(mesh);
        if (known->second == no_geometry) return;
        SceneModel model;
        model.name = node.mName.length != 0 ? toText(node.mName) : result.content.geometries[known->second].name;
        model.geometry = known->second;
        model.materials = {getMaterial(mesh.mMaterialIndex)};
        model.placement = placement;
        result.content.models.push_back(std::move(model));
    }

    /// Returns its index, or `no_geometry` for a mesh without a face.
    std::size_t addGeometry(const aiMesh& mesh) {
        SceneGeometry geometry;
        geometry.name = mesh.mName.length != 0 ? toText(mesh.mName) : name;
        geometry.smooth_normals = mesh.mNormals != nullptr;
        geometry.mesh = new Mesh;
        Velmar::MeshBuilder builder(*geometry.mesh);
        builder.useMaterial(getMaterial(mesh.mMaterialIndex).name);
        const bool has_uvs = mesh.mTextureCoords[0] != nullptr;
        if (has_uvs) builder.raiseNumUVMappings(1);
        builder.tryReserveVertices(mesh.mNumVertices);
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            const aiVector3D& v = mesh.mVertices[i];
            if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
                throw Failure("a vertex of the mesh '" + geometry.name + "' isn't finite");
            builder.addVertex({v.x, v.y, v.z});
            if (has_uvs) builder.addUV({mesh.mTextureCoords[0][i].x, mesh.mTextureCoords[0][i].y});
        }
        std::uint64_t triangles = 0;
        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            const aiFace& face = mesh.mFaces[i];
            const std::span<const std::uint32_t> corners(face.mIndices, face.mNumIndices);
            if (corners.size() < 3) ++points_and_lines;
            if (corners.size() >= 3 && corners.size() != 4) triangles += corners.size() - 2;
            builder.addPolygon(corners, has_uvs ? corners : std::span<const std::uint32_t>(), 0);
        }
        builder.build();
        without_area += triangles - geometry.mesh->triangles.size();
        if (geometry.mesh->triangles.empty() && geometry.mesh->quads.empty()) return no_geometry;
        result.content.geometries.push_back(std::move(geometry));
        return result.content.geometries.size() - 1;
    }

    const SceneMaterial& getMaterial(unsigned index) {
        const auto [known, is_new] = materials.try_emplace(index);
        SceneMaterial& material = known->second;
        if (!is_new) return material;
        material.name = "default";
        if (index >= scene.mNumMaterials) return material;
        const aiMaterial* const source = scene.mMaterials[index];
        aiString text;
        if (assimp.get_string(source, AI_MATKEY_NAME, &text) == aiReturn_SUCCESS && text.length != 0)
            material.name = toText(text);
        aiColor4D colour;
        const bool has_colour = assimp.get_colour(source, AI_MATKEY_COLOR_DIFFUSE, &colour) == aiReturn_SUCCESS ||
                                assimp.get_colour(source, AI_MATKEY_BASE_COLOR, &colour) == aiReturn_SUCCESS;
        const auto part = [](float value) { return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0.0F; };
        if (has_colour) material.colour = {part(colour.r), part(colour.g), part(colour.b)};
        return material;
    }

    void addCamera(const aiCamera& camera) {
        const auto node = nodes.find(std::string(camera.mName.data, camera.mName.length));
        const Placement placement = node == nodes.end() ? root : node->second;
        Placement direction = placement;
        direction.position = {0, 0, 0};
        const auto turn = [&](const aiVector3D& v) { return normalise(direction.apply({v.x, v.y, v.z})); };
        ViewPoint view;
        // The reader of glTF files repeats the translation of the node here.
        const aiVector3D own = is_gltf ? aiVector3D() : camera.mPosition;
        view.position = placement.apply({own.x, own.y, own.z});
        const Vec3d forwards = turn(camera.mLookAt);
        view.up = turn(camera.mUp);
        // Sharp is what is as far away as the models.
        const Box box = result.content.getBounds();
        const Vec3d centre = box.getCentre();
        const double along = (centre.x - view.position.x) * forwards.x + (centre.y - view.position.y) * forwards.y +
                             (centre.z - view.position.z) * forwards.z;
        const double distance = along > 0 ? along : box.getRadius();
        view.forwards = {forwards.x * distance, forwards.y * distance, forwards.z * distance};
        const double fov = camera.mHorizontalFOV * 180 / std::numbers::pi;
        if (fov >= 1 && fov <= 170) view.fov = fov;
        const double numbers[] = {view.position.x, view.position.y, view.position.z, view.forwards.x, view.forwards.y,
                                  view.forwards.z, view.up.x,       view.up.y,       view.up.z};
        const bool usable =
            std::all_of(std::begin(numbers), std::end(numbers), [](double number) { return std::isfinite(number); });
        if (usable && (forwards.x != 0 || forwards.y != 0 || forwards.z != 0)) result.content.camera = view;
    }

    static Vec3d normalise(const Vec3d& v) {
        const double length = std::hypot(v.x, v.y, v.z);
        return length > 0 ? Vec3d{v.x / length, v.y / length, v.z / length} : Vec3d{};
    }

    void noteLeftOut() {
        LeftOut left_out;
        left_out.add(scene.mNumLights, "light", "lights");
        left_out.add(scene.mNumCameras > 1 ? scene.mNumCameras - 1 : 0, "further camera", "further cameras");
        left_out.add(scene.mNumAnimations, "animation", "animations");
        left_out.add(countTextures(), "texture", "textures");
        std::uint64_t skins = 0;
        std::uint64_t coloured = 0;
        for (const auto& [index, geometry] : geometries) {
            skins += scene.mMeshes[index]->HasBones() ? 1 : 0;
            coloured += scene.mMeshes[index]->HasVertexColors(0) ? 1 : 0;
        }
        left_out.add(skins, "skeleton", "skeletons");
        left_out.add(coloured, "set of vertex colours", "sets of vertex colours");
        left_out.add(points_and_lines, "point or line", "points and lines");
        left_out.add(without_area, "triangle without area", "triangles without area");
        if (!left_out.text.empty()) result.notes.push_back("left out: " + left_out.text);
    }

    /// The files and embedded images that materials name, each once.
    std::uint64_t countTextures() const {
        std::set<std::string> files;
        for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
            const aiMaterial& material = *scene.mMaterials[i];
            for (unsigned j = 0; j < material.mNumProperties; ++j) {
                const aiMaterialProperty& property = *material.mProperties[j];
                const bool is_file = std::string_view(property.mKey.data, property.mKey.length) == "$tex.file";
                if (is_file && property.mType == aiPTI_String) files.emplace(property.mData, property.mDataLength);
            }
        }
        return files.size();
    }

    const AssimpLibrary& assimp;
    const aiScene& scene;
    /// For meshes without one.
    std::string name;
    bool is_gltf;
    Placement root;
    ImportedScene result;
    /// By the index of the mesh.
    std::map<unsigned, std::size_t> geometries;
    std::map<unsigned, SceneMaterial> materials;
    std::map<std::string, Placement> nodes;
    std::uint64_t points_and_lines = 0;
    std::uint64_t without_area = 0;
};

/// The axis that the file calls its height. Most formats have y there, and the library turns others to it.
std::string findUp(const aiScene& scene) {
    std::int32_t axis = 1;
    std::int32_t sign = 1;
    if (scene.mMetaData != nullptr) {
        scene.mMetaData->Get("UpAxis", axis);
        scene.mMetaData->Get("UpAxisSign", sign);
    }
    const char* const names[] = {"x", "y", "z"};
    return (sign < 0 ? "-" : "") + std::string(names[std::clamp(axis, 0, 2)]);
}

} // namespace

ImportedScene importScene(const std::string& path, const std::string& up) {
    try {
        const AssimpLibrary assimp;
        constexpr unsigned steps = aiProcess_JoinIdenticalVertices | aiProcess_ValidateDataStructure;
        const std::unique_ptr<const aiScene, decltype(assimp.release_import)> scene(
            assimp.import_file(path.c_str(), steps), assimp.release_import);
        if (!scene || scene->mRootNode == nullptr) throw Failure(assimp.get_error());
        const Placement upright = makeUpright(up == "auto" ? findUp(*scene) : up, path);
        ImportedScene result = SceneReader(assimp, *scene, path, upright).read();
        if (result.content.models.empty()) throw Failure("has no faces");
        return result;
    } catch (...) {
        throw makeFailureOf(path);
    }
}

#endif
