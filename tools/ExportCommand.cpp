#include "tools/Command.h"
#include "tools/CommandOptions.h"
#include "tools/Failure.h"
#include "tools/MeshHandover.h"
#include "tools/MeshInput.h"
#include "tools/OutputFile.h"
#include "tools/Progress.h"
#include "tools/SceneBuilder.h"
#include "tools/System.h"
#include "tools/Text.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
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

/// A mesh file that the library writes beside the document.
struct MeshFile {
    std::string path;
    std::uint64_t checksum;
    bool was_there = false;
};

/// What was done, for the summary.
struct Report {
    std::vector<std::string> models;
    std::vector<MeshFile> mesh_files;
    std::vector<std::uint64_t> mesh_file_sizes;
    std::uint64_t document_size = 0;
};

/// What the exported functions can't say must not be lost without a word.
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
    InputModel model;
    model.name = Text::fileStem(path);
    model.mesh = readMesh(path, options.scale);
    requireUsable(path, *model.mesh);
    model.colours = readMaterialColours(path);
    model.y_up = CommandOptions::isYUp(options.up, path);
    model.smooth_normals = !model.mesh->normals.empty();
    keepWhatHostsCanGive(*model.mesh);
    return model;
}

std::string describe(const std::string& path, const Mesh& mesh) {
    return path + ": " + Text::count(mesh.verts.size(), "vertex", "vertices") + ", " +
           Text::count(mesh.triangles.size(), "triangle", "triangles") + ", " +
           Text::count(mesh.quads.size(), "quad", "quads") + ", " +
           Text::count(mesh.used_materials.size(), "material", "materials");
}

/// Where the library puts the file of a mesh.
MeshFile locateMeshFile(const std::string& document, std::uint64_t checksum) {
    return {FileUtils::removeExtension(document) + "_meshes/mesh_" + std::to_string(checksum) + ".vmmesh", checksum};
}

/// A file of the right name is taken on trust by the library. One that a crash or a full disk has cut short is removed,
/// so that it's written anew.
void removeIfDamaged(MeshFile& file) {
    file.was_there = FileUtils::fileExists(file.path);
    if (!file.was_there || holdsMesh(file.path, file.checksum)) return;
    System::removeFile(file.path);
    file.was_there = false;
}

/// The library doesn't report a document that couldn't be written, nor the last bytes of a mesh file.
void requireWhole(const std::string& document, const std::vector<MeshFile>& mesh_files) {
    const MappedFile file(document);
    if (!FileUtils::trimTrailingWhitespace(file.getText()).ends_with("</scene>"))
        throw Failure("the document wasn't written whole; is the disk full?");
    for (const MeshFile& mesh_file : mesh_files)
        if (!mesh_file.was_there && !holdsMesh(mesh_file.path, mesh_file.checksum))
            throw Failure(mesh_file.path + " wasn't written whole; is the disk full?");
}

void writeScene(const SceneBuilder& scene, const std::string& document, std::vector<MeshFile>& mesh_files) {
    for (MeshFile& file : mesh_files)
        removeIfDamaged(file);
    try {
        scene.write(document);
        requireWhole(document, mesh_files);
    } catch (...) {
        for (const MeshFile& file : mesh_files)
            if (!file.was_there) System::removeFile(file.path);
        throw;
    }
}

/// The path by which the library is told of the document. A path with a directory would stand before every path in the
/// document; from inside the directory the document names its mesh files as seen from itself, and the two can be moved
/// together.
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
    const std::string document = enterDirectoryOf(output.getPartialPath());
    try {
        const SceneBuilder scene(std::move(models), options.scene);
        for (const std::uint64_t checksum : scene.getMeshChecksums())
            report.mesh_files.push_back(locateMeshFile(document, checksum));
        writeScene(scene, document, report.mesh_files);
        for (const MeshFile& file : report.mesh_files)
            report.mesh_file_sizes.push_back(MappedFile(file.path).getSize());
        report.document_size = output.commit();
    } catch (...) {
        throw makeFailureOf(scene_path);
    }
    return report;
}

void print(const Report& report, const std::string& scene_path) {
    for (const std::string& model : report.models)
        std::printf("%s\n", model.c_str());
    std::printf("%s (%s)\n", scene_path.c_str(), Text::size(report.document_size).c_str());
    const std::string name = Text::fileName(scene_path);
    const std::string directory = scene_path.substr(0, scene_path.size() - name.size());
    for (std::size_t i = 0; i < report.mesh_files.size(); ++i) {
        const MeshFile& file = report.mesh_files[i];
        const std::string path = directory + Text::fileStem(name) + "_meshes/" + Text::fileName(file.path);
        std::printf("%s (%s%s)\n", path.c_str(), Text::size(report.mesh_file_sizes[i]).c_str(),
                    file.was_there ? ", was there" : "");
    }
}

void exportScene(ExportOptions options) {
    const std::string scene_path = options.paths.back();
    options.paths.pop_back();
    // Also keeps a forgotten scene from costing the last model.
    if (getFormat(scene_path) != "xml") throw UsageError(scene_path + ": the scene must end in .xml");
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
    app->option_defaults()->group("ExportOptions");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success, and no progress");
    app->footer(
        "Materials take their diffuse colour from the .mtl files that an .obj file names, else they are light grey. "

        "Beside the scene, the folder SCENE_meshes gets the meshes. Scenes hold no vertex normals: a model that "
        "brings some is marked for smooth shading. Exit codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [options] { exportScene(*options); }};
}
