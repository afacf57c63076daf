#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/MeshFile.h"
#include "tools/SceneBuilder.h"
#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

using CommandOptions::addChoice;
using CommandOptions::addUp;
using CommandOptions::addValue;
using CommandOptions::inRange;
using Velmar::Mesh;

namespace {

struct ExportOptions {
    std::vector<std::string> paths;
    SceneSettings scene;
    std::string up = "auto";
    bool no_ground = false;
    float scale = 1.0F;
    bool quiet = false;
};

/// A mesh file in the folder of the scene's meshes.
struct MeshFile {
    std::string path;
    std::uint64_t size = 0;
    bool existed = false;
};

/// The result, for the summary.
struct Report {
    std::vector<std::string> models;
    std::vector<MeshFile> mesh_files;
    std::uint64_t document_size = 0;
};

// ---- from files to models ------------------------------------------------------------------------------------------

/// Refuses what a scene can't express.
void requireUsable(const std::string& path, const Mesh& mesh) {
    if (mesh.triangles.empty() && mesh.quads.empty()) throw Failure(path + ": holds no faces");
    const std::string fault = findFaultyFace(mesh);
    if (!fault.empty()) throw Failure(path + ": " + fault);
    if (!hasDistinctNames(mesh)) throw Failure(path + ": two materials have one name");
    const Velmar::Vec3f& low = mesh.aabb_min;
    const Velmar::Vec3f& high = mesh.aabb_max;
    for (const float bound : {low.x, low.y, low.z, high.x, high.y, high.z})
        if (!std::isfinite(bound)) throw Failure(path + ": a vertex isn't finite");
}

InputModel readModel(const std::string& path, const ExportOptions& options) {
    Velmar::ImportedMesh imported = readMesh(path, options.scale);
    Mesh& mesh = *imported.mesh;
    requireUsable(path, mesh);
    InputModel model;
    model.name = Text::fileStem(path);
    model.mesh = imported.mesh;
    model.colours = std::move(imported.colours);
    model.y_up = CommandOptions::isYUp(options.up, path);
    // Scenes of hosts have no vertex normals.
    model.smooth_normals = !mesh.normals.empty();
    mesh.normals.clear();
    mesh.uv_layout = 0;
    if (mesh.num_uv_mappings == 0) mesh.uv_pairs.clear();
    return model;
}

std::string describe(const std::string& path, const Mesh& mesh) {
    return path + ": " + Text::faceCounts(mesh.verts.size(), mesh.triangles.size(), mesh.quads.size()) + ", " +
           Text::count(mesh.used_materials.size(), "material", "materials");
}

// ---- from the scene to files ---------------------------------------------------------------------------------------

/// The mesh files of a scene. The document names them by their content, so an existing whole one is kept; the library
/// writes none of them again. Unless `keep` is called, the destructor removes those that were written.
class MeshFolder {
  public:
    MeshFolder() = default;
    ~MeshFolder() {
        if (kept) return;
        for (const MeshFile& file : files)
            if (!file.existed) System::removeFile(file.path);
        if (!made_folder.empty()) System::removeDirectory(made_folder);
    }
    MeshFolder(const MeshFolder&) = delete;
    MeshFolder& operator=(const MeshFolder&) = delete;

    void add(const SceneMesh& scene_mesh) {
        MeshFile file = {scene_mesh.path};
        if (FileUtils::fileExists(file.path) && isWholeMesh(file.path)) {
            file.existed = true;
            file.size = MappedFile(file.path).getSize();
        } else {
            makeFolder(FileUtils::getDirectory(file.path));
            OutputFile output(file.path);
            file.size = writeMesh(*scene_mesh.mesh, output, true);
        }
        files.push_back(file);
    }

    const std::vector<MeshFile>& getFiles() const { return files; }
    void keep() { kept = true; }

  private:
    void makeFolder(const std::string& folder) {
        if (FileUtils::fileExists(folder)) return;
        FileUtils::createDir(folder);
        made_folder = folder;
    }

    std::vector<MeshFile> files;
    std::string made_folder;
    bool kept = false;
};

/// The library doesn't report a document that couldn't be written.
void requireWhole(const std::string& document) {
    const MappedFile file(document);
    if (!FileUtils::trimTrailingWhitespace(file.getText()).ends_with("</scene>"))
        throw Failure("the document wasn't written whole; is the disk full?");
}

/// The path of the document for the library. A path with a directory would be a prefix of every path in the document;
/// from inside the directory the document names its mesh files as seen from itself, and both can be moved together.
std::string enterDirectoryOf(const std::string& path) {
    std::string directory = FileUtils::getDirectory(path);
    // Without its separator a root is something else.
    if (directory.empty() || directory.back() == ':') directory += '/';
    return System::enterDirectory(directory) ? Text::fileName(path) : path;
}

Report makeScene(const ExportOptions& options, const std::string& scene_path) {
    Progress progress(options.quiet);
    OutputFile output(scene_path);
    Report report;
    std::vector<InputModel> models;
    const std::size_t steps = options.paths.size() + 1;
    const auto step = [&](std::size_t number) {
        return '[' + std::to_string(number) + '/' + std::to_string(steps) + "] ";
    };
    for (const std::string& path : options.paths) {
        progress.show(step(models.size() + 1) + "reading " + Text::fileName(path));
        models.push_back(readModel(path, options));
        report.models.push_back(describe(path, *models.back().mesh));
    }

    progress.show(step(steps) + "writing " + Text::fileName(scene_path));
    try {
        const std::string document = enterDirectoryOf(output.getPartialPath());
        const SceneBuilder scene(models, options.scene);
        MeshFolder meshes;
        for (const SceneMesh& mesh : scene.getMeshes(document))
            meshes.add(mesh);
        scene.write(document);
        requireWhole(document);
        report.document_size = output.commit();
        meshes.keep();
        report.mesh_files = meshes.getFiles();
    } catch (...) {
        throw makeFailureOf(scene_path);
    }
    return report;
}

void print(const Report& report, const std::string& scene_path) {
    for (const std::string& model : report.models)
        std::printf("%s\n", model.c_str());
    std::printf("%s (%s)\n", scene_path.c_str(), Text::size(report.document_size).c_str());
    const std::string folder = Text::folderOf(scene_path) + Text::fileStem(scene_path) + "_meshes/";
    for (const MeshFile& file : report.mesh_files)
        std::printf("%s%s (%s%s)\n", folder.c_str(), Text::fileName(file.path).c_str(), Text::size(file.size).c_str(),
                    file.existed ? ", was there" : "");
}

void exportScene(ExportOptions options) {
    const std::string scene_path = options.paths.back();
    options.paths.pop_back();
    // Also keeps a forgotten scene from costing the last model.
    if (Velmar::getMeshFormat(scene_path) != "xml") throw UsageError(scene_path + ": the scene must end in .xml");
    options.scene.ground = !options.no_ground;
    const Report report = makeScene(options, scene_path);
    if (!options.quiet) print(report, scene_path);
}

void addModelOptions(CLI::App& app, ExportOptions& options) {
    app.option_defaults()->group("Models");
    addValue(app, "--scale", options.scale, "FACTOR",
             "Multiplies all positions, except those of vmmesh files. The scene is in metres.");
    addUp(app, options.up);
    app.add_flag("--no-ground", options.no_ground, "Leave out the ground plane below the models.");
}

void addCameraOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Camera");
    addValue(app, "--azimuth", scene.azimuth, "DEGREES",
             "Where the camera stands around the models: 0 in front, 90 to the right.")
        ->check(inRange(-360, 360));
    addValue(app, "--elevation", scene.elevation, "DEGREES", "How high above the horizon it stands.")
        ->check(inRange(-89, 89));
    addValue(app, "--fov", scene.fov, "DEGREES",
             "Field of view across the width. The camera moves back as far as it must.")
        ->check(inRange(1, 170));
}

void addLightOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Light");
    addChoice(app, "--light", scene.light, {"sunsky", "uniform", "none"}, "What lights the scene.");
    app.add_option("--sun", scene.sun, "Direction towards the sun: three numbers with commas between. (-1,-1,1)")
        ->type_name("X,Y,Z")
        ->delimiter(',')
        ->expected(3)
        ->check(inRange(-1e9, 1e9));
    addValue(app, "--light-strength", scene.light_strength, "FACTOR", "Of the uniform light.")->check(inRange(0, 1e12));
}

void addImageOptions(CLI::App& app, SceneSettings& scene) {
    app.option_defaults()->group("Image");
    constexpr double max_size = 1000000;
    addValue(app, "--width", scene.width, "PIXELS", "Width of the image.")->check(inRange(1, max_size));
    addValue(app, "--height", scene.height, "PIXELS", "Height of the image.")->check(inRange(1, max_size));
    addValue(app, "--samples", scene.halt_samples, "N", "Stop at so many samples per pixel; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addValue(app, "--time", scene.halt_time, "SECONDS", "Stop after so long; 0 for no such limit.")
        ->check(inRange(0, 1e9));
    addChoice(app, "--tone-mapping", scene.tone_mapping, {"linear", "reinhard", "camera", "filmic"},
              "How light becomes an image.");
    addValue(app, "--brightness", scene.brightness, "FACTOR", "Brightens the image, or below 1 darkens it.")
        ->check(inRange(1e-9, 1e9));
}

} // namespace

Command addExportCommand(CLI::App& tool) {
    CLI::App* const app =
        tool.add_subcommand("export", "Makes a complete scene of mesh files, with camera, light and settings.");
    const auto options = std::make_shared<ExportOptions>();
    app->add_option("MODEL... SCENE.xml", options->paths,
                    "Mesh files (.obj, .ply, .stl, .vmmesh), then the scene to write. What stands there is replaced.")
        ->required()
        ->expected(2, CLI::detail::expected_max_vector_size);
    addModelOptions(*app, *options);
    addCameraOptions(*app, options->scene);
    addLightOptions(*app, options->scene);
    addImageOptions(*app, options->scene);
    app->option_defaults()->group("Options");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success, and no progress");
    app->footer(
        "Materials take their diffuse colour from the .mtl files that an .obj file names, else they are light grey. "
        "Beside the scene, the folder SCENE_meshes gets the meshes. Scenes hold no vertex normals: a model that "
        "brings some is marked for smooth shading. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { exportScene(*options); }};
}
