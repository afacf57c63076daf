#include "tools/ModelScene.h"

#include "import/ValidText.h"

#include "tools/MeshFile.h"
#include "tools/SceneImport.h"
#include "tools/Vec.h"
#include "utils/MappedFile.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

using Velmar::Mesh;

namespace {

std::string describe(const std::string& path, const Mesh& mesh) {
    return path + ": " + Text::faceCounts(mesh.verts.size(), mesh.triangles.size(), mesh.quads.size()) + ", " +
           Text::count(mesh.used_materials.size(), "material", "materials");
}

/// Reads models, each file and scale once.
class ModelReader {
  public:
    explicit ModelReader(bool quiet_work) : quiet(quiet_work) {}

    ModelScene result;

    void add(const ModelRequest& request, Progress& progress) {
        if (isSceneFormat(Velmar::getMeshFormat(request.path))) {
            addScene(request, progress);
            return;
        }
        const auto [known, is_new] =
            geometries.try_emplace({request.path, request.scale}, result.content.geometries.size());
        if (is_new) read(request, progress);
        const SceneGeometry& geometry = result.content.geometries[known->second];
        SceneModel model;
        model.name = request.name.empty() ? geometry.name : Velmar::toValidText(request.name);
        model.geometry = known->second;
        model.materials = materials[known->second];
        model.placement = ::place(*geometry.mesh, makeUpright(request.up, request.path), request.placement);
        result.content.models.push_back(std::move(model));
    }

  private:
    void read(const ModelRequest& request, Progress& progress) {
        const std::string& path = request.path;
        const Velmar::ImportedMesh imported = readMesh(path, request.scale);
        Mesh& mesh = *imported.mesh;
        requireUsable(path, mesh);
        const std::string fault = findFaultyFace(mesh);
        if (!fault.empty()) throw Failure(path + ": " + fault);
        if (!hasDistinctNames(mesh)) throw Failure(path + ": two materials have one name");
        if (!imported.notes.empty()) progress.clear();
        printNotes(path, imported.notes, quiet);

        SceneGeometry geometry;
        const std::string stem = Text::fileStem(path);
        geometry.name = Velmar::toValidText(stem);
        if (geometry.name != stem && !quiet)
            printNote(path + ": the name of the file isn't valid UTF-8 text; read as Windows-1252");
        geometry.mesh = imported.mesh;
        // Scenes of hosts have no vertex normals.
        geometry.smooth_normals = !mesh.normals.empty();
        mesh.normals.clear();
        mesh.uv_layout = 0;
        if (mesh.num_uv_mappings == 0) mesh.uv_pairs.clear();
        result.content.geometries.push_back(std::move(geometry));
        materials.push_back(getMaterials(imported));
        result.lines.push_back(describe(path, mesh));
    }

    /// The models of a whole scene, which are placed together.
    void addScene(const ModelRequest& request, Progress& progress) {
        ImportedScene scene = importScene(request.path, request.up);
        if (!scene.notes.empty()) progress.clear();
        for (const std::string& note : scene.notes)
            if (!quiet) printNote(request.path + ": " + note);
        const Placement group = placeTogether(scene.content.getBounds(), request.scale, request.placement);
        const std::size_t first_geometry = result.content.geometries.size();
        std::uint64_t triangles = 0;
        std::uint64_t quads = 0;
        std::set<std::string> names;
        for (SceneModel& model : scene.content.models) {
            const Mesh& mesh = *scene.content.geometries[model.geometry].mesh;
            triangles += mesh.triangles.size();
            quads += mesh.quads.size();
            names.insert(model.materials.front().name);
            model.geometry += first_geometry;
            model.placement = group.after(model.placement);
            result.content.models.push_back(std::move(model));
        }
        for (SceneGeometry& geometry : scene.content.geometries) {
            result.content.geometries.push_back(std::move(geometry));
            materials.emplace_back();
        }
        if (scene.content.camera && !result.content.camera) result.content.camera = place(*scene.content.camera, group);
        result.lines.push_back(request.path + ": " + Text::count(result.content.models.size(), "model", "models") +
                               ", " + Text::count(triangles, "triangle", "triangles") + ", " +
                               Text::count(quads, "quad", "quads") + ", " +
                               Text::count(names.size(), "material", "materials"));
    }

    static ViewPoint place(const ViewPoint& camera, const Placement& group) {
        Placement direction = group;
        direction.position = {0, 0, 0};
        ViewPoint placed = camera;
        placed.position = group.apply(camera.position);
        placed.forwards = direction.apply(camera.forwards);
        // Only the scene is scaled.
        placed.up = Vec::normalised(direction.apply(camera.up));
        return placed;
    }

    static std::vector<SceneMaterial> getMaterials(const Velmar::ImportedMesh& imported) {
        std::vector<SceneMaterial> all;
        for (const Velmar::String& name : imported.mesh->used_materials) {
            SceneMaterial material = {std::string(name.view())};
            const auto found = std::find_if(imported.colours.begin(), imported.colours.end(),
                                            [&](const auto& colour) { return colour.name == name.view(); });
            if (found != imported.colours.end()) material.colour = found->colour;
            all.push_back(material);
        }
        // Faces of a mesh without names refer to one material too.
        if (all.empty()) all.push_back({"default"});
        return all;
    }

    bool quiet;
    std::map<std::pair<std::string, float>, std::size_t> geometries;
    /// By geometry.
    std::vector<std::vector<SceneMaterial>> materials;
};

std::uint64_t getSize(const std::string& path) {
    try {
        return MappedFile(path).getSize();
    } catch (...) {
        // Reading it reports what is wrong.
        return 0;
    }
}

} // namespace

std::string stepText(std::size_t number, std::size_t count) {
    return '[' + std::to_string(number) + '/' + std::to_string(count) + "] ";
}

ModelScene readModels(const std::vector<ModelRequest>& requests, Progress& progress, bool quiet) {
    std::vector<std::uint64_t> sizes;
    std::uint64_t total = 1;
    for (const ModelRequest& request : requests) {
        sizes.push_back(getSize(request.path));
        total += sizes.back();
    }
    // Writing takes about as long as reading.
    total *= 2;
    std::uint64_t done = 0;
    ModelReader reader(quiet);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        progress.show(stepText(i + 1, requests.size() + 1) + "reading " + Text::fileName(requests[i].path),
                      static_cast<double>(done) / static_cast<double>(total));
        reader.add(requests[i], progress);
        done += sizes[i];
    }
    return std::move(reader.result);
}
