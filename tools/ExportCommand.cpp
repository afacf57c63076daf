#include "import/MeshImport.h"
#include "import/ValidText.h"

#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/ModelScene.h"
#include "tools/OutputFile.h"
#include "tools/SceneOutput.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct ExportOptions {
    /// The models, and then the scene.
    std::vector<std::string> paths;
    ModelOptions models;
    /// In place of the folder beside the scene.
    std::string store;
    bool dry_run = false;
    bool quiet = false;
};

/// A usual name of an XML document, in which the paths of the meshes have to be valid.
void requireValidName(const std::string& scene_path) {
    // Also keeps a forgotten scene from costing the last model.
    if (Velmar::getMeshFormat(scene_path) != "xml") throw UsageError(scene_path + ": the scene must end in .xml");
    if (!Velmar::isValidText(Text::fileName(scene_path)))
        throw UsageError(scene_path + ": the name of a scene must be UTF-8 without control characters: it is a part of "
                                      "paths in the document");
}

std::string describePoint(const Velmar::Vec3d& p) {
    const auto number = [](double value) { return Text::number(static_cast<float>(value)); };
    return number(p.x) + ',' + number(p.y) + ',' + number(p.z);
}

void print(const std::vector<std::string>& lines, const SceneFiles& files, const std::string& scene_path,
           const SceneBuilder* planned) {
    for (const std::string& line : lines)
        std::printf("%s\n", Text::printable(line).c_str());
    const bool dry_run = planned != nullptr;
    if (dry_run) {
        const Frame& frame = planned->getFrame();
        std::printf("camera at %s, towards %s\n", describePoint(frame.position).c_str(),
                    describePoint(frame.forwards).c_str());
    }
    const auto print_file = [&](const std::string& path, const std::string& state) {
        std::printf("%s (%s)\n", Text::printable(path).c_str(), state.c_str());
    };
    constexpr const char* not_written = "would be written";
    print_file(scene_path, dry_run ? not_written : Text::size(files.document_size));
    for (const MeshFile& file : files.meshes) {
        if (dry_run && !file.existed)
            print_file(file.path, not_written);
        else
            print_file(file.path, Text::size(file.size) + (file.existed ? ", existed" : ""));
    }
}

void exportScene(const CLI::App& app, const ExportOptions& options) {
    const std::string scene_path = options.paths.back();
    requireValidName(scene_path);
    if (!Velmar::isValidText(options.store))
        throw UsageError(options.store + ": the name of a store must be UTF-8 without control characters: it is a part "
                                         "of paths in the document");
    const SceneSettings settings = getSceneSettings(app, options.models);
    const std::vector<ModelRequest> requests = findModels(app, options.paths, options.models);

    Progress progress(options.quiet);
    std::unique_ptr<OutputFile> output;
    if (!options.dry_run) output = std::make_unique<OutputFile>(scene_path);
    std::vector<std::string> notes = findIdleOptions(app, options.models, requests);
    const ModelScene models = readModels(requests, progress, options.quiet);
    SceneBuilder scene(models.content, settings);
    if (scene.isGroundLeftOut()) notes.emplace_back(ground_left_out);

    progress.show(stepText(requests.size() + 1, requests.size() + 1) + "writing " + Text::fileName(scene_path), 0.5);
    const SceneFiles files = options.dry_run ? previewScene(scene, scene_path, options.store)
                                             : writeScene(scene, *output, scene_path, options.store);
    progress.clear();
    if (options.quiet) return;
    for (const std::string& note : notes)
        printNote(note);
    print(models.lines, files, scene_path, options.dry_run ? &scene : nullptr);
}

} // namespace

Command addExportCommand(CLI::App& tool) {
    CLI::App* const app =
        tool.add_subcommand("export", "Makes a complete scene of mesh files, with camera, light and settings.");
    const auto options = std::make_shared<ExportOptions>();
    addModelPaths(*app, options->paths, "MODEL... SCENE.xml",
                  "Mesh files (.obj, .ply, .stl, .vmmesh) or whole scenes (.glb, .gltf, .fbx, .dae, .3ds and others), "
                  "then the scene to write. An existing one is replaced.");
    addModelOptions(*app, options->models);
    app->option_defaults()->group("Options");
    app->add_option("--store", options->store,
                    "Write the meshes into this store, as 'velmar convert --store' makes it, in place of a folder "
                    "next to the scene. The scene names them there.")
        ->type_name("DIR");
    app->add_flag("-n,--dry-run", options->dry_run,
                  "Read everything and print what would be written, but write nothing");
    app->add_flag("-q,--quiet", options->quiet, "Print nothing on success: no summary, notes or progress");
    app->footer(
        "Materials take their diffuse colour from the .mtl files that an .obj file names, else they are light grey. "
        "The folder SCENE_meshes next to the scene gets the meshes. Scenes have no vertex normals: a model with "
        "normals "
        "is marked for smooth shading. Of whole scenes the models, materials and the first camera are taken. Exit "
        "codes: 0 done, 1 failed, 2 wrong usage.");
    return {app, [app, options] { exportScene(*app, *options); }};
}
